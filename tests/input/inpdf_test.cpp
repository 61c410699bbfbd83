#include "input/inpdf.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <string>

#include "support/typed.hpp"

namespace dorvek::input {
namespace {

// What one call of inpdf leaves: the set, and the terminal's last lines.
struct Loaded {
    std::unique_ptr<PdfSet> set = std::make_unique<PdfSet>();
    std::string shown;
};

FileName name_field(std::string_view name) {
    FileName field{};
    field.fill(' ');
    std::ranges::copy(name, field.begin());
    return field;
}

void load(Loaded& loaded, std::string_view typed, std::string_view content) {
    const int fd = support::file_holding(content);
    const FileName fname = name_field("  /proc/self/fd/" + std::to_string(fd));
    loaded.shown = support::play(typed, [&](textio::Terminal& terminal) {
        textio::Input file;
        inpdf(*loaded.set, fname, terminal, file);
    });
    loaded.shown.erase(0, loaded.shown.find("(<= 10): \n") + 10);
    ::close(fd);
}

TEST(Inpdf, TakesOneReadPerBin) {
    static const struct {
        std::string_view typed;
        std::string_view content;
        std::int32_t nbins;
        std::vector<float> last;  // r, g(1), cn(1), g(2), cn(2), ... of the last bin
    } cases[] = {
        {"2\n", "2.525 1.37 4.02 0.88 1.95\n", 1, {2.525f, 1.37f, 4.02f, 0.88f, 1.95f}},
        {"1\n", "", 0, {}},
        {"1\n", "1 2 3 4 5\n6 7 8 9 10\n\n \n", 2, {6, 7, 8}},
        {"3\n", "1 2 3 4 5\n6 7 8 9 10\n11 12 13 14 15\n", 1, {1, 2, 3, 4, 5, 6, 7}},
        {"1\n", "1\n2\n3\n4\n5\n", 1, {1, 2, 3}},  // the end cuts the second bin short
        {"1\n", "1 2 3\n4 5 6", 1, {1, 2, 3}},     // no line feed: not a line
        {"1\n", "1 2 3\r\n4\t5\t6\r\n", 2, {4, 5, 6}},
        {"1\n", "1,2,3\n4 , 5D1,6-1\n", 2, {4, 50, 0.6f}},
        {"1\n", "1 2 3\n4,,6\n", 2, {4, 0, 6}},  // a null is 0, not the bin before
        {"1\n", "1 2 3\n4/\n", 2, {4, 0, 0}},
        {"1\n", "3*1.5\n", 1, {1.5, 1.5, 1.5}},
        {"0\n", "1 x\n2 y\n", 2, {2, 0, 0}},
        {"-3\n", "1 x\n2 y\n", 2, {2, 0, 0}},
        {",\n", "1 x\n", 1, {1, 0, 0}},  // no answer yet: 0
    };
    for (const auto& [typed, content, nbins, last] : cases) {
        SCOPED_TRACE(content);
        Loaded loaded;
        load(loaded, typed, content);
        const PdfSet& set = *loaded.set;
        ASSERT_EQ(set.nbins, nbins);
        std::vector<float> bin;
        if (nbins > 0) {
            const auto i = static_cast<std::size_t>(nbins - 1);
            bin.push_back(set.r[i]);
            for (std::size_t p = 0; bin.size() < last.size(); ++p) {
                bin.insert(bin.end(), {set.g[p][i], set.cn[p][i]});
            }
        }
        EXPECT_EQ(bin, last);
        EXPECT_EQ(set.r.at(static_cast<std::size_t>(nbins)), 0.0f);
        EXPECT_EQ(set.g[0].at(static_cast<std::size_t>(nbins)), 0.0f);
    }
}

TEST(Inpdf, KeepsWithinItsCapacities) {
    std::string content;
    for (int bin = 1; bin <= maxbin; ++bin) content += std::to_string(bin) + " 24*" + "2\n";
    const std::string counts = " number of pdfs:   10  number of bins:   10000\n";
    const std::string pdfs = " only the first  10 pdfs of the file are taken\n";
    const std::string bins = " only the first  10000 bins of the file are kept\n";
    for (const auto& [rest, shown] : {std::pair<std::string, std::string>{"", pdfs + counts},
                                      {"10001 1\n", pdfs + counts},  // cut short: no bin
                                      {"10001 24*1\nx\n", pdfs + bins + counts}}) {
        Loaded loaded;
        load(loaded, "12\n", content + rest);
        EXPECT_EQ(loaded.shown, shown);
        EXPECT_EQ(loaded.set->nbins, maxbin);
        EXPECT_EQ(loaded.set->r.back(), 10000.0f);
        EXPECT_EQ(loaded.set->g[9].back(), 2.0f);
        EXPECT_EQ(loaded.set->cn[9].back(), 2.0f);
    }
}

TEST(Clear, LeavesNothingButTheNumberOfPartials) {
    Loaded loaded;
    load(loaded, "10\n", "21*1\n21*2\n");
    clear(*loaded.set);
    const auto expected = std::make_unique<PdfSet>();
    EXPECT_EQ(loaded.set->r, expected->r);
    EXPECT_EQ(loaded.set->g, expected->g);
    EXPECT_EQ(loaded.set->cn, expected->cn);
    EXPECT_EQ(loaded.set->nbins, 0);
    load(loaded, "/\n", "21*1\n");
    EXPECT_EQ(loaded.shown, " number of pdfs:   10  number of bins:   1\n");
}

TEST(InpdfDeathTest, SaysWhatItCouldNotRead) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto exits = ::testing::ExitedWithCode(255);
    Loaded loaded;
    EXPECT_EXIT(load(loaded, "1\n", "1 2 3\n\nr g cn\n"), exits,
                "\\? Illegal character in numeric input\n"
                "\\? read, unit 15, file \"/proc/self/fd/[0-9]+\", line 3\n$");
    // Also in a bin that the end of the file would have cut short.
    EXPECT_EXIT(load(loaded, "1\n", "1 x\n"), exits, "Illegal character");
    for (const std::string_view name : {std::string_view(""), std::string_view("a\0b", 3)}) {
        const auto body = [&](textio::Terminal& terminal) {
            textio::Input file;
            inpdf(*loaded.set, name_field(name), terminal, file);
        };
        EXPECT_EXIT(support::play("1\n", body), exits,
                    "\\? Bad file specification\n\\? open, unit 15");
    }
}

}  // namespace
}  // namespace dorvek::input
