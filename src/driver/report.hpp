// The report of one window, on the terminal and in the results file: its layout, written and read.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "driver/analyse_window.hpp"
#include "textio/output.hpp"

namespace dorvek::driver {

using SampleName = std::array<char, 80>;

// What a report shows.
struct Report {
    std::int32_t nsamp = 0;                           // samples, none if it is negative
    std::array<SampleName, input::maxsamp> snames{};  // as typed, padded with blanks
    std::array<std::int32_t, input::maxsamp> ipdf{};  // chosen partials, counted from 1
    Analysis found{};
};

// The samples of a report, 0 to maxsamp.
[[nodiscard]] inline std::size_t samples(const Report& report) {
    return static_cast<std::size_t>(std::max(report.nsamp, 0));
}

// A number of a report: the text before it, its heading in tables, and where it is, in the report
// or in that of sample `s`, counted from 0.
struct Number {
    std::string_view label;
    std::string_view heading;
    const float& (*in)(const Report& report, std::size_t s) = nullptr;
};

// A line of a report: a text, or one number or two.
struct Line {
    std::string_view text;
    std::array<Number, 2> numbers{};
};

// The lines of a sample block below the partial, and those of the statistics block.
[[nodiscard]] std::span<const Line> sample_lines();
[[nodiscard]] std::span<const Line> statistics_lines();

// Calls use(number) for each number of the lines, in order.
template <typename Use>
void for_each_number(std::span<const Line> lines, Use use) {
    for (const Line& line : lines) {
        for (const Number& number : line.numbers) {
            if (number.in != nullptr) use(number);
        }
    }
}

// The statistics of the peak of sample `s`, 23 lines.
void write_sample_block(textio::Output& output, const Report& report, std::size_t s);

// The two samples' comparison, 15 lines without the separator that ends it.
void write_statistics_block(textio::Output& output, const Report& report);

// The whole report. The terminal's copy ends a comparison with one line more, and in another form.
void write_terminal(textio::Output& output, const Report& report);
void write_results(textio::Output& output, const Report& report);

// Separates the blocks of a report.
inline constexpr std::string_view separator = "------------------------------------------------";

// Reads the report that `text` begins with, as write_results writes it for report.nsamp samples,
// and takes it away from `text`. False if what stands there is not such a report, to the byte; then
// `text` is left as it is, and `report` holds nothing of worth.
[[nodiscard]] bool take_report(std::string_view& text, Report& report);

}  // namespace dorvek::driver
