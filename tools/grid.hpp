// Grids of r: a range, and what even steps are.
#pragma once

#include <cmath>
#include <cstddef>
#include <limits>

namespace dorvek::tools {

// The bins with from <= r <= to.
struct Range {
    float from = -std::numeric_limits<float>::infinity();
    float to = std::numeric_limits<float>::infinity();
};

// The first of n bins at(0), at(1), ... that is out of step: it lies half a step or more from where
// even steps from the first bin to the last put it, or its distance from the bin before differs
// from a step by half a step or more. n if none is; fewer than two bins have no step. Printed grids
// are rounded: half a step is more than that, and less than a missing bin makes. Steps may be
// negative or 0.
template <typename At>
[[nodiscard]] std::size_t out_of_step(std::size_t n, At at) {
    if (n < 2) return n;
    const double first = at(0);
    const double step = (at(n - 1) - first) / static_cast<double>(n - 1);
    const auto is_small = [&](double length) {
        return length == 0 || std::abs(length) < std::abs(step) / 2;
    };
    double before = first;
    for (std::size_t i = 1; i < n; ++i) {
        const double place = at(i);
        const bool drifts = !is_small(place - first - static_cast<double>(i) * step);
        if (drifts || !is_small(place - before - step)) return i;
        before = place;
    }
    return n;
}

}  // namespace dorvek::tools
