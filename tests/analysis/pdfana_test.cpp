#include "analysis/pdfana.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <map>
#include <memory>
#include <sstream>
#include <string>

#include "driver/analyse_window.hpp"
#include "input/pdf_file.hpp"
#include "support/table.hpp"

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

TEST(Pdfana, AgreesWithTheTable) {
    const auto set = std::make_unique<input::PdfSet>();
    set->npdfs = 1;
    const std::map<std::string, input::Column*> columns{
        {"r", &set->r}, {"g", &set->g[0]}, {"cn", &set->cn[0]}};
    WindowStats stats;
    support::for_each_row("analysis/peaks.txt", [&](std::istringstream& row) {
        std::string name;
        row >> name;
        if (columns.contains(name)) {
            auto at = columns.at(name)->begin();
            for (float number = 0; row >> number;) *at++ = number;
        } else if (name == "window") {
            std::int32_t ilo = 0;
            std::int32_t ihi = 0;
            std::int32_t ipdf = 0;
            std::string found;
            row >> ilo >> ihi >> ipdf >> found;
            const Norm norm = pdfana({set.get(), 1}, {&ipdf, 1}, ilo, ihi, {&stats, 1});
            EXPECT_EQ(norm, found == "none" ? Norm::zero : Norm::found);
        } else {
            support::expect_next(row, stats.*fields.at(name));
        }
    });
}

// The peaks of the silica example against double precision; references/silica.py computes the
// expected values, and derives each tolerance from the rounding of single precision.
TEST(Silica, AgreesWithDoublePrecision) {
    const auto sets = std::make_unique<std::array<input::PdfSet, 2>>();
    textio::Input file;
    std::size_t sample = 0;
    for (const char* const name : {"silica_300K.dat", "silica_1500K.dat"}) {
        const std::string path = SOURCE_DIR "/examples/silica/" + std::string(name);
        ASSERT_EQ(open_file(file, path, O_RDONLY), textio::Status::ok);
        ASSERT_EQ(read_pdf(file, 3, sets->at(sample++)).status, textio::Status::ok);
        ::close(file.fd);
    }
    support::for_each_row("references/silica.txt", [&](std::istringstream& row) {
        std::int32_t partial = 0;
        driver::Analysis found;
        std::string name;
        row >> partial >> found.window.rmin >> found.window.rmax >> name;
        const std::array ipdf{partial, partial};
        ASSERT_EQ(analyse_window(*sets, ipdf, 0, found), driver::Found::peak);
        EXPECT_EQ(found.messages.count, 0);
        const auto& [mean, variance, distribution] = found.comparison;
        const std::map<std::string, float> compared{{"mean.stud", mean.stud},
                                                    {"mean.doff", mean.doff},
                                                    {"mean.sgfc", mean.sgfc},
                                                    {"variance.stud", variance.stud},
                                                    {"variance.sgfc", variance.sgfc},
                                                    {"distribution.doff", distribution.doff},
                                                    {"distribution.chsq", distribution.chsq},
                                                    {"distribution.sgfc", distribution.sgfc}};
        if (compared.contains(name)) {
            support::expect_next(row, compared.at(name));
        } else {
            for (const WindowStats& s : found.stats) support::expect_next(row, s.*fields.at(name));
        }
    });
}

}  // namespace
}  // namespace dorvek::analysis
