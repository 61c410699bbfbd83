#include "analysis/errana.hpp"

#include <cmath>

#include "textio/real.hpp"

namespace dorvek::analysis {

float errana(std::span<const float> weights, std::span<const float> values, float centre) {
    float weight_sum = 0.0f;
    float sum = 0.0f;
    for (std::size_t k = 0; k < weights.size(); ++k) {
        const float deviation = values[k] - centre;
        weight_sum += weights[k];
        sum = deviation * (deviation * weights[k]) + sum;
    }
    const float spread = std::sqrt(sum / static_cast<float>(weights.size() - 1));
    return spread / std::sqrt(weight_sum);
}

void complete_errors(std::int32_t ilo, std::int32_t ihi, WindowStats& stats) {
    const auto steps = static_cast<float>(ihi - ilo);
    stats.dskew = std::sqrt(6.0f / steps);
    stats.dkurt = std::sqrt(24.0f / steps);
    stats.dcum4 = 6.0f * stats.var * stats.dvar + stats.dpmo4;
}

}  // namespace dorvek::analysis
