// Bringing a second sample onto the first sample's grid.
#pragma once

#include <cstdint>
#include <span>

#include "input/pdf_set.hpp"

namespace dorvek::input {

// Do the grids agree, bin by bin and exactly, as far as both reach? Where they do not, conbin makes
// them.
[[nodiscard]] bool same_grid(const PdfSet& first, const PdfSet& second);

// The bins that all sets share, given grids that agree: the smallest bin count, 0 of no set.
[[nodiscard]] std::int32_t common_bins(std::span<const PdfSet> sets);

// Resamples every partial of `second`, values and running coordination numbers, onto the grid of
// `first` by linear interpolation; `second` then has the grid and the bin count of `first`.
void conbin(const PdfSet& first, PdfSet& second);

// The value at x of the table ya over the ascending grid xa, of equal lengths: the tabulated value
// at a grid point, interpolated between two, 0 outside the grid.
[[nodiscard]] float approx(std::span<const float> xa, std::span<const float> ya, float x);

// The value at x of the straight line through (x1, y1) and (x2, y2).
[[nodiscard]] float lintpo(float x1, float x2, float y1, float y2, float x);

}  // namespace dorvek::input
