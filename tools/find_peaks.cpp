#include "find_peaks.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>

namespace dorvek::tools {
namespace {

double mean_step(std::span<const float> r) {
    return (static_cast<double>(r.back()) - r.front()) / static_cast<double>(r.size() - 1);
}

// The Gaussian filter with a standard deviation of `sigma` bins; none if that is not positive.
std::vector<double> smoothed(std::span<const float> g, double sigma) {
    if (!(sigma > 0)) return {g.begin(), g.end()};
    const auto radius = static_cast<std::size_t>(std::floor(4 * sigma + 0.5));
    std::vector<double> weights(radius + 1);
    double total = 0;
    for (std::size_t d = 0; d <= radius; ++d) {
        const auto distance = static_cast<double>(d);
        weights[d] = std::exp(-0.5 * distance * distance / (sigma * sigma));
        total += d == 0 ? weights[d] : 2 * weights[d];
    }
    for (double& weight : weights) weight /= total;

    std::vector<double> padded(radius, g.front());
    padded.insert(padded.end(), g.begin(), g.end());
    padded.insert(padded.end(), radius, g.back());
    std::vector<double> copy(g.size());
    for (std::size_t i = 0; i < copy.size(); ++i) {
        const std::size_t middle = i + radius;
        copy[i] = weights[0] * padded[middle];
        for (std::size_t d = radius; d > 0; --d) {
            copy[i] += weights[d] * (padded[middle - d] + padded[middle + d]);
        }
    }
    return copy;
}

double prominence_of(std::span<const double> x, std::ptrdiff_t peak) {
    const auto top = x.begin() + peak;
    const auto lowest = [&](auto from, auto end) {
        const auto higher = std::find_if(from, end, [&](double other) { return !(other <= *top); });
        return *std::min_element(from, higher);
    };
    return *top -
           std::max(lowest(std::make_reverse_iterator(top + 1), x.rend()), lowest(top, x.end()));
}

std::vector<std::ptrdiff_t> prominent_maxima(std::span<const double> x, double prominence) {
    std::vector<std::ptrdiff_t> maxima;
    const auto at = x.begin();
    const std::ptrdiff_t last = std::ssize(x) - 1;
    for (std::ptrdiff_t i = 1; i < last; ++i) {
        if (!(at[i - 1] < at[i])) continue;
        const std::ptrdiff_t left = i;
        while (i + 1 < last && at[i + 1] == at[left]) ++i;
        const std::ptrdiff_t middle = (left + i) / 2;
        if (at[i + 1] < at[left] && prominence_of(x, middle) >= prominence) {
            maxima.push_back(middle);
        }
    }
    return maxima;
}

// How many of the `count` bins on one side of a peak belong to its window. Both iterators lead away
// from the peak and begin beside it.
template <typename G, typename Copy>
std::ptrdiff_t reach(G g, Copy copy, std::ptrdiff_t count) {
    const std::ptrdiff_t zero = std::find(g, g + count, 0.0f) - g;
    return 1 + (zero < count ? zero : std::min_element(copy, copy + count) - copy);
}

// The point midway between two, or one near it with fewer digits; in any case above the first and
// not above the second, as near as they may be.
float limit_between(float below, float above) {
    const double middle = (static_cast<double>(below) + above) / 2;
    const double distance = static_cast<double>(above) - below;
    for (int decimals = 0; decimals < 8; ++decimals) {
        std::array<char, 32> text{};
        const auto [end, error] = std::to_chars(text.begin(), text.end(), middle,
                                                std::chars_format::scientific, decimals);
        float limit = 0;
        std::from_chars(text.begin(), end, limit);
        if (std::abs(limit - middle) < 0.01 * distance) return limit;
    }
    return std::max(static_cast<float>(middle),
                    std::nextafter(below, std::numeric_limits<float>::infinity()));
}

}  // namespace

std::vector<input::Window> find_peaks(std::span<const float> r, std::span<const float> g,
                                      const PeakSearch& search) {
    assert(r.size() == g.size());
    if (std::ranges::adjacent_find(r, std::greater_equal()) != r.end()) return {};
    const std::ptrdiff_t zero = std::ranges::find(g, 0.0f) - g.begin();
    const std::ptrdiff_t first = zero < std::ssize(g) ? zero : 0;
    const auto from = std::lower_bound(r.begin() + first, r.end(), search.range.from);
    const auto to = std::upper_bound(from, r.end(), search.range.to);
    if (from == to) return {};

    // Bins count from 0 within the range: of g, and of its copy.
    const std::ptrdiff_t offset = from - r.begin();
    const auto count = static_cast<std::size_t>(to - from);
    const auto part = g.subspan(static_cast<std::size_t>(offset), count);
    const std::ptrdiff_t largest = std::ranges::max_element(part) - part.begin();
    const std::vector<double> whole_copy = smoothed(g.subspan(static_cast<std::size_t>(first)),
                                                    search.smooth * from[largest] / mean_step(r));
    const auto copy =
        std::span(whole_copy).subspan(static_cast<std::size_t>(offset - first), count);
    const std::vector<std::ptrdiff_t> peaks = prominent_maxima(copy, search.prominence);

    std::vector<input::Window> windows;
    for (std::size_t k = 0; k < peaks.size(); ++k) {
        const std::ptrdiff_t before = k == 0 ? -1 : peaks[k - 1];
        const std::ptrdiff_t peak = peaks[k];
        const std::ptrdiff_t behind = k + 1 == peaks.size() ? std::ssize(copy) : peaks[k + 1];
        const auto left = reach(std::make_reverse_iterator(part.begin() + peak),
                                std::make_reverse_iterator(copy.begin() + peak), peak - before - 1);
        const auto right =
            reach(part.begin() + peak + 1, copy.begin() + peak + 1, behind - peak - 1);
        input::Window window{.ilo = static_cast<std::int32_t>(1 + offset + peak - left),
                             .ihi = static_cast<std::int32_t>(1 + offset + peak + right)};
        set_limits(r, window);
        windows.push_back(window);
    }
    return windows;
}

void set_limits(std::span<const float> r, input::Window& window) {
    const auto limit_above = [r](std::int32_t bin) {
        const auto i = static_cast<std::size_t>(bin);
        const float above = i < r.size() ? r[i] : r.back() + static_cast<float>(mean_step(r));
        return limit_between(r[i - 1], above);
    };
    window.rmin = limit_above(window.ilo);
    window.rmax = limit_above(window.ihi);
    [[maybe_unused]] input::Window located = window;
    assert(locate_window(r, located) && located.ilo == window.ilo && located.ihi == window.ihi);
}

Highest highest_of(std::span<const float> r, std::span<const float> g,
                   const input::Window& window) {
    const auto lo = static_cast<std::size_t>(window.ilo - 1);
    const auto part = g.subspan(lo, static_cast<std::size_t>(window.ihi) - lo);
    const auto highest = std::ranges::max_element(part);
    Highest top{.mode = r[lo + static_cast<std::size_t>(highest - part.begin())],
                .height = *highest};
    const auto warn_if = [&](bool so, const char* what) {
        if (so) top.note += (top.note.empty() ? "" : "; ") + std::string(what);
    };
    warn_if(part.size() < 5, "fewer than 5 bins");
    warn_if(part.front() > 0.5f * top.height, "g at rmin above half the height");
    warn_if(part.back() > 0.5f * top.height, "g at rmax above half the height");
    warn_if(std::ranges::any_of(part, [](float value) { return value < 0; }), "g below zero");
    return top;
}

}  // namespace dorvek::tools
