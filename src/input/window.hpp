// From two typed distances to a range of bins.
#pragma once

#include <cstdint>
#include <span>

namespace dorvek::input {

// Bins ilo .. ihi of the common grid, counted from 1, both ends included, and the grid values of
// these two bins. Before it is located, rmin and rmax are the limits as typed.
struct Window {
    float rmin = 0.0f;
    float rmax = 0.0f;
    std::int32_t ilo = 0;
    std::int32_t ihi = 0;
};

// The number of points of the ascending grid xx(1 .. n) that lie strictly below x: the last bin
// below x, or 0. A grid whose last point is not above its first is searched as a descending one.
[[nodiscard]] std::int32_t locate(std::span<const float> xx, float x);

// Turns typed limits into bins of `grid`. Both limits go to the last grid point strictly below
// them, rmin at least to the first point, and take its value; a limit that has no bin keeps its
// own. False if the window is empty: a limit without a bin, both limits on one bin, or an rmax that
// is not above rmin. On a grid that descends, ihi of a window that is not empty lies below ilo.
[[nodiscard]] bool locate_window(std::span<const float> grid, Window& window);

}  // namespace dorvek::input
