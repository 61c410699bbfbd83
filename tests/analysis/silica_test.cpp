// The peaks of the silica example against double precision; references/silica.py computes the
// expected values, and derives each tolerance from the rounding of single precision.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <memory>
#include <string>

#include "analysis/errana.hpp"
#include "analysis/pdfana.hpp"
#include "input/inpdf.hpp"
#include "input/window.hpp"
#include "stats/compare.hpp"
#include "support/typed.hpp"

namespace dorvek {
namespace {

using analysis::WindowStats;

constexpr struct {
    std::string_view name;
    float WindowStats::*field;
} fields[] = {
    {"CN", &WindowStats::CN},       {"dCN", &WindowStats::dCN},     {"Rmea", &WindowStats::Rmea},
    {"dRmea", &WindowStats::dRmea}, {"Rmod", &WindowStats::Rmod},   {"var", &WindowStats::var},
    {"dvar", &WindowStats::dvar},   {"varl", &WindowStats::varl},   {"varr", &WindowStats::varr},
    {"adif", &WindowStats::adif},   {"arat", &WindowStats::arat},   {"pmo3", &WindowStats::pmo3},
    {"dpmo3", &WindowStats::dpmo3}, {"skew", &WindowStats::skew},   {"dskew", &WindowStats::dskew},
    {"pmo4", &WindowStats::pmo4},   {"dpmo4", &WindowStats::dpmo4}, {"kurt", &WindowStats::kurt},
    {"dkurt", &WindowStats::dkurt}, {"cum4", &WindowStats::cum4},   {"dcum4", &WindowStats::dcum4}};

TEST(Silica, AgreesWithDoublePrecision) {
    const auto sets = std::make_unique<std::array<input::PdfSet, 2>>();
    const auto work = std::make_unique<input::Column>();
    std::ifstream expected(SOURCE_DIR "/references/silica.txt");
    std::int32_t partial = 0;
    input::Window typed;
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
        for (; expected >> partial >> typed.rmin >> typed.rmax >> name; ++rows) {
            SCOPED_TRACE(std::to_string(partial) + ' ' + name);
            input::Window window = typed;
            ASSERT_TRUE(locate_window(input::first_bins((*sets)[0].r, 500), window));
            const std::array<std::int32_t, 2> ipdf{partial, partial};
            std::array<WindowStats, 2> stats;
            ASSERT_EQ(
                analysis::pdfana(*sets, ipdf, window.ilo, window.ihi, stats, *work, terminal.out),
                analysis::Norm::found);
            for (WindowStats& s : stats) complete_errors(window.ilo, window.ihi, s);
            const stats::ComparisonResult result =
                stats::statana(window.ilo, window.ihi, ipdf, 0, {stats[0].Rmea, stats[1].Rmea},
                               {stats[0].var, stats[1].var}, *sets, terminal);
            const auto expect_near = [&](float value) {
                double reference = 0;
                double tolerance = 0;
                expected >> reference >> tolerance;
                EXPECT_NEAR(value, reference, tolerance);
            };
            if (name == "mean.stud") expect_near(result.mean.stud);
            if (name == "mean.doff") expect_near(result.mean.doff);
            if (name == "mean.sgfc") expect_near(result.mean.sgfc);
            if (name == "variance.stud") expect_near(result.variance.stud);
            if (name == "variance.sgfc") expect_near(result.variance.sgfc);
            if (name == "distribution.doff") expect_near(result.distribution.doff);
            if (name == "distribution.chsq") expect_near(result.distribution.chsq);
            if (name == "distribution.sgfc") expect_near(result.distribution.sgfc);
            for (const auto& [label, field] : fields) {
                if (label != name) continue;
                for (const WindowStats& s : stats) expect_near(s.*field);
            }
        }
    });
    EXPECT_EQ(rows, 3 * (21 + 8));
}

}  // namespace
}  // namespace dorvek
