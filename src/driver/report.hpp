// The report of one window, on the terminal or in the results file.
#pragma once

#include <cstdint>
#include <string_view>

#include "analysis/window_stats.hpp"
#include "input/window.hpp"
#include "stats/compare.hpp"
#include "textio/output.hpp"

namespace dorvek::driver {

// The statistics of one sample's peak, 23 lines. `sname` is the whole name field.
void write_sample_block(textio::Output& output, std::string_view sname, std::int32_t ipdf,
                        const input::Window& window, const analysis::WindowStats& stats);

// The two samples' comparison, 15 lines without the separator that ends it.
void write_statistics_block(textio::Output& output, const stats::ComparisonResult& result);

// Separates the blocks of a report.
inline constexpr std::string_view separator = "------------------------------------------------";

}  // namespace dorvek::driver
