#include "weight.hpp"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>
#include <limits>

namespace dorvek::tools {
namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();

}  // namespace

void weigh_r2(std::span<const float> r, std::span<float> g) {
    assert(r.size() == g.size());
    for (std::size_t i = 0; i < g.size(); ++i) {
        const double distance = r[i];
        g[i] = static_cast<float>(distance * distance * static_cast<double>(g[i]));
    }
}

float median_of(std::span<const float> r, std::span<const float> w, double step) {
    assert(r.size() == w.size());
    double all = 0;
    for (const float weight : w) {
        if (!(weight >= 0)) return nan;
        all += weight;
    }
    double below = 0;
    std::size_t i = 0;
    while (below + w[i] < all / 2) below += w[i++];
    return static_cast<float>(r[i] + step * ((all / 2 - below) / w[i] - 0.5));
}

float top_of(std::span<const float> r, std::span<const float> w) {
    assert(r.size() == w.size());
    const auto top = static_cast<std::size_t>(std::ranges::max_element(w) - w.begin());
    if (top == 0 || top + 1 >= w.size()) return nan;
    if (!(w[top - 1] > 0) || !(w[top + 1] > 0)) return nan;
    // Distances from the highest bin, and how far the logarithm falls to either side.
    const double left = static_cast<double>(r[top]) - r[top - 1];
    const double right = static_cast<double>(r[top + 1]) - r[top];
    const double left_fall = std::log(static_cast<double>(w[top]) / w[top - 1]);
    const double right_fall = std::log(static_cast<double>(w[top]) / w[top + 1]);
    const double vertex = (left_fall * right * right - right_fall * left * left) /
                          (2 * (left_fall * right + right_fall * left));
    return static_cast<float>(r[top] + vertex);
}

}  // namespace dorvek::tools
