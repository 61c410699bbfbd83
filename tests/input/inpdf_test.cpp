#include "input/inpdf.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string>

#include "support/typed.hpp"

namespace dorvek::input {
namespace {

// Loads a file with this content; returns what the terminal showed after its question.
std::string load(PdfSet& set, std::string_view typed, std::string_view content) {
    const int fd = support::file_holding(content);
    FileName fname{};
    fname.fill(' ');
    std::ranges::copy("/proc/self/fd/" + std::to_string(fd), fname.begin());
    const std::string shown = support::play(typed, [&](textio::Terminal& terminal) {
        textio::Input file;
        inpdf(set, fname, terminal, file);
    });
    ::close(fd);
    return shown.substr(shown.find("(<= 10): \n") + 10);
}

TEST(Inpdf, KeepsWithinItsCapacities) {
    std::string content;
    for (int bin = 1; bin <= maxbin; ++bin) content += std::to_string(bin) + " 24*2\n";
    const std::string counts = " number of pdfs:   10  number of bins:   10000\n";
    const std::string pdfs = " only the first  10 pdfs of the file are taken\n";
    const std::string bins = " only the first  10000 bins of the file are kept\n";
    for (const auto& [rest, shown] : {std::pair<std::string, std::string>{"", pdfs + counts},
                                      {"10001 1\n", pdfs + counts},  // cut short: no bin
                                      {"10001 24*1\nx\n", pdfs + bins + counts}}) {
        const auto set = std::make_unique<PdfSet>();
        EXPECT_EQ(load(*set, "12\n", content + rest), shown);
        EXPECT_EQ(set->nbins, maxbin);
        EXPECT_EQ(set->r.back(), 10000.0f);
        EXPECT_EQ(set->g[9].back(), 2.0f);
        EXPECT_EQ(set->cn[9].back(), 2.0f);
    }
}

TEST(Clear, LeavesNothingButTheNumberOfPartials) {
    const auto set = std::make_unique<PdfSet>();
    const auto expected = std::make_unique<PdfSet>();
    load(*set, "10\n", "21*1\n21*2\n");
    clear(*set);
    EXPECT_EQ(set->r, expected->r);
    EXPECT_EQ(set->g, expected->g);
    EXPECT_EQ(set->cn, expected->cn);
    EXPECT_EQ(set->nbins, 0);
    EXPECT_EQ(load(*set, "/\n", "21*1\n"), " number of pdfs:   10  number of bins:   1\n");
}

}  // namespace
}  // namespace dorvek::input
