// The analysis of one window: all that the dialogue and the companions compute.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "analysis/window_stats.hpp"
#include "input/pdf_set.hpp"
#include "input/window.hpp"
#include "stats/compare.hpp"

namespace dorvek::driver {

// What a window was found to hold.
enum class Found {
    peak,
    no_data,    // the window is empty
    zero_norm,  // one sample has no atoms in it
};

// What a user is told of it; for a peak, nothing.
[[nodiscard]] std::string_view message_of(Found found);

// One window, and what was found there: statistics of each sample, the comparison of two, and what
// is to be said before they are shown.
struct Analysis {
    input::Window window;
    std::array<analysis::WindowStats, input::maxsamp> stats;
    stats::ComparisonResult comparison;
    stats::Messages messages;
};

// Brings the second of two samples onto the grid of the first if theirs differ. Returns what a user
// is told of it; if nothing was to be done, nothing.
[[nodiscard]] std::string_view reconcile(const input::PdfSet& first, input::PdfSet& second);

// Analyses the window that analysis.window limits by rmin and rmax, as typed; they become the grid
// values of its end bins, whatever is found. One entry of `sets` and of `ipdf`, the chosen partials
// counted from 1, for each sample; the grids of two sets agree (see reconcile). `constraints` is
// the total over the samples. Without Found::peak, statistics and comparison mean nothing.
[[nodiscard]] Found analyse_window(std::span<const input::PdfSet> sets,
                                   std::span<const std::int32_t> ipdf, std::int64_t constraints,
                                   Analysis& analysis);

}  // namespace dorvek::driver
