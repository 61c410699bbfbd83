#include "stats/compare.hpp"

#include <cmath>

#include "textio/real.hpp"

namespace dorvek::stats {

MeanTest tutest(std::int32_t n1, std::int32_t n2, Pair mean, Pair var, Messages& messages) {
    const float s1 = var[0] / static_cast<float>(n1);
    const float s2 = var[1] / static_cast<float>(n2);
    const float sum = s1 + s2;
    const float stud = (mean[0] - mean[1]) / std::sqrt(sum);
    const float doff =
        sum * sum / (s1 * s1 / static_cast<float>(n1 - 1) + s2 * s2 / static_cast<float>(n2 - 1));
    const float sgfc = betai(0.5f * doff, 0.5f, doff / (doff + stud * stud), messages);
    return {.stud = stud, .doff = doff, .sgfc = sgfc};
}

VarianceTest ftest(std::int32_t n1, std::int32_t n2, Pair var, Messages& messages) {
    const bool first_larger = var[0] > var[1];
    const float f = first_larger ? var[0] / var[1] : var[1] / var[0];
    // Degrees of freedom of the numerator and of the denominator.
    const auto d1 = static_cast<float>((first_larger ? n1 : n2) - 1);
    const auto d2 = static_cast<float>((first_larger ? n2 : n1) - 1);
    const float p = betai(0.5f * d2, 0.5f * d1, d2 / (d2 + d1 * f), messages);
    const float q = betai(0.5f * d1, 0.5f * d2, d1 / (d1 + d2 / f), messages);
    return {.stud = f, .sgfc = (1.0f - q) + p};
}

DistributionTest ditest(std::span<const float> u, std::span<const float> v,
                        std::int64_t constraints, Messages& messages) {
    auto doff = static_cast<float>(static_cast<std::int64_t>(u.size()) - 1 - constraints - 1);
    float chsq = 0.0f;
    for (std::size_t j = 0; j < u.size(); ++j) {
        if (u[j] == 0.0f && v[j] == 0.0f) {
            doff -= 1.0f;
        } else {
            const float difference = u[j] - v[j];
            chsq += difference * difference / (u[j] + v[j]);
        }
    }
    return {.doff = doff, .chsq = chsq, .sgfc = gammq(0.5f * doff, 0.5f * chsq, messages)};
}

ComparisonResult statana(std::span<const float> u, std::span<const float> v,
                         std::int64_t constraints, Pair mean, Pair var, Messages& messages) {
    const auto n = static_cast<std::int32_t>(u.size()) - 1;
    // The order of the tests is that of their messages.
    const MeanTest mean_test = tutest(n, n, mean, var, messages);
    const VarianceTest variance_test = ftest(n, n, var, messages);
    return {.mean = mean_test,
            .variance = variance_test,
            .distribution = ditest(u, v, constraints, messages)};
}

}  // namespace dorvek::stats
