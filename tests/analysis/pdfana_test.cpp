#include "analysis/pdfana.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>

#include "analysis/errana.hpp"
#include "input/inpdf.hpp"
#include "input/window.hpp"
#include "stats/compare.hpp"
#include "support/typed.hpp"

namespace dorvek::analysis {
namespace {

const std::map<std::string, float WindowStats::*> fields{
    {"CN", &WindowStats::CN},       {"dCN", &WindowStats::dCN},     {"Rmea", &WindowStats::Rmea},
    {"dRmea", &WindowStats::dRmea}, {"Rmod", &WindowStats::Rmod},   {"var", &WindowStats::var},
    {"dvar", &WindowStats::dvar},   {"varl", &WindowStats::varl},   {"varr", &WindowStats::varr},
    {"adif", &WindowStats::adif},   {"arat", &WindowStats::arat},   {"pmo3", &WindowStats::pmo3},
    {"dpmo3", &WindowStats::dpmo3}, {"skew", &WindowStats::skew},   {"dskew", &WindowStats::dskew},
    {"pmo4", &WindowStats::pmo4},   {"dpmo4", &WindowStats::dpmo4}, {"kurt", &WindowStats::kurt},
    {"dkurt", &WindowStats::dkurt}, {"cum4", &WindowStats::cum4},   {"dcum4", &WindowStats::dcum4},
    {"sdev", &WindowStats::sdev}};

// Checks a value against the next two words, what it is and how far off it may be.
void expect_next(std::istream& words, float value) {
    double expected = 0;
    double tolerance = -1;
    words >> expected >> tolerance;
    EXPECT_NEAR(value, expected, tolerance);
}

TEST(Pdfana, AgreesWithTheTable) {
    const auto set = std::make_unique<input::PdfSet>();
    const auto work = std::make_unique<input::Column>();
    const std::map<std::string, input::Column*> columns{
        {"r", &set->r}, {"g", &set->g[0]}, {"cn", &set->cn[0]}};
    WindowStats stats;
    std::ifstream table(SOURCE_DIR "/tests/analysis/peaks.txt");
    int rows = 0;
    for (std::string line, name; std::getline(table, line);) {
        std::istringstream words(line);
        if (!(words >> name) || name == "#") continue;
        SCOPED_TRACE(line);
        ++rows;
        if (columns.contains(name)) {
            auto at = columns.at(name)->begin();
            for (float number = 0; words >> number;) *at++ = number;
        } else if (name == "window") {
            std::int32_t ilo = 0;
            std::int32_t ihi = 0;
            std::int32_t ipdf = 0;
            std::string found;
            words >> ilo >> ihi >> ipdf >> found;
            Norm norm{};
            const std::string shown = support::play("", [&](textio::Terminal& terminal) {
                norm =
                    pdfana({set.get(), 1}, {&ipdf, 1}, ilo, ihi, {&stats, 1}, *work, terminal.out);
            });
            complete_errors(ilo, ihi, stats);
            EXPECT_EQ(norm, found == "none" ? Norm::zero : Norm::found);
            EXPECT_EQ(shown, found == "none" ? " zero norm, no atoms found\n" : "");
        } else {
            expect_next(words, stats.*fields.at(name));
        }
    }
    EXPECT_EQ(rows, 191);
}

// The peaks of the silica example against double precision; references/silica.py computes the
// expected values, and derives each tolerance from the rounding of single precision.
TEST(Silica, AgreesWithDoublePrecision) {
    const auto sets = std::make_unique<std::array<input::PdfSet, 2>>();
    const auto work = std::make_unique<input::Column>();
    std::ifstream expected(SOURCE_DIR "/tests/references/silica.txt");
    std::int32_t partial = 0;
    input::Window window;
    std::string name;
    int rows = 0;
    support::play("3\n3\n", [&](textio::Terminal& terminal) {
        std::size_t sample = 0;
        for (const std::string_view file : {"silica_300K.dat", "silica_1500K.dat"}) {
            const std::string path = SOURCE_DIR "/examples/silica/" + std::string(file);
            input::FileName fname{};
            fname.fill(' ');
            std::ranges::copy(path, fname.begin());
            textio::Input input;
            inpdf(sets->at(sample++), fname, terminal, input);
        }
        for (; expected >> partial >> window.rmin >> window.rmax >> name; ++rows) {
            SCOPED_TRACE(std::to_string(partial) + ' ' + name);
            ASSERT_TRUE(locate_window(input::first_bins((*sets)[0].r, 500), window));
            const std::array<std::int32_t, 2> ipdf{partial, partial};
            std::array<WindowStats, 2> stats;
            ASSERT_EQ(pdfana(*sets, ipdf, window.ilo, window.ihi, stats, *work, terminal.out),
                      Norm::found);
            for (WindowStats& s : stats) complete_errors(window.ilo, window.ihi, s);
            const auto [mean, variance, distribution] =
                stats::statana(window.ilo, window.ihi, ipdf, 0, {stats[0].Rmea, stats[1].Rmea},
                               {stats[0].var, stats[1].var}, *sets, terminal);
            const std::map<std::string, float> compared{{"mean.stud", mean.stud},
                                                        {"mean.doff", mean.doff},
                                                        {"mean.sgfc", mean.sgfc},
                                                        {"variance.stud", variance.stud},
                                                        {"variance.sgfc", variance.sgfc},
                                                        {"distribution.doff", distribution.doff},
                                                        {"distribution.chsq", distribution.chsq},
                                                        {"distribution.sgfc", distribution.sgfc}};
            if (const auto found = compared.find(name); found != compared.end()) {
                expect_next(expected, found->second);
            } else {
                for (const WindowStats& s : stats) expect_next(expected, s.*fields.at(name));
            }
        }
    });
    EXPECT_EQ(rows, 3 * (21 + 8));
}

}  // namespace
}  // namespace dorvek::analysis
