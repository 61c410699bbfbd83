// A report as rows of a table: one for each sample, with the report's digits.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "csv.hpp"
#include "driver/report.hpp"

namespace dorvek::tools {

// The headings sample, file, name and pdf, then those of the numbers.
[[nodiscard]] Row result_headings();

// The headings of a table of windows, as dorvek-batch reads it.
[[nodiscard]] Row window_headings();

// The headings of what dorvek-batch writes behind the columns that it passes through. A column with
// one of these headings, or of those of a table of windows, is not passed through.
[[nodiscard]] Row batch_headings();

// Adds the cells under these headings to `row`: those of sample `s`, counted from 0, of the report
// and its data file. The tests of a comparison stand in the rows of both samples; a single sample's
// are empty.
void append_result(Row& row, const driver::Report& report, std::size_t s, std::string_view file);

// A number with the report's digits; NaN is NaN whatever its sign.
[[nodiscard]] std::string text_of(float value);

}  // namespace dorvek::tools
