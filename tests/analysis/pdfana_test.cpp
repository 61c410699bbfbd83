#include "analysis/pdfana.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "analysis/errana.hpp"
#include "support/typed.hpp"

namespace dorvek::analysis {
namespace {

using Sets = std::array<input::PdfSet, 2>;

struct Outcome {
    Norm norm{};
    std::array<WindowStats, 2> stats;
    std::string shown;
};

// Partial 1 of both sets, on the grid 1, 2, 3, ...
std::unique_ptr<Sets> make_sets(const std::vector<float>& g, const std::vector<float>& cn) {
    auto sets = std::make_unique<Sets>();
    for (input::PdfSet& set : *sets) {
        set.nbins = static_cast<std::int32_t>(g.size());
        for (std::size_t i = 0; i < g.size(); ++i) {
            set.r[i] = static_cast<float>(i + 1);
            set.g[0][i] = g[i];
            set.cn[0][i] = cn[i];
        }
    }
    return sets;
}

Outcome analyse(const Sets& sets, std::array<std::int32_t, 2> ipdf, std::int32_t ilo,
                std::int32_t ihi) {
    Outcome outcome;
    outcome.shown = support::play("", [&](textio::Terminal& terminal) {
        const auto work = std::make_unique<input::Column>();
        outcome.norm = pdfana(sets, ipdf, ilo, ihi, outcome.stats, *work, terminal.out);
    });
    for (WindowStats& stats : outcome.stats) complete_errors(ilo, ihi, stats);
    return outcome;
}

// By hand: norm 4, mean 2, sum d^2 g = 2, sum d^4 g = 2, A = 1 + 8 + 9 = 18.
TEST(Pdfana, WorkedExample) {
    const auto sets = make_sets({1, 2, 1, 0, 0}, {0, 2, 4, 4, 4});
    const Outcome outcome = analyse(*sets, {1, 1}, 1, 3);
    EXPECT_EQ(outcome.norm, Norm::found);
    EXPECT_EQ(outcome.shown, "");
    for (const WindowStats& s : outcome.stats) {
        const std::pair<float, float> values[] = {
            {s.CN, 4.0f},           {s.dCN, 1.8757714f},  // sqrt((289 + 200 + 81) / 2 / 4) * 4 / 18
            {s.Rmea, 2.0f},         {s.dRmea, 0.5f},       {s.Rmod, 2.0f},
            {s.var, 0.5f},          {s.varl, 0.25f},       {s.dvar, 0.35355338f},
            {s.varr, 0.25f},        {s.sdev, 0.70710677f}, {s.adif, 0.0f},
            {s.arat, 1.0f},         {s.pmo3, 0.0f},        {s.dpmo3, 0.5f},
            {s.skew, 0.0f},         {s.dskew, 1.7320508f}, {s.pmo4, 0.5f},
            {s.dpmo4, 0.35355338f}, {s.cum4, -0.25f},      {s.dcum4, 1.4142135f},
            {s.dkurt, 3.4641016f},  {s.kurt, -0.99999976f}};  // sdev^4 is not var^2 to the last bit
        for (const auto& [got, expected] : values) EXPECT_EQ(got, expected);
    }
}

// By hand: norm 3, mean 5/3, var 2/9 of which 4/27 to the left, pmo3 -2/27, pmo4 2/27.
TEST(Pdfana, TwoBinsAreEnough) {
    const auto sets = make_sets({9, 1, 2, 9}, {0, 1, 3, 9});
    (*sets)[0].r = {10, 1, 2, 10};
    (*sets)[1].r = {0, 1, 2, 10};
    const Outcome outcome = analyse(*sets, {1, 1}, 2, 3);
    const WindowStats& s = outcome.stats[0];
    const float ulps = 1.0e-6f;  // a few roundings of relative size 6e-8 each
    EXPECT_EQ(s.CN, 2.0f);
    EXPECT_EQ(s.Rmod, 2.0f);
    EXPECT_NEAR(s.Rmea, 5.0 / 3, ulps);
    EXPECT_NEAR(s.dRmea, std::sqrt(2.0) / 3, ulps);
    EXPECT_NEAR(s.var, 2.0 / 9, ulps);
    EXPECT_NEAR(s.varl, 4.0 / 27, ulps);
    EXPECT_NEAR(s.varr, 2.0 / 27, ulps);
    EXPECT_NEAR(s.arat, 0.5, ulps);
    EXPECT_NEAR(s.pmo3, -2.0 / 27, ulps);
    EXPECT_NEAR(s.skew, -std::sqrt(0.5), 10 * ulps);
    EXPECT_NEAR(s.pmo4, 2.0 / 27, ulps);
    EXPECT_NEAR(s.kurt, -1.5, 10 * ulps);
    EXPECT_EQ(s.dskew, 2.4494898f);
    EXPECT_EQ(s.dkurt, 4.8989797f);
    // The bin width is that of the grid's first interval, -9 and 1; only its sign stays, in dCN.
    EXPECT_NEAR(s.dCN, -2 * std::sqrt(22.0) / 9, ulps);
    EXPECT_NEAR(outcome.stats[1].dCN, 2 * std::sqrt(22.0) / 9, ulps);
    EXPECT_EQ(outcome.stats[1].var, s.var);
}

TEST(Pdfana, TheFirstOfEqualMaximaIsTheMode) {
    const auto sets = make_sets({-1, 3, 1, 3, -2}, {0, 0, 0, 0, 0});
    EXPECT_EQ(analyse(*sets, {1, 1}, 1, 5).stats[0].Rmod, 2.0f);
}

TEST(Pdfana, WeightInOneBinHasNoWidth) {
    const auto sets = make_sets({0, 5, 0}, {0, 1, 2});
    const WindowStats s = analyse(*sets, {1, 1}, 1, 3).stats[0];
    EXPECT_EQ(s.Rmea, 2.0f);
    for (const float zero : {s.var, s.varl, s.varr, s.adif, s.dvar, s.pmo3, s.skew, s.pmo4, s.kurt,
                             s.cum4, s.dpmo3, s.dpmo4, s.dcum4}) {
        EXPECT_EQ(zero, 0.0f);
    }
    EXPECT_TRUE(std::isnan(s.arat));
    EXPECT_EQ(s.dskew, 1.7320508f);
}

TEST(Pdfana, NarrowPeaksHaveNoHigherMoments) {
    // Two bins of weight 1, 2h apart: var = h^2. The float below 0.001 gives a variance below 1e-6.
    for (const auto& [h, higher] : {std::pair{0.0009999f, false}, {0.0010001f, true}}) {
        const auto sets = make_sets({1, 1}, {0, 1});
        for (input::PdfSet& set : *sets) set.r = {-h, h};
        const WindowStats s = analyse(*sets, {1, 1}, 1, 2).stats[0];
        EXPECT_EQ(s.pmo4 > 0.0f, higher);
        EXPECT_EQ(s.kurt < -1.9f, higher);
        EXPECT_EQ(s.dcum4, 6.0f * s.var * s.dvar + s.dpmo4);
    }
}

TEST(Pdfana, WithoutAtomsThereIsNothingToReport) {
    const std::string message = " zero norm, no atoms found\n";
    const auto sets = make_sets({1, -1, 0, 1.0e-35f, 0, 2.0e-35f, 0}, {0, 1, 2, 3, 4, 5, 6});
    const struct {
        std::array<std::int32_t, 2> ipdf;
        std::int32_t ilo, ihi;
        Norm norm;
    } cases[] = {
        {{1, 1}, 1, 2, Norm::zero},  {{1, 1}, 2, 3, Norm::zero},  // sums 0 and -1
        {{1, 1}, 4, 5, Norm::zero},  {{1, 1}, 6, 7, Norm::found}, {{1, 2}, 6, 7, Norm::zero},
        {{2, 1}, 6, 7, Norm::zero},  {{0, 1}, 6, 7, Norm::zero},  {{1, 11}, 6, 7, Norm::zero},
        {{-7, 1}, 6, 7, Norm::zero},
    };
    for (const auto& [ipdf, ilo, ihi, norm] : cases) {
        const Outcome outcome = analyse(*sets, ipdf, ilo, ihi);
        EXPECT_EQ(outcome.norm, norm) << ipdf[0] << ' ' << ipdf[1] << ' ' << ilo;
        EXPECT_EQ(outcome.shown, norm == Norm::zero ? message : "");
    }
}

TEST(Pdfana, AWindowMayBeAsWideAsTheGrid) {
    const auto sets = std::make_unique<Sets>();
    for (input::PdfSet& set : *sets) {
        for (std::size_t i = 0; i < set.r.size(); ++i) {
            set.r[i] = static_cast<float>(i);
            set.g[9][i] = 1.0f;
            set.cn[9][i] = static_cast<float>(i);
        }
    }
    const Outcome outcome = analyse(*sets, {10, 10}, 1, input::maxbin);
    EXPECT_EQ(outcome.norm, Norm::found);
    EXPECT_EQ(outcome.stats[1].CN, 9999.0f);
    // Each of 10000 additions may be off by 2^-24 of its sum.
    EXPECT_NEAR(outcome.stats[1].Rmea, 4999.5, 4999.5 * 6.0e-4);
    EXPECT_NEAR(outcome.stats[1].var, (1.0e8 - 1) / 12, (1.0e8 - 1) / 12 * 6.0e-4);
}

TEST(Errana, EqualWeightsGiveTheStandardErrorOfAMean) {
    const std::vector<float> weights(4, 1.0f);
    const std::vector<float> values{1, 3, 5, 7};  // standard deviation sqrt(20 / 3)
    EXPECT_NEAR(errana(weights, values, 4), std::sqrt(20.0 / 3) / 2, 1.0e-6);
    const std::vector<float> w{1, 2, 1};
    EXPECT_EQ(errana(w, std::vector<float>{1, 2, 3}, 2), 0.5f);
    EXPECT_EQ(errana(w, std::vector<float>{1, 0, 1}, 0.5f), 0.35355338f);
}

}  // namespace
}  // namespace dorvek::analysis
