// Reading a PDF file: the first line is the answer to how many partials the file holds, what
// follows is the file.

#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "harness.hpp"
#include "input/inpdf.hpp"

namespace {

using dorvek::fuzz::claim;
using namespace dorvek::input;

bool zero_from(const Column& column, std::int32_t bin) {
    static constexpr Column zeros{};
    const auto first = static_cast<std::size_t>(bin);
    return std::memcmp(column.data() + first, zeros.data(),
                       sizeof(float) * (zeros.size() - first)) == 0;
}

// Partials hold `bins` bins as far as they were read, and nothing else.
void claim_zero_beyond(const PdfSet& set, std::int32_t bins) {
    claim(zero_from(set.r, bins), "no bin has a position beyond the last");
    for (std::size_t p = 0; p < set.g.size(); ++p) {
        const std::int32_t read = p < held_partials(set) ? bins : 0;
        claim(zero_from(set.g[p], read) && zero_from(set.cn[p], read), "what is not read is zero");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const auto set = std::make_unique<PdfSet>();
    static dorvek::textio::Input file;
    std::string_view text{reinterpret_cast<const char*>(data), size};
    std::string answer{dorvek::fuzz::take_until(text, "\n")};
    dorvek::fuzz::files.a = text;

    dorvek::textio::Terminal terminal;
    attach(terminal.in, dorvek::fuzz::file_holding(answer += '\n'));
    terminal.out.fd = dorvek::fuzz::file_holding("");
    file.fd = -1;
    FileName name;
    name.fill(' ');
    name[1] = 'a';
    try {
        inpdf(*set, name, terminal, file);
        claim(set->nbins >= 0 && set->nbins <= maxbin && set->npdfs <= maxpdf, "all is in range");
        claim_zero_beyond(*set, set->nbins);
        clear(*set);
        claim(set->nbins == 0, "a cleared set has no bins");
        claim_zero_beyond(*set, 0);
        set->npdfs = 0;
    } catch (const dorvek::fuzz::RunEnded&) {
        ::close(file.fd);
        dorvek::fuzz::wipe(*set);
    }
    ::close(terminal.in.fd);
    ::close(terminal.out.fd);
    return 0;
}
