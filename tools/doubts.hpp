// What a reader of the numbers has to know beside them.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "driver/analyse_window.hpp"
#include "input/pdf_set.hpp"

namespace dorvek::tools {

// Adds what is to be said of a grid: that it does not ascend, or not in even steps.
void add_grid_doubts(std::span<const float> r, std::vector<std::string>& said);

// Begins what is said of a peak whose skewness and the like are 0 for want of a variance.
inline constexpr std::string_view too_narrow = "variance not above 1E-6";

// Adds what is to be said of a window that was found to hold a peak: each pause that the dialogue
// would make, and what it would not say. The arguments are those of analyse_window.
void add_doubts(std::span<const input::PdfSet> sets, std::span<const std::int32_t> ipdf,
                const driver::Analysis& analysis, std::vector<std::string>& said);

}  // namespace dorvek::tools
