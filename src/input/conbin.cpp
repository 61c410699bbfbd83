#include "input/conbin.hpp"

#include <algorithm>
#include <array>

#include "textio/real.hpp"

namespace dorvek::input {
namespace {

// Looks at every bin without stopping at a difference: that is what the compiler makes vectors of.
bool same_values(std::span<const float> a, std::span<const float> b) {
    std::uint32_t differences = 0;
    for (std::size_t i = 0; i < a.size(); ++i) differences += a[i] != b[i] ? 1U : 0U;
    return differences == 0;
}

// Where x lies on an ascending grid of n points.
struct Place {
    std::int32_t below;  // points at or below x, 0 .. n
    bool on_point;       // x is the last of them
};

Place place_of(std::span<const float> xa, float x) {
    // jl and ju count from 1 and close in on x: xa(jl) < x < xa(ju).
    std::size_t jl = 0;
    std::size_t ju = xa.size() + 1;
    while (ju - jl > 1) {
        const std::size_t jm = (ju + jl) / 2;
        if (x == xa[jm - 1]) return {.below = static_cast<std::int32_t>(jm), .on_point = true};
        if (x > xa[jm - 1]) {
            jl = jm;
        } else {
            ju = jm;
        }
    }
    return {.below = static_cast<std::int32_t>(jl), .on_point = false};
}

float value_at(Place place, std::span<const float> xa, std::span<const float> ya, float x) {
    const auto jl = static_cast<std::size_t>(place.below);
    if (place.on_point) return ya[jl - 1];
    if (jl == 0 || jl == xa.size()) return 0.0f;
    return lintpo(xa[jl - 1], xa[jl], ya[jl - 1], ya[jl], x);
}

}  // namespace

std::int32_t common_bins(const PdfSet& first, PdfSet& second, Column& work,
                         textio::Output& terminal) {
    const std::int32_t shorter = std::min(first.nbins, second.nbins);
    if (same_values(first_bins(first.r, shorter), first_bins(second.r, shorter))) return shorter;
    write_line(terminal, {"inconsistent bining: adjusted by linear interpolation"});
    conbin(first, second, work);
    return first.nbins;
}

void conbin(const PdfSet& first, PdfSet& second, Column& work) {
    const auto grid = first_bins(first.r, first.nbins);
    const auto old_grid = first_bins(second.r, second.nbins);
    std::array<Place, maxbin> places;  // of the new bins on the old grid, the same for every column
    std::ranges::transform(grid, places.begin(), [&](float r) { return place_of(old_grid, r); });
    const auto resample = [&](Column& column) {
        for (std::size_t i = 0; i < grid.size(); ++i) {
            work[i] = value_at(places[i], old_grid, column, grid[i]);
        }
        std::copy_n(work.begin(), grid.size(), column.begin());
    };
    for (std::size_t p = 0; p < held_partials(second); ++p) {
        resample(second.g[p]);
        resample(second.cn[p]);
    }
    std::ranges::copy(grid, second.r.begin());
    second.nbins = first.nbins;
    second.used = std::max(second.used, second.nbins);
}

float approx(std::span<const float> xa, std::span<const float> ya, float x) {
    return value_at(place_of(xa, x), xa, ya, x);
}

float lintpo(float x1, float x2, float y1, float y2, float x) {
    const float t = (x2 - x) / (x2 - x1);  // weight of the lower point
    const float u = 1.0f - t;
    return u * y2 + t * y1;
}

}  // namespace dorvek::input
