// Statistics of one window.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "analysis/window_stats.hpp"
#include "input/pdf_set.hpp"
#include "textio/output.hpp"

namespace dorvek::analysis {

// Whether the window of every sample held any atoms.
enum class Norm : int {
    found = 0,
    zero = 1,  // one sample's values sum to 1.0e-35 or less; the terminal has been told
};

// Fills one WindowStats per sample from bins ilo .. ihi (1-based, both included, ilo < ihi) of the
// sample's partial `ipdf`; a partial outside 1 .. maxpdf counts as zeros. dskew, dkurt and dcum4
// are left to complete_errors. After Norm::zero the statistics mean nothing.
// The bin width is that of the grid's first interval. All sums run in order of the bins, in single
// precision. `work` holds one value per bin of the window at a time.
[[nodiscard]] Norm pdfana(std::span<const input::PdfSet> sets, std::span<const std::int32_t> ipdf,
                          std::int32_t ilo, std::int32_t ihi, std::span<WindowStats> stats,
                          input::Column& work, textio::Output& terminal);

}  // namespace dorvek::analysis
