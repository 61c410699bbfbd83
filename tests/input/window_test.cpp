#include "input/window.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace dorvek::input {
namespace {

std::vector<float> quarter_grid() {  // 0.25, 0.5 .. 10
    std::vector<float> grid;
    for (int i = 1; i <= 40; ++i) grid.push_back(0.25f * static_cast<float>(i));
    return grid;
}

TEST(LocateWindow, SnapsBothLimitsToTheBinBelow) {
    static constexpr struct {
        float rmin, rmax;  // as typed
        bool data;
        Window window;
    } cases[] = {
        {1.1f, 2.0f, true, {1.0f, 1.75f, 4, 7}},  // 2.0 is a grid point: the bin below
        {0.1f, 1.1f, true, {0.25f, 1.0f, 1, 4}},
        {0.25f, 1.1f, true, {0.25f, 1.0f, 1, 4}},
        {5.0f, 20.0f, true, {4.75f, 10.0f, 19, 40}},
        {-1.0f, std::numeric_limits<float>::infinity(), true, {0.25f, 10.0f, 1, 40}},
        {0.3f, 0.6f, true, {0.25f, 0.5f, 1, 2}},
        {3.1f, 3.2f, false, {3.0f, 3.0f, 12, 12}},
        {5.0f, 2.0f, false, {4.75f, 1.75f, 19, 7}},
        {1.1f, 0.25f, false, {1.0f, 0.25f, 4, 0}},  // no bin below rmax: it keeps its value
        {11.0f, 12.0f, false, {10.0f, 10.0f, 40, 40}},
    };
    const std::vector<float> grid = quarter_grid();
    for (const auto& [rmin, rmax, data, expected] : cases) {
        SCOPED_TRACE(rmin);
        Window window{.rmin = rmin, .rmax = rmax};
        EXPECT_EQ(locate_window(grid, window), data);
        EXPECT_EQ(window.ilo, expected.ilo);
        EXPECT_EQ(window.ihi, expected.ihi);
        EXPECT_EQ(window.rmin, expected.rmin);
        EXPECT_EQ(window.rmax, expected.rmax);
    }
}

TEST(LocateWindow, IsEmptyWithoutAnAscendingGrid) {
    Window window{.rmin = 1.0f, .rmax = 2.0f};
    EXPECT_FALSE(locate_window({}, window));
    EXPECT_EQ(window.rmin, 1.0f);
    EXPECT_EQ(window.rmax, 2.0f);
    for (const std::vector<float>& grid :
         {std::vector<float>{1.5f}, {5, 4, 3, 2, 1}, {1, 1, 1, 1}}) {
        for (const auto& [rmin, rmax] : {std::pair{0.5f, 3.5f}, {3.5f, 0.5f}, {1.2f, 9.0f}}) {
            window = {.rmin = rmin, .rmax = rmax};
            EXPECT_FALSE(locate_window(grid, window)) << grid.size() << ' ' << rmin;
        }
    }
}

TEST(Locate, CountsThePointsBelow) {
    const std::vector<float> ascending{1, 2, 2, 3};
    const std::vector<float> descending{3, 2, 1};
    const std::vector<float> single{1};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const struct {
        std::span<const float> grid;
        float x;
        std::int32_t j;
    } cases[] = {{ascending, 0.5f, 0},
                 {ascending, 1, 0},
                 {ascending, 1.5f, 1},
                 {ascending, 2.5f, 3},
                 {ascending, 3, 3},
                 {ascending, 9, 4},
                 {ascending, nan, 0},
                 {descending, 2.5f, 1},
                 {descending, 0, 3},
                 {descending, 9, 0},
                 {single, 1, 1},
                 {single, 1.5f, 0},
                 {{}, 1, 0}};
    for (const auto& [grid, x, expected] : cases) {
        std::int32_t j = -1;
        locate(grid, x, j);
        EXPECT_EQ(j, expected) << grid.size() << ' ' << x;
    }
}

}  // namespace
}  // namespace dorvek::input
