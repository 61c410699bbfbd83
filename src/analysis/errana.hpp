// Errors of the window statistics.
#pragma once

#include <cstdint>
#include <span>

#include "analysis/window_stats.hpp"

namespace dorvek::analysis {

// Weighted standard error of the values x_k about the centre c, with weights w_k, k = 1 .. n:
//   sqrt(sum (x_k - c)^2 w_k / (n - 1)) / sqrt(sum w_k)
// The divisor counts entries, not weights. With equal weights and c the mean of x it is the usual
// standard error of a mean. Both lists have the same length n; n = 1 or weights that sum to zero
// divide by zero.
[[nodiscard]] float errana(std::span<const float> weights, std::span<const float> values,
                           float centre);

// Sets the errors that follow from others, for the window of bins ilo .. ihi, m = ihi - ilo:
//   dskew = sqrt(6 / m) and dkurt = sqrt(24 / m), those of a normal distribution;
//   dcum4 = 6 var dvar + dpmo4, the errors of var and pmo4 added linearly.
void complete_errors(std::int32_t ilo, std::int32_t ihi, WindowStats& stats);

}  // namespace dorvek::analysis
