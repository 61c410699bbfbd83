// The results file and the report of one window, there and on the terminal: their layout, written
// and read.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <variant>

#include "driver/analyse_window.hpp"
#include "input/inpdf.hpp"
#include "textio/output.hpp"

namespace dorvek::driver {

using SampleName = std::array<char, 80>;

// What a report shows, and the names of its data files.
struct Report {
    std::int32_t nsamp = 0;                                // samples, none if it is negative
    std::array<input::FileName, input::maxsamp> fnames{};  // as typed, padded with blanks
    std::array<SampleName, input::maxsamp> snames{};       // likewise
    std::array<std::int32_t, input::maxsamp> ipdf{};       // chosen partials, counted from 1
    Analysis found{};
};

// The samples of a report, 0 to maxsamp.
[[nodiscard]] inline std::size_t samples(const Report& report) {
    return static_cast<std::size_t>(std::max(report.nsamp, 0));
}

// Behind a blank, begins the block of a sample; alone, ends a comparison in the results file.
inline constexpr std::string_view separator = "------------------------------------------------";

// Where a value is: a number, or a text padded with blanks.
using Value = std::variant<float*, std::int32_t*, std::span<char>>;

// What stands on a line: a text and, if `in` says where it is, a value of the report or of its
// sample `s`, counted from 0. A number of the statistics has a heading in tables.
struct Field {
    std::string_view label;
    std::string_view heading = {};
    Value (*in)(Report& report, std::size_t s) = nullptr;
};
using Line = std::array<Field, 2>;

// The lines of a sample block, and those of the statistics block, without what ends it.
[[nodiscard]] std::span<const Line> sample_lines();
[[nodiscard]] std::span<const Line> statistics_lines();

// Calls use(field) for each field of the lines that has a heading, in order.
template <typename Use>
void for_each_number(std::span<const Line> lines, Use use) {
    for (const Line& line : lines) {
        for (const Field& field : line) {
            if (!field.heading.empty()) use(field);
        }
    }
}

// The number in such a field.
[[nodiscard]] float number_of(const Field& field, const Report& report, std::size_t s);

// What the results file begins with, then what it says of the data file of each sample.
void write_head(textio::Output& output);
void write_file_name(textio::Output& output, const Report& report, std::size_t s);

// The report: statistics of each sample, 23 lines, and of two the comparison, 16 lines. The
// terminal's copy ends a comparison with one line more, and in another form.
void write_results(textio::Output& output, const Report& report);
void write_terminal(textio::Output& output, const Report& report);

// Each takes away from `text` what it begins with, if that is what the routine above writes, to the
// byte, for report.nsamp samples. If not, they return false and leave `text` as it is, and what
// `report` then holds of it is of no worth.
[[nodiscard]] bool take_head(std::string_view& text);
[[nodiscard]] bool take_file_name(std::string_view& text, Report& report, std::size_t s);
[[nodiscard]] bool take_report(std::string_view& text, Report& report);

}  // namespace dorvek::driver
