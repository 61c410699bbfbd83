#include "input/conbin.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "support/typed.hpp"

namespace dorvek::input {
namespace {

// A set of one partial with g and cn = 10 g, on a grid first, first + step, ...
std::unique_ptr<PdfSet> make_set(float first, float step, const std::vector<float>& g) {
    auto set = std::make_unique<PdfSet>();
    set->npdfs = 1;
    set->nbins = set->used = static_cast<std::int32_t>(g.size());
    for (std::size_t i = 0; i < g.size(); ++i) {
        set->r[i] = first + step * static_cast<float>(i);
        set->g[0][i] = g[i];
        set->cn[0][i] = 10 * g[i];
    }
    return set;
}

std::int32_t reconcile(const PdfSet& first, PdfSet& second, std::string& shown) {
    std::int32_t count = -1;
    shown = support::play("", [&](textio::Terminal& terminal) {
        const auto work = std::make_unique<Column>();
        count = common_bins(first, second, *work, terminal.out);
    });
    return count;
}

TEST(CommonBins, IsTheSmallerCountOfEqualGrids) {
    const auto longer = make_set(0.5f, 0.5f, {1, 2, 3, 4});
    const auto shorter = make_set(0.5f, 0.5f, {5, 6, 7});
    const auto none = make_set(9.0f, 0.5f, {});
    std::string shown;
    EXPECT_EQ(reconcile(*longer, *shorter, shown), 3);
    EXPECT_EQ(reconcile(*shorter, *longer, shown), 3);
    EXPECT_EQ(reconcile(*longer, *none, shown), 0);
    EXPECT_EQ(shown, "");
    EXPECT_EQ(longer->nbins, 4);
    EXPECT_EQ(longer->g[0][3], 4.0f);
}

TEST(CommonBins, ResamplesOnceWhenOneBinDiffers) {
    // Sample 1's first point lies below sample 2's, its last two beyond.
    const auto first = make_set(0.25f, 0.5f, {0, 0, 0, 0, 0});
    const auto second = make_set(0.5f, 0.5f, {1, 2, 3});
    std::string shown;
    EXPECT_EQ(reconcile(*first, *second, shown), 5);
    EXPECT_EQ(shown, " inconsistent bining: adjusted by linear interpolation\n");
    EXPECT_EQ(second->nbins, 5);
    const float expected[] = {0, 1.5f, 2.5f, 0, 0};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(second->r[i], first->r[i]);
        EXPECT_EQ(second->g[0][i], expected[i]);
        EXPECT_EQ(second->cn[0][i], 10 * expected[i]);
    }
    EXPECT_EQ(reconcile(*first, *second, shown), 5);
    EXPECT_EQ(shown, "");

    const auto last_differs = make_set(0.5f, 0.5f, {1, 2, 3});
    last_differs->r[2] = 1.75f;
    const auto straight = make_set(0.5f, 0.5f, {1, 2, 3});
    EXPECT_EQ(reconcile(*last_differs, *straight, shown), 3);
    EXPECT_EQ(straight->g[0][1], 2.0f);  // a point of both grids keeps its value
    EXPECT_EQ(straight->g[0][2], 0.0f);
}

TEST(Approx, IsZeroOutsideAndExactOnTheGrid) {
    const std::vector<float> xa{1, 2, 4};
    const std::vector<float> ya{10, 20, 60};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::pair<float, float> cases[] = {{1, 10},      {2, 20},        {4, 60},
                                             {3, 40},      {1.25f, 12.5f}, {0, 0},
                                             {4.0001f, 0}, {nan, 0},       {-1, 0}};
    for (const auto& [x, y] : cases) EXPECT_EQ(approx(xa, ya, x), y) << x;
    EXPECT_EQ(approx({}, {}, 1.0f), 0.0f);
}

TEST(Lintpo, MakesTheUpperWeightFromTheLower) {
    EXPECT_EQ(lintpo(1, 3, 10, 20, 1.5f), 12.5f);
    // The lower weight 2/3 is 0.6666666865... as a float; its complement is not the float 1/3.
    EXPECT_EQ(lintpo(0, 3, 0, 1, 1), 0.333333313465118408203125f);
}

}  // namespace
}  // namespace dorvek::input
