#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "stats/beta.hpp"
#include "stats/compare.hpp"
#include "stats/gamma.hpp"
#include "support/typed.hpp"

namespace dorvek::stats {
namespace {

const float nan = std::numeric_limits<float>::quiet_NaN();

// A value, and what the pauses on the way to it showed.
struct Paused {
    float value = 0.0f;
    std::string shown;
};

template <typename Function>
Paused evaluate(Function function, std::string_view typed = "\n\n\n\n\n") {
    Paused result;
    result.shown = support::play(
        typed, [&](textio::Terminal& terminal) { result.value = function(terminal); });
    return result;
}

Paused beta(float a, float b, float x) {
    return evaluate([=](textio::Terminal& terminal) { return betai(a, b, x, terminal); });
}

Paused gamma_q(float a, float x) {
    return evaluate([=](textio::Terminal& terminal) { return gammq(a, x, terminal); });
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
    std::ifstream references(SOURCE_DIR "/references/special_functions.txt");
    int lines = 0;
    for (std::string line; std::getline(references, line); ++lines) {
        std::istringstream words(line);
        std::string routine;
        int bins = 0;
        words >> routine >> bins;
        std::vector<double> numbers;
        for (double number = 0; words >> number;) numbers.push_back(number);
        const auto arg = [&](std::size_t i) { return static_cast<float>(numbers.at(i)); };
        const auto size = static_cast<std::int32_t>(numbers.at(0));
        const float value =
            evaluate([&](textio::Terminal& t) {
                if (routine == "gammln") return gammln(arg(0));
                if (routine == "gammq") return gammq(arg(0), arg(1), t);
                if (routine == "betai") return betai(arg(0), arg(1), arg(2), t);
                if (routine == "ftest") return ftest(size, size, {arg(1), arg(2)}, t).sgfc;
                return tutest(size, size, {arg(1), arg(2)}, {arg(3), arg(4)}, t).sgfc;
            }).value;
        const auto claim = std::ranges::find_if(
            claims, [&](const Claim& c) { return c.routine == routine && c.bins == bins; });
        ASSERT_NE(claim, claims.end()) << line;
        const double reference = numbers.back();
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

TEST(Gammln, HasItsClosedForms) {
    EXPECT_NEAR(gammln(1.0f), 0.0, 1.0e-10);
    EXPECT_NEAR(gammln(2.0f), 0.0, 1.0e-10);
    EXPECT_NEAR(gammln(0.5f), std::log(std::acos(-1.0)) / 2, 3.0e-8);
    EXPECT_NEAR(gammln(11.0f), std::log(3628800.0), 1.0e-6);
}

TEST(Betai, HasItsClosedForms) {
    for (const float x : {0.01f, 0.2f, 0.4f, 0.5f, 0.8f, 0.99f}) {
        SCOPED_TRACE(x);
        const double X = x;
        const double x2 = X * X;
        EXPECT_NEAR(beta(1, 1, x).value, X, 4.0e-7);
        EXPECT_NEAR(beta(0.5f, 0.5f, x).value, 2 / std::acos(-1.0) * std::asin(std::sqrt(X)),
                    6.0e-7);
        EXPECT_NEAR(beta(2, 3, x).value, 6 * x2 - 8 * X * x2 + 3 * x2 * x2, 6.0e-7);
    }
    for (const float b : {0.5f, 3.0f, 500.0f}) {
        EXPECT_EQ(beta(b, 2, 0).value, 0.0f);
        EXPECT_EQ(beta(2, b, 1).value, 1.0f);
    }
}

TEST(Gammq, HasItsClosedFormsAndPublishedValues) {
    for (const float x : {0.0625f, 1.0f, 1.9375f, 2.0f, 10.0f, 50.0f}) {
        const double expected = std::exp(-double{x});
        EXPECT_NEAR(gamma_q(1, x).value, expected, 1.0e-6 * expected + 1.0e-7) << x;
    }
    EXPECT_EQ(gamma_q(7.5f, 0).value, 1.0f);
    EXPECT_NEAR(gamma_q(2.5f, 1).value, 0.849145, 1.0e-6);
    EXPECT_NEAR(gamma_q(3, 5).value, std::exp(-5.0) * 18.5, 1.0e-7);
    EXPECT_NEAR(gamma_q(117.0f / 2, 132.712f / 2).value, 0.1520747, 5.0e-6);  // two histograms
    EXPECT_NEAR(gamma_q(5, 18.307f / 2).value, 0.0500006, 1.0e-7);            // chi-square table
}

TEST(Pauses, ComeWithTheMessageOfTheRoutine) {
    const std::string slow_beta = " A or B too big, or ITMAX too small\n";
    const std::string slow_gamma = " A too large, ITMAX too small\n";
    const struct {
        Paused got;
        std::string shown;
        float value;  // a not-a-number stands for one, 2 for any number from 0 to 1
    } cases[] = {
        {beta(2, 3, 1.5f), " bad argument X in BETAI\n", nan},
        {beta(2, 3, -0.5f), " bad argument X in BETAI\n", nan},
        {beta(2, 3, nan), slow_beta, nan},
        {beta(1.0e6f, 1.0e6f, 0.5f), slow_beta, 2},
        {gamma_q(0, 0), "  \n", 1},
        {gamma_q(2, -1), "  \n  \n", 1},
        {gamma_q(-1, 0), "  \n" + slow_gamma, nan},
        {gamma_q(2000, 2000), slow_gamma, 2},
        {gamma_q(20000, 20002), slow_gamma, 2},
    };
    for (const auto& [got, shown, value] : cases) {
        EXPECT_EQ(got.shown, shown);
        if (std::isnan(value)) {
            EXPECT_TRUE(std::isnan(got.value)) << shown;
        } else if (value == 2) {
            EXPECT_TRUE(got.value > 0 && got.value < 1) << shown << got.value;
        } else {
            EXPECT_EQ(got.value, value) << shown;
        }
    }
}

}  // namespace
}  // namespace dorvek::stats
