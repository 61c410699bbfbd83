// A column is resampled by looking each new bin up on the old grid. Where it lies there is found
// once and serves all columns; the table lookup of a single value takes the same two steps.

#include "input/conbin.hpp"

#include <algorithm>
#include <array>

#include "textio/real.hpp"

namespace dorvek::input {
namespace {

// Where x lies on an ascending grid of n points.
struct Position {
    std::int32_t below;  // points at or below x, 0 .. n
    bool on_point;       // x is the last of them
};

Position position_of(std::span<const float> xa, float x) {
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

float value_at(Position position, std::span<const float> xa, std::span<const float> ya, float x) {
    const auto jl = static_cast<std::size_t>(position.below);
    if (position.on_point) return ya[jl - 1];
    if (jl == 0 || jl == xa.size()) return 0.0f;
    return lintpo(xa[jl - 1], xa[jl], ya[jl - 1], ya[jl], x);
}

}  // namespace

bool same_grid(const PdfSet& first, const PdfSet& second) {
    const auto shorter = static_cast<std::size_t>(std::min(first.nbins, second.nbins));
    // Looks at every bin without stopping at a difference: that is what the compiler makes vectors
    // of.
    std::uint32_t differences = 0;
    for (std::size_t i = 0; i < shorter; ++i) differences += first.r[i] != second.r[i] ? 1U : 0U;
    return differences == 0;
}

std::int32_t common_bins(std::span<const PdfSet> sets) {
    std::int32_t bins = sets.empty() ? 0 : sets[0].nbins;
    for (const PdfSet& set : sets) bins = std::min(bins, set.nbins);
    return bins;
}

void conbin(const PdfSet& first, PdfSet& second) {
    const auto grid = first_bins(first.r, first.nbins);
    const auto old_grid = first_bins(second.r, second.nbins);
    std::array<Position, maxbin> positions;  // of the new bins on the old grid
    std::ranges::transform(grid, positions.begin(),
                           [&](float r) { return position_of(old_grid, r); });
    const auto resample = [&](Column& column) {
        Column resampled;  // the old column is the table until the new one is whole
        for (std::size_t i = 0; i < grid.size(); ++i) {
            resampled[i] = value_at(positions[i], old_grid, column, grid[i]);
        }
        std::copy_n(resampled.begin(), grid.size(), column.begin());
    };
    for (std::size_t p = 0; p < held_partials(second); ++p) {
        resample(second.g[p]);
        resample(second.cn[p]);
    }
    std::ranges::copy(grid, second.r.begin());
    second.nbins = first.nbins;
}

float approx(std::span<const float> xa, std::span<const float> ya, float x) {
    return value_at(position_of(xa, x), xa, ya, x);
}

float lintpo(float x1, float x2, float y1, float y2, float x) {
    const float t = (x2 - x) / (x2 - x1);  // weight of the lower point
    const float u = 1.0f - t;
    return u * y2 + t * y1;
}

}  // namespace dorvek::input
