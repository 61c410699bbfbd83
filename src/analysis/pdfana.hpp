// Statistics of one window.
#pragma once

#include <cstdint>
#include <span>

#include "analysis/window_stats.hpp"
#include "input/pdf_set.hpp"

namespace dorvek::analysis {

// Higher moments of a narrower peak are noise, and given as 0.
inline constexpr float variance_threshold = 1.0e-6f;

// Whether the window of every sample held any atoms.
enum class Norm {
    found,
    zero,  // one sample's values sum to 1.0e-35 or less
};

// Fills one WindowStats per sample from bins ilo .. ihi (1-based, both included) of the sample's
// partial `ipdf`. A partial that the set does not hold counts as zeros, and a window that ends
// before it begins, as on a grid that descends, has no bins to sum. After Norm::zero the statistics
// mean nothing. The bin width is that of the grid's first interval. All sums run in order of the
// bins, in single precision. dskew and dkurt are those of a normal distribution, sqrt(6 / m) and
// sqrt(24 / m) with m = ihi - ilo; dcum4 adds the errors of var and pmo4 linearly, 6 var dvar +
// dpmo4.
[[nodiscard]] Norm pdfana(std::span<const input::PdfSet> sets, std::span<const std::int32_t> ipdf,
                          std::int32_t ilo, std::int32_t ihi, std::span<WindowStats> stats);

}  // namespace dorvek::analysis
