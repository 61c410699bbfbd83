#include "stats/compare.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

#include "support/typed.hpp"

namespace dorvek::stats {
namespace {

using textio::Terminal;

// Each test on a terminal where nothing needs to be typed.
MeanTest t_test(std::int32_t n1, std::int32_t n2, Pair mean, Pair var) {
    MeanTest result;
    const auto body = [&](Terminal& terminal) { result = tutest(n1, n2, mean, var, terminal); };
    EXPECT_EQ(support::play("", body), "");
    return result;
}

VarianceTest f_test(std::int32_t n1, std::int32_t n2, Pair var) {
    VarianceTest result;
    const auto body = [&](Terminal& terminal) { result = ftest(n1, n2, var, terminal); };
    EXPECT_EQ(support::play("", body), "");
    return result;
}

using Bins = std::array<float, 6>;

DistributionTest chi_square_test(const Bins& u, const Bins& v, std::int64_t constraints) {
    DistributionTest result;
    const auto body = [&](Terminal& terminal) { result = ditest(u, v, constraints, terminal); };
    EXPECT_EQ(support::play("", body), "");
    return result;
}

void expect_digits(float value, double expected, double unit) {
    EXPECT_NEAR(value, expected, unit) << "a unit of the last digit published";
}

TEST(Tutest, AgreesWithPublishedCases) {
    static constexpr struct {
        std::int32_t n1, n2;
        Pair mean, var;
        MeanTest expected, unit;
    } cases[] = {
        // R documentation, t.test(1:10, y = 7:20)
        {10,
         14,
         {5.5f, 13.5f},
         {9.1666667f, 17.5f},
         {-5.4349f, 21.982f, 1.855e-05f},
         {0.0001f, 0.001f, 0.001e-05f}},
        // R, sleep data
        {10,
         10,
         {0.75f, 2.33f},
         {3.2005556f, 4.009f},
         {-1.8608f, 17.776f, 0.07939f},
         {0.0001f, 0.001f, 0.00001f}},
        // Two degrees of freedom: 1 - t / sqrt(2 + t^2)
        {2, 2, {1, 0}, {1, 1}, {1, 2, 0.42264973f}, {0, 0, 2.0e-6f}},
        // By hand: t = -0.05 / sqrt(0.00022), doff = 99 * 0.00022^2 / (0.0001^2 + 0.00012^2)
        {100,
         100,
         {2.5f, 2.55f},
         {0.01f, 0.012f},
         {-3.3710f, 196.377f, 0.0009018f},
         {0.0001f, 0.001f, 0.0000005f}},
    };
    for (const auto& [n1, n2, mean, var, expected, unit] : cases) {
        const MeanTest got = t_test(n1, n2, mean, var);
        expect_digits(got.stud, expected.stud, unit.stud);
        expect_digits(got.doff, expected.doff, unit.doff);
        expect_digits(got.sgfc, expected.sgfc, unit.sgfc);

        const MeanTest exchanged = t_test(n2, n1, {mean[1], mean[0]}, {var[1], var[0]});
        EXPECT_EQ(exchanged.stud, -got.stud);
        EXPECT_EQ(exchanged.doff, got.doff);
        EXPECT_EQ(exchanged.sgfc, got.sgfc);
    }
}

TEST(Ftest, AgreesWithPublishedCases) {
    static constexpr struct {
        std::int32_t n1, n2;
        Pair var;
        VarianceTest expected, unit;
    } cases[] = {
        {6, 8, {617.5f, 312.5f}, {1.976f, 0.3992f}, {0, 0.0001f}},  // a published variance test
        {3, 3, {3, 1}, {3, 0.5f}, {0, 2.0e-6f}},                    // 2 / (1 + F)
        {3, 3, {1, 7}, {7, 0.25f}, {0, 2.0e-6f}},
        {100, 100, {0.01f, 0.012f}, {1.2f, 0.366f}, {1.0e-6f, 0.0005f}},
    };
    for (const auto& [n1, n2, var, expected, unit] : cases) {
        const VarianceTest got = f_test(n1, n2, var);
        expect_digits(got.stud, expected.stud, unit.stud);
        expect_digits(got.sgfc, expected.sgfc, unit.sgfc);
        const VarianceTest exchanged = f_test(n2, n1, {var[1], var[0]});
        EXPECT_EQ(exchanged.stud, got.stud);
        EXPECT_EQ(exchanged.sgfc, got.sgfc);
    }
}

TEST(Ditest, LeavesOutEmptyBins) {
    const Bins u{0.0f, 1.0f, 2.0f, 4.0f, 3.0f, 0.0f};
    const Bins v{0.0f, 1.5f, 2.0f, 3.0f, 3.5f, 1.0f};
    EXPECT_EQ(chi_square_test(u, v, 0).doff, 3.0f);
    // 0.25/2.5 + 1/7 + 0.25/6.5 + 1; Q(3/2, x) = erfc(sqrt x) + 2 sqrt(x / pi) exp(-x)
    const double chsq = 0.1 + 1.0 / 7 + 0.25 / 6.5 + 1;
    const double x = chsq / 2;
    EXPECT_NEAR(chi_square_test(u, v, 0).chsq, chsq, 1.0e-6);
    EXPECT_NEAR(chi_square_test(u, v, 0).sgfc,
                std::erfc(std::sqrt(x)) + 2 * std::sqrt(x / std::acos(-1.0)) * std::exp(-x),
                1.0e-6);
    EXPECT_EQ(chi_square_test(u, v, 1).doff, 2.0f);
    EXPECT_NEAR(chi_square_test(u, v, 1).sgfc, std::exp(-x), 1.0e-6);  // two degrees of freedom
    const DistributionTest same = chi_square_test(u, u, 0);
    EXPECT_EQ(same.doff, 2.0f);
    EXPECT_EQ(same.chsq, 0.0f);
    EXPECT_EQ(same.sgfc, 1.0f);
}

// Whole comparisons: what pauses, and how often, and what comes out all the same.
TEST(Statana, PausesWhereThereIsNothingToTest) {
    const auto sets = std::make_unique<std::array<input::PdfSet, 2>>();
    for (std::size_t bin = 0; bin < 6; ++bin) {
        (*sets)[0].g[1][bin] = static_cast<float>(bin + 1);
        (*sets)[1].g[4][bin] = static_cast<float>(6 - bin);
        (*sets)[1].g[5][bin] = -8.0f;
        (*sets)[1].g[6][bin] = static_cast<float>(bin + 1);
    }
    const std::string beta = " A or B too big, or ITMAX too small\n";
    const std::string gamma = " A too large, ITMAX too small\n";
    const struct {
        std::int32_t ilo, ihi, second;
        std::int64_t constraints;
        std::string shown;
        float doff, chsq;
    } cases[] = {
        {1, 6, 5, 0, "", 4, 10},                    // 25/7 + 9/7 + 1/7, twice
        {1, 6, 7, 0, "", 4, 0},                     // the same values in another partial
        {1, 6, 5, 5, "  \n", -1, 10},               // no degrees of freedom left
        {1, 6, 6, 0, "  \n  \n", 4, -242.771429f},  // (u + 8)^2 / (u - 8): gammq and gser pause
        // Two bins: N - 1 = 0. All three arguments of betai are not-a-numbers, which never
        // converge; gammq at a = 0 pauses, and so does its series, which starts from 1 / a.
        {3, 4, 5, 0, beta + beta + beta + "  \n" + gamma, 0, 2.0f / 7},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.shown);
        ComparisonResult result;
        const std::array<std::int32_t, 2> ipdf{2, c.second};
        const std::string got = support::play("\n\n\n\n\n", [&](Terminal& terminal) {
            result =
                statana(c.ilo, c.ihi, ipdf, c.constraints, {2, 2}, {0.5f, 0.5f}, *sets, terminal);
        });
        EXPECT_EQ(got, c.shown);
        EXPECT_EQ(result.distribution.doff, c.doff);
        EXPECT_NEAR(result.distribution.chsq, c.chsq, 1.0e-3);
        if (c.chsq == 0) {
            EXPECT_EQ(result.distribution.sgfc, 1.0f);
        }
        if (c.ihi > c.ilo + 1) {
            EXPECT_EQ(result.mean.stud, 0.0f);
            EXPECT_EQ(result.mean.sgfc, 1.0f);
            EXPECT_EQ(result.variance.stud, 1.0f);
            EXPECT_NEAR(result.variance.sgfc, 1.0f, 1.0e-6f);
        } else {
            EXPECT_TRUE(std::isnan(result.mean.sgfc));
            EXPECT_TRUE(std::isnan(result.variance.sgfc));
        }
    }
}

}  // namespace
}  // namespace dorvek::stats
