// Bringing a second sample onto the first sample's grid.
#pragma once

#include <cstdint>
#include <span>

#include "input/pdf_set.hpp"
#include "textio/output.hpp"

namespace dorvek::input {

// The bins that both samples share: the smaller bin count when their grids agree, bin by bin and
// exactly, as far as both reach. When they differ, a line on the terminal says so, `second` is
// resampled and the count is the first sample's.
[[nodiscard]] std::int32_t common_bins(const PdfSet& first, PdfSet& second, Column& work,
                                       textio::Output& terminal);

// Resamples every partial of `second`, values and running coordination numbers, onto the grid of
// `first` by linear interpolation; `second` then has the grid and the bin count of `first`.
// `work` holds one column while it is built.
void conbin(const PdfSet& first, PdfSet& second, Column& work);

// The value at x of the table ya over the ascending grid xa, of equal lengths: the tabulated value
// at a grid point, interpolated between two, 0 outside the grid.
[[nodiscard]] float approx(std::span<const float> xa, std::span<const float> ya, float x);

// The value at x of the straight line through (x1, y1) and (x2, y2).
[[nodiscard]] float lintpo(float x1, float x2, float y1, float y2, float x);

}  // namespace dorvek::input
