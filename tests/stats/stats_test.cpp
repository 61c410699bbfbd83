#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "stats/beta.hpp"
#include "stats/compare.hpp"
#include "stats/gamma.hpp"
#include "support/typed.hpp"

namespace dorvek::stats {
namespace {

// What a routine returns, a significance last, and what its pauses show.
struct Outcome {
    std::vector<float> values;
    std::string shown;
};

Outcome call(const std::string& routine, std::span<const float> a) {
    Outcome outcome;
    float gln = 0.0f;
    outcome.shown = support::play("\n\n\n\n\n", [&](textio::Terminal& terminal) {
        const auto size = [&](std::size_t i) { return static_cast<std::int32_t>(a[i]); };
        if (routine == "gammln") outcome.values = {gammln(a[0])};
        if (routine == "gammq") outcome.values = {gammq(a[0], a[1], terminal)};
        if (routine == "betai") outcome.values = {betai(a[0], a[1], a[2], terminal)};
        if (routine == "gcf") outcome.values = {gcf(a[0], a[1], gln, terminal)};
        if (routine == "betacf") outcome.values = {betacf(a[0], a[1], a[2], terminal)};
        if (routine == "tutest") {
            const auto [stud, doff, sgfc] =
                tutest(size(0), size(1), {a[2], a[3]}, {a[4], a[5]}, terminal);
            outcome.values = {stud, doff, sgfc};
        }
        if (routine == "ftest") {
            const auto [stud, sgfc] = ftest(size(0), size(1), {a[2], a[3]}, terminal);
            outcome.values = {stud, sgfc};
        }
        if (routine == "ditest") {
            const std::size_t bins = (a.size() - 1) / 2;
            const auto [doff, chsq, sgfc] =
                ditest(a.subspan(1, bins), a.last(bins), size(0), terminal);
            outcome.values = {doff, chsq, sgfc};
        }
    });
    return outcome;
}

TEST(Stats, AgreeWithTheTable) {
    const std::map<std::string, std::string> messages{
        {"bad_beta", " bad argument X in BETAI\n"},
        {"slow_beta", " A or B too big, or ITMAX too small\n"},
        {"bad_gamma", "  \n"},
        {"slow_gamma", " A too large, ITMAX too small\n"}};
    std::ifstream table(SOURCE_DIR "/tests/stats/cases.txt");
    int rows = 0;
    for (std::string line; std::getline(table, line);) {
        if (line.empty() || line.starts_with('#')) continue;
        SCOPED_TRACE(line);
        std::istringstream words(line);
        std::string routine;
        words >> routine;
        std::vector<float> arguments;
        std::string word;
        while (words >> word && word != "=") arguments.push_back(std::stof(word));
        const Outcome outcome = call(routine, arguments);
        for (const float value : outcome.values) {
            double tolerance = 0;
            words >> word >> tolerance;
            const double expected = std::stod(word);
            if (std::isnan(expected)) {
                EXPECT_TRUE(std::isnan(value)) << value;
            } else {
                EXPECT_NEAR(value, expected, tolerance);
            }
        }
        std::string shown;
        for (words >> word; words >> word;) shown += messages.at(word);
        EXPECT_EQ(outcome.shown, shown);
        ++rows;
    }
    EXPECT_EQ(rows, 65);
}

// How far off each routine may be for windows of so many bins; what the headers and the README
// state. The lines of references/special_functions.txt say routine, bins, arguments, value; the
// script beside it computes them in 40 digits. The worst errors met are printed.
TEST(Accuracy, IsAsStated) {
    struct Claim {
        std::string routine;
        int bins;
        bool relative;
        double error;
        double worst = 0;
    };
    std::vector<Claim> claims{
        {"gammln", 0, true, 6.0e-8},  // of 1 + |ln Gamma|, for it vanishes at 1 and 2
        {"gammq", 10, true, 7.0e-7},    {"gammq", 30, true, 5.0e-6},
        {"gammq", 100, true, 3.0e-5},   {"gammq", 300, true, 2.0e-4},
        {"gammq", 1000, true, 4.0e-4},  {"betai", 10, true, 2.0e-6},
        {"betai", 30, true, 1.0e-5},    {"betai", 100, true, 4.0e-5},
        {"betai", 300, true, 2.0e-4},   {"betai", 1000, true, 1.0e-3},
        {"tutest", 10, true, 4.0e-6},   {"tutest", 30, true, 2.0e-5},
        {"tutest", 100, true, 7.0e-5},  {"tutest", 300, true, 2.0e-4},
        {"tutest", 1000, true, 3.0e-3}, {"ftest", 10, false, 5.0e-7},
        {"ftest", 30, false, 5.0e-6},   {"ftest", 100, false, 3.0e-5},
        {"ftest", 300, false, 5.0e-5},  {"ftest", 1000, false, 4.0e-4}};
    std::ifstream references(SOURCE_DIR "/tests/references/special_functions.txt");
    int lines = 0;
    for (std::string line; std::getline(references, line); ++lines) {
        std::istringstream words(line);
        std::string routine;
        int bins = 0;
        words >> routine >> bins;
        std::vector<float> arguments;
        double reference = 0;  // the last number of the line
        for (double number = 0; words >> number; reference = number) {
            arguments.push_back(static_cast<float>(number));
        }
        arguments.pop_back();
        if (routine.ends_with("test")) arguments.insert(arguments.begin(), arguments.at(0));
        const float value = call(routine, arguments).values.back();
        const auto claim = std::ranges::find_if(
            claims, [&](const Claim& c) { return c.routine == routine && c.bins == bins; });
        ASSERT_NE(claim, claims.end()) << line;
        const double error = std::abs(value - reference);
        const double scale = routine == "gammln" ? 1 + std::abs(reference) : reference;
        claim->worst = std::max(claim->worst, claim->relative ? error / scale : error);
    }
    EXPECT_GT(lines, 2000);
    for (const Claim& claim : claims) {
        std::printf("%-6s %4d bins: %.1e\n", claim.routine.c_str(), claim.bins, claim.worst);
        EXPECT_LE(claim.worst, claim.error) << claim.routine << ' ' << claim.bins;
        EXPECT_GT(claim.worst, 0.0) << claim.routine << ' ' << claim.bins;
    }
}

}  // namespace
}  // namespace dorvek::stats
