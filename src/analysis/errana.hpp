// The error of a weighted mean.
#pragma once

#include <cassert>
#include <cmath>
#include <cstddef>
#include <span>

#include "textio/real.hpp"

namespace dorvek::analysis {

// Weighted standard error of the values x_k = value(k) about the centre c, with weights w_k, where
// k counts the n weights from 0:
//   sqrt(sum (x_k - c)^2 w_k / (n - 1)) / sqrt(sum w_k)
// The divisor counts entries, not weights. With equal weights and c the mean of x it is the usual
// standard error of a mean. Weights that sum to zero divide by zero.
template <typename Value>
[[nodiscard]] float errana(std::span<const float> weights, Value value, float centre) {
    assert(weights.size() >= 2);
    float weight_sum = 0.0f;
    float sum = 0.0f;
    for (std::size_t k = 0; k < weights.size(); ++k) {
        const float deviation = value(k) - centre;
        weight_sum += weights[k];
        sum = deviation * (deviation * weights[k]) + sum;
    }
    const float spread = std::sqrt(sum / static_cast<float>(weights.size() - 1));
    return spread / std::sqrt(weight_sum);
}

}  // namespace dorvek::analysis
