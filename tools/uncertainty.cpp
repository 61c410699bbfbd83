#include "uncertainty.hpp"

#include <algorithm>
#include <boost/math/distributions/students_t.hpp>
#include <cmath>
#include <cstddef>
#include <limits>

namespace dorvek::tools {
namespace {

using boost::math::students_t;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

}  // namespace

void add(Sample& sample, double value) {
    if (!std::isfinite(value)) value = nan;
    const double deviation = value - sample.mean;
    sample.n += 1;
    sample.mean += deviation / sample.n;
    sample.squares += deviation * (value - sample.mean);
}

double sd_of(const Sample& sample) {
    return std::sqrt(sample.squares / (sample.n - 1));
}

Estimate mean_of(const Sample& sample) {
    return {.value = sample.mean, .se = sd_of(sample) / std::sqrt(sample.n), .doff = sample.n - 1};
}

Estimate difference_of(const Sample& a, const Sample& b) {
    const Estimate of_a = mean_of(a);
    const Estimate of_b = mean_of(b);
    const double u = of_a.se * of_a.se;
    const double v = of_b.se * of_b.se;
    return {.value = b.mean - a.mean,
            .se = std::sqrt(u + v),
            .doff = (u + v) * (u + v) / (u * u / of_a.doff + v * v / of_b.doff)};
}

double ci95_of(double se, double doff) {
    return doff > 0 ? se * quantile(complement(students_t(doff), 0.025)) : nan;
}

double significance_of(double t, double doff) {
    if (std::isnan(t) || !(doff > 0)) return nan;
    return 2 * cdf(complement(students_t(doff), std::abs(t)));
}

Budget budget_of(const Estimate& estimate, std::span<const double> elsewhere) {
    double largest = 0;
    for (const double value : elsewhere) {
        const double deviation = std::abs(value - estimate.value);
        if (std::isnan(deviation) || deviation > largest) largest = deviation;  // nan stays
    }
    const double window = largest / std::sqrt(3.0);
    const double u = std::hypot(estimate.se, window);
    const double ratio = u / estimate.se;
    const double doff =
        estimate.se == 0 ? u + infinity : ratio * ratio * ratio * ratio * estimate.doff;
    return {.window = window, .u = u, .doff = doff, .U95 = ci95_of(u, doff)};
}

std::vector<double> holm(std::span<const double> significances) {
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < significances.size(); ++i) {
        if (!std::isnan(significances[i])) order.push_back(i);
    }
    std::ranges::sort(order, {}, [&](std::size_t i) { return significances[i]; });
    std::vector<double> adjusted(significances.begin(), significances.end());
    double least = 0;  // no larger significance is adjusted to less than a smaller one
    for (std::size_t k = 0; k < order.size(); ++k) {
        const double share = static_cast<double>(order.size() - k) * significances[order[k]];
        least = std::min(1.0, std::max(least, share));
        adjusted[order[k]] = least;
    }
    return adjusted;
}

}  // namespace dorvek::tools
