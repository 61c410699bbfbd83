// Whole dialogues: what is typed, then the files "a" and "b", each ended by a line "%".

#include <unistd.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "driver/report.hpp"
#include "driver/run.hpp"
#include "harness.hpp"

namespace {

using dorvek::fuzz::claim;
using dorvek::fuzz::content_of;
using dorvek::fuzz::file_holding;
using dorvek::fuzz::files;
using dorvek::fuzz::take_until;

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

// As it was before its first run.
void reset(dorvek::driver::Run& run) {
    for (dorvek::input::PdfSet& set : run.sets) dorvek::fuzz::wipe(set);
    run.nsamp = 0;
    run.fname = {};
    run.snames = {};
    run.ipdf = run.ncons = {};
    run.window = {};
    run.stats = {};
    run.comparison = {};
    run.results = {};
    run.file = {};
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto run = std::make_unique<dorvek::driver::Run>();
    std::string_view text{reinterpret_cast<const char*>(data), size};
    const std::string_view typed = take_until(text, "%\n");
    files.a = take_until(text, "%\n");
    files.b = text;

    dorvek::textio::Terminal terminal;
    attach(terminal.in, file_holding(typed));
    terminal.out.fd = file_holding("");
    run->results.fd = run->file.fd = -1;  // closed below, even if it was not opened
    try {
        dorvek::driver::run(*run, terminal);
        flush(terminal.out);
    } catch (const dorvek::fuzz::RunEnded&) {
        ::close(run->results.fd);
        ::close(run->file.fd);
    }
    compare_reports(content_of(terminal.out.fd), content_of(files.results));
    reset(*run);
    ::close(terminal.in.fd);
    ::close(terminal.out.fd);
    return 0;
}
