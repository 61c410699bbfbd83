#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "stats/compare.hpp"
#include "stats/special_functions.hpp"
#include "support/table.hpp"

namespace dorvek::stats {
namespace {

// What a routine returns, a significance last.
std::vector<float> call(const std::string& routine, std::span<const float> a, Messages& messages) {
    const auto size = [&](std::size_t i) { return static_cast<std::int32_t>(a[i]); };
    if (routine == "gammln") return {gammln(a[0])};
    if (routine == "gammq") return {gammq(a[0], a[1], messages)};
    if (routine == "betai") return {betai(a[0], a[1], a[2], messages)};
    if (routine == "gcf") return {gcf(a[0], a[1], messages)};
    if (routine == "betacf") return {betacf(a[0], a[1], a[2], messages)};
    if (routine == "tutest") {
        const auto [stud, doff, sgfc] =
            tutest(size(0), size(1), {a[2], a[3]}, {a[4], a[5]}, messages);
        return {stud, doff, sgfc};
    }
    if (routine == "ftest") {
        const auto [stud, sgfc] = ftest(size(0), size(1), {a[2], a[3]}, messages);
        return {stud, sgfc};
    }
    const std::size_t bins = (a.size() - 1) / 2;
    const auto [doff, chsq, sgfc] = ditest(a.subspan(1, bins), a.last(bins), size(0), messages);
    return {doff, chsq, sgfc};
}

TEST(Stats, AgreeWithTheTable) {
    const std::map<std::string_view, std::string> names{
        {"bad argument X in BETAI", "bad_beta"},
        {"A or B too big, or ITMAX too small", "slow_beta"},
        {" ", "bad_gamma"},
        {"A too large, ITMAX too small", "slow_gamma"}};
    support::for_each_row("stats/cases.txt", [&](std::istringstream& row) {
        std::string routine;
        row >> routine;
        std::vector<float> arguments;
        std::string word;
        while (row >> word && word != "=") arguments.push_back(std::stof(word));
        Messages messages;
        for (const float value : call(routine, arguments, messages)) {
            support::expect_next(row, value);
        }
        for (std::size_t i = 0; i < messages.count; ++i) {
            row >> word;
            EXPECT_EQ(names.at(messages.text.at(i)), word);
        }
    });
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
        {"tutest", 1000, true, 3.0e-3}, {"near 1", 10, true, 1.0e-3},
        {"near 1", 30, true, 2.0e-3},   {"near 1", 100, true, 3.0e-3},
        {"near 1", 300, true, 5.0e-3},  {"near 1", 1000, true, 7.0e-3},
        {"ftest", 10, false, 2.0e-6},   {"ftest", 30, false, 6.0e-6},
        {"ftest", 100, false, 3.0e-5},  {"ftest", 300, false, 5.0e-5},
        {"ftest", 1000, false, 5.0e-4}};
    support::for_each_row("references/special_functions.txt", [&](std::istringstream& row) {
        std::string routine;
        int bins = 0;
        row >> routine >> bins;
        std::vector<float> arguments;
        double reference = 0;  // the last number of the line
        for (double number = 0; row >> number; reference = number) {
            arguments.push_back(static_cast<float>(number));
        }
        arguments.pop_back();
        if (routine.ends_with("test")) arguments.insert(arguments.begin(), arguments.at(0));
        Messages messages;
        const float value = call(routine, arguments, messages).back();
        // A t so small that doff / (doff + t^2) loses it in rounding.
        if (routine == "tutest" && reference > 0.9) routine = "near 1";
        const auto claim = std::ranges::find_if(
            claims, [&](const Claim& c) { return c.routine == routine && c.bins == bins; });
        ASSERT_NE(claim, claims.end());
        const double error = std::abs(value - reference);
        const double scale = routine == "gammln" ? 1 + std::abs(reference) : reference;
        claim->worst = std::max(claim->worst, claim->relative ? error / scale : error);
    });
    for (const Claim& claim : claims) {
        std::printf("%-6s %4d bins: %.1e\n", claim.routine.c_str(), claim.bins, claim.worst);
        EXPECT_LE(claim.worst, claim.error) << claim.routine << ' ' << claim.bins;
        EXPECT_GT(claim.worst, 0.0) << claim.routine << ' ' << claim.bins;
    }
}

}  // namespace
}  // namespace dorvek::stats
