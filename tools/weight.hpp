// What the moments of a peak are weighted with, and two places of it that no moment tells.
#pragma once

#include <span>

namespace dorvek::tools {

// Makes g that of the distribution of distances, g r^2, rounded once to a float. r and g are of
// equal lengths.
void weigh_r2(std::span<const float> r, std::span<float> g);

// The median, computed in double precision and rounded once: r where the sum of the weights w over
// ascending r, from the first bin on, reaches half of all. A bin reaches from r - step / 2 to r +
// step / 2, and the sum grows evenly within it. NaN if a weight is below zero, or all are zero.
[[nodiscard]] float median_of(std::span<const float> r, std::span<const float> w, double step);

// Computed likewise: the vertex of the parabola through the logarithms of the highest bin, the
// first of equals, and of its two neighbours: of a Gaussian, its mean, wherever the bins lie. NaN
// if the highest bin is the first or the last, or a neighbour is not above zero. It reads high of a
// skewed peak.
[[nodiscard]] float top_of(std::span<const float> r, std::span<const float> w);

}  // namespace dorvek::tools
