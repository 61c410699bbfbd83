// Whole dialogues: what is typed, then the files "a" and "b", each ended by a line "%".

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "driver/report.hpp"
#include "driver/run.hpp"
#include "harness.hpp"
#include "support/files.hpp"

namespace {

using dorvek::fuzz::claim;
using dorvek::fuzz::files;
using dorvek::fuzz::take_until;
using dorvek::support::content_of;

// Every block of a report in the results file stands on the terminal too, in the same order. The
// two part only in the line that ends a comparison.
void compare_reports(std::string_view shown, std::string_view results) {
    const std::string separator{dorvek::driver::separator};
    const std::string block_begins = "\n " + separator + "\n";
    const std::string comparison_ends = separator + "\n";
    shown.remove_prefix(shown.rfind("\n analyse rmc results\n") + 1);
    take_until(results, block_begins);
    while (!results.empty()) {
        std::string_view block = take_until(results, block_begins);
        if (block.ends_with('\n' + separator)) block.remove_suffix(separator.size());
        if (block.ends_with(comparison_ends)) block.remove_suffix(comparison_ends.size());
        const std::size_t at = shown.find(block_begins + std::string(block));
        claim(at != std::string_view::npos, "a block of the results file is on the terminal");
        shown.remove_prefix(at + 1);
    }
}

// What a new run shows on the terminal; its sets hold `left` where it does not put anything.
std::string shown_by_run(std::string_view typed, float left) {
    const auto run = std::make_unique<dorvek::driver::Run>();
    for (dorvek::input::PdfSet& set : run->sets) {
        set.r.fill(left);
        for (auto& column : set.g) column.fill(left);
        for (auto& column : set.cn) column.fill(left);
    }
    run->results.fd = run->file.fd = -1;  // closed below, even if it was not opened
    return dorvek::support::play(typed, [&](dorvek::textio::Terminal& terminal) {
        try {
            dorvek::driver::run(*run, terminal);
        } catch (const dorvek::fuzz::RunEnded&) {
            ::close(run->results.fd);
            ::close(run->file.fd);
        }
    });
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text{reinterpret_cast<const char*>(data), size};
    const std::string_view typed = take_until(text, "%\n");
    files.a = take_until(text, "%\n");
    files.b = text;

    const std::string shown = shown_by_run(typed, 0.0f);
    const std::string results = content_of(files.results);
    compare_reports(shown, results);
    claim(shown_by_run(typed, std::numeric_limits<float>::quiet_NaN()) == shown &&
              content_of(files.results) == results,
          "nothing is read that no file has filled");
    return 0;
}
