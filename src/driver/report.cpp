// What stands on which line is told once, in the two tables of lines below. Writing walks along
// them; so does reading, which takes the numbers and then asks writing for the same bytes.

#include "driver/report.hpp"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <system_error>

namespace dorvek::driver {
namespace {

using textio::write_line;

// Where the numbers are.
template <float analysis::WindowStats::*field>
const float& of_sample(const Report& report, std::size_t s) {
    return report.found.stats[s].*field;
}
template <float input::Window::*limit>
const float& of_window(const Report& report, std::size_t /*s*/) {
    return report.found.window.*limit;
}
template <auto test, auto field>
const float& of_test(const Report& report, std::size_t /*s*/) {
    return report.found.comparison.*test.*field;
}

using S = analysis::WindowStats;
using C = stats::ComparisonResult;
using stats::DistributionTest, stats::MeanTest, stats::VarianceTest;

constexpr std::string_view partial_label = "pdf #: ";
constexpr std::string_view error = " +/- ";
constexpr Line blank{.text = " "};
constexpr Line numbers(const Number& first, const Number& second = {}) {
    return {.text = {}, .numbers = {first, second}};
}

constexpr std::array below_partial{
    blank,
    numbers({"rmin= ", "rmin", of_window<&input::Window::rmin>},
            {" rmax= ", "rmax", of_window<&input::Window::rmax>}),
    blank,
    numbers({"CN=   ", "CN", of_sample<&S::CN>}, {error, "dCN", of_sample<&S::dCN>}),
    numbers({"Rmea= ", "Rmea", of_sample<&S::Rmea>}, {error, "dRmea", of_sample<&S::dRmea>}),
    numbers({"Rmod= ", "Rmod", of_sample<&S::Rmod>}),
    blank,
    numbers({"var=  ", "var", of_sample<&S::var>}, {error, "dvar", of_sample<&S::dvar>}),
    numbers({"varl= ", "varl", of_sample<&S::varl>}, {" varr= ", "varr", of_sample<&S::varr>}),
    numbers({"adif= ", "adif", of_sample<&S::adif>}, {" arat= ", "arat", of_sample<&S::arat>}),
    blank,
    numbers({"pmo3= ", "pmo3", of_sample<&S::pmo3>}, {error, "dpmo3", of_sample<&S::dpmo3>}),
    numbers({"skew= ", "skew", of_sample<&S::skew>}, {error, "dskew", of_sample<&S::dskew>}),
    blank,
    numbers({"pmo4= ", "pmo4", of_sample<&S::pmo4>}, {error, "dpmo4", of_sample<&S::dpmo4>}),
    numbers({"kurt= ", "kurt", of_sample<&S::kurt>}, {error, "dkurt", of_sample<&S::dkurt>}),
    numbers({"cum4= ", "cum4", of_sample<&S::cum4>}, {error, "dcum4", of_sample<&S::dcum4>}),
    blank,
};

constexpr std::array comparison{
    blank,
    Line{.text = "statistics: "},
    blank,
    numbers({"doff= ", "mean_doff", of_test<&C::mean, &MeanTest::doff>}),
    blank,
    Line{.text = "different mean value (stud<<,>>0, sgfc=0.0) ?"},
    numbers({"stud= ", "mean_stud", of_test<&C::mean, &MeanTest::stud>},
            {" sgfc= ", "mean_sgfc", of_test<&C::mean, &MeanTest::sgfc>}),
    blank,
    Line{.text = "different variance (stud<<,>>1, sgfc=0.0) ? "},
    numbers({"stud= ", "variance_stud", of_test<&C::variance, &VarianceTest::stud>},
            {" sgfc= ", "variance_sgfc", of_test<&C::variance, &VarianceTest::sgfc>}),
    blank,
    Line{.text = "different distributions (chsq<<,>>1, sgfc=0.0) ?"},
    numbers({"doff= ", "distribution_doff", of_test<&C::distribution, &DistributionTest::doff>}),
    numbers({"chsq= ", "distribution_chsq", of_test<&C::distribution, &DistributionTest::chsq>},
            {" sgfc= ", "distribution_sgfc", of_test<&C::distribution, &DistributionTest::sgfc>}),
    blank,
};

void write_lines(textio::Output& output, std::span<const Line> lines, const Report& report,
                 std::size_t s) {
    for (const auto& [text, numbers] : lines) {
        const auto& [first, second] = numbers;
        if (first.in == nullptr) {
            write_line(output, {text});
        } else if (second.in == nullptr) {
            write_line(output, {first.label, first.in(report, s)});
        } else {
            write_line(output,
                       {first.label, first.in(report, s), second.label, second.in(report, s)});
        }
    }
}

// Cuts off what stands before the first `mark`, and the mark. All of the text if there is none.
std::string_view take_until(std::string_view& text, char mark) {
    const std::string_view part = text.substr(0, text.find(mark));
    text.remove_prefix(std::min(part.size() + 1, text.size()));
    return part;
}

// Takes a number with what stands before it. It is left as it was if there is none; what is amiss
// shows when the number is written again.
template <typename Value>
void take_number(std::string_view& line, std::string_view label, Value& number) {
    line.remove_prefix(std::min(label.size(), line.size()));
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    const std::string_view digits = take_until(line, ' ');
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
}

// A line without the blank that begins it.
std::string_view take_line(std::string_view& text) {
    const std::string_view line = take_until(text, '\n');
    return line.substr(std::min<std::size_t>(1, line.size()));
}

void take_lines(std::string_view& text, std::span<const Line> lines, Report& report,
                std::size_t s) {
    for (const Line& layout : lines) {
        std::string_view line = take_line(text);
        for (const Number& number : layout.numbers) {
            if (number.in == nullptr) continue;
            // The report is not const: only the table's way to its numbers is.
            take_number(line, number.label, const_cast<float&>(number.in(report, s)));
        }
    }
}

void take_sample_block(std::string_view& text, Report& report, std::size_t s) {
    take_until(text, '\n');
    take_until(text, '\n');
    const std::string_view name = take_line(text);
    std::ranges::copy(name.substr(0, report.snames[s].size()), report.snames[s].begin());
    take_until(text, '\n');
    std::string_view partial = take_line(text);
    take_number(partial, partial_label, report.ipdf[s]);
    take_lines(text, below_partial, report, s);
}

void write_blocks(textio::Output& output, const Report& report) {
    for (std::size_t s = 0; s < samples(report); ++s) write_sample_block(output, report, s);
    if (report.nsamp == 2) write_statistics_block(output, report);
}

}  // namespace

std::span<const Line> sample_lines() {
    return below_partial;
}

std::span<const Line> statistics_lines() {
    return comparison;
}

void write_sample_block(textio::Output& output, const Report& report, std::size_t s) {
    const SampleName& sname = report.snames[s];
    write_line(output, {separator});
    write_line(output, {" "});
    write_line(output, {std::string_view(sname.data(), sname.size())});
    write_line(output, {" "});
    write_line(output, {partial_label, report.ipdf[s]});
    write_lines(output, below_partial, report, s);
}

void write_statistics_block(textio::Output& output, const Report& report) {
    write_lines(output, comparison, report, 0);
}

void write_terminal(textio::Output& output, const Report& report) {
    write_blocks(output, report);
    if (report.nsamp < 2) return;
    write_line(output, {separator});
    write_line(output, {" "});
}

void write_results(textio::Output& output, const Report& report) {
    write_blocks(output, report);
    if (report.nsamp == 2) write_text(output, separator);
}

bool take_report(std::string_view& text, Report& report) {
    std::string_view rest = text;
    for (std::size_t s = 0; s < samples(report); ++s) take_sample_block(rest, report, s);
    if (report.nsamp == 2) {
        take_lines(rest, comparison, report, 0);
        take_until(rest, '\n');
    }
    textio::Output written{.fd = -1};  // holds a report, and is not flushed
    write_results(written, report);
    if (text.substr(0, text.size() - rest.size()) !=
        std::string_view(written.buffer.data(), written.used)) {
        return false;
    }
    text = rest;
    return true;
}

}  // namespace dorvek::driver
