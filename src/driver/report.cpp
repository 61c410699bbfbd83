// What stands on which line is told once, in the tables of lines below, as it stands there. Writing
// walks along them; so does reading, which takes the values and then asks writing for the same
// bytes.

#include "driver/report.hpp"

#include <algorithm>
#include <charconv>

namespace dorvek::driver {
namespace {

// Where the values are.
template <float analysis::WindowStats::*field>
Value of_sample(Report& report, std::size_t s) {
    return &(report.found.stats[s].*field);
}
template <float input::Window::*limit>
Value of_window(Report& report, std::size_t /*s*/) {
    return &(report.found.window.*limit);
}
template <auto test, auto field>
Value of_test(Report& report, std::size_t /*s*/) {
    return &(report.found.comparison.*test.*field);
}
template <auto texts>
Value text_of(Report& report, std::size_t s) {
    return std::span<char>((report.*texts)[s]);
}
Value partial_of(Report& report, std::size_t s) {
    return &report.ipdf[s];
}

using S = analysis::WindowStats;
using C = stats::ComparisonResult;
using stats::DistributionTest, stats::MeanTest, stats::VarianceTest;

constexpr Line line(const Field& first, const Field& second = {}) {
    return {first, second};
}
constexpr Line blank = line({.label = "  "});
constexpr std::string_view error = "  +/- ";

// The results file begins with these lines, then those of each data file.
constexpr std::array head{line({.label = "analysis of rmc pdfs"}), line({.label = " "})};
constexpr std::array data_file{line({.label = "file: ", .in = text_of<&Report::fnames>}),
                               line({.label = " "})};

constexpr std::array sample_block{
    line({.label = " "}, {.label = separator}),
    blank,
    line({.label = " ", .in = text_of<&Report::snames>}),
    blank,
    line({.label = " pdf #: ", .in = partial_of}),
    blank,
    line({" rmin= ", "rmin", of_window<&input::Window::rmin>},
         {"  rmax= ", "rmax", of_window<&input::Window::rmax>}),
    blank,
    line({" CN=   ", "CN", of_sample<&S::CN>}, {error, "dCN", of_sample<&S::dCN>}),
    line({" Rmea= ", "Rmea", of_sample<&S::Rmea>}, {error, "dRmea", of_sample<&S::dRmea>}),
    line({" Rmod= ", "Rmod", of_sample<&S::Rmod>}),
    blank,
    line({" var=  ", "var", of_sample<&S::var>}, {error, "dvar", of_sample<&S::dvar>}),
    line({" varl= ", "varl", of_sample<&S::varl>}, {"  varr= ", "varr", of_sample<&S::varr>}),
    line({" adif= ", "adif", of_sample<&S::adif>}, {"  arat= ", "arat", of_sample<&S::arat>}),
    blank,
    line({" pmo3= ", "pmo3", of_sample<&S::pmo3>}, {error, "dpmo3", of_sample<&S::dpmo3>}),
    line({" skew= ", "skew", of_sample<&S::skew>}, {error, "dskew", of_sample<&S::dskew>}),
    blank,
    line({" pmo4= ", "pmo4", of_sample<&S::pmo4>}, {error, "dpmo4", of_sample<&S::dpmo4>}),
    line({" kurt= ", "kurt", of_sample<&S::kurt>}, {error, "dkurt", of_sample<&S::dkurt>}),
    line({" cum4= ", "cum4", of_sample<&S::cum4>}, {error, "dcum4", of_sample<&S::dcum4>}),
    blank,
};

constexpr std::array statistics_block{
    blank,
    line({.label = " statistics: "}),
    blank,
    line({" doff= ", "mean_doff", of_test<&C::mean, &MeanTest::doff>}),
    blank,
    line({.label = " different mean value (stud<<,>>0, sgfc=0.0) ?"}),
    line({" stud= ", "mean_stud", of_test<&C::mean, &MeanTest::stud>},
         {"  sgfc= ", "mean_sgfc", of_test<&C::mean, &MeanTest::sgfc>}),
    blank,
    line({.label = " different variance (stud<<,>>1, sgfc=0.0) ? "}),
    line({" stud= ", "variance_stud", of_test<&C::variance, &VarianceTest::stud>},
         {"  sgfc= ", "variance_sgfc", of_test<&C::variance, &VarianceTest::sgfc>}),
    blank,
    line({.label = " different distributions (chsq<<,>>1, sgfc=0.0) ?"}),
    line({" doff= ", "distribution_doff", of_test<&C::distribution, &DistributionTest::doff>}),
    line({" chsq= ", "distribution_chsq", of_test<&C::distribution, &DistributionTest::chsq>},
         {"  sgfc= ", "distribution_sgfc", of_test<&C::distribution, &DistributionTest::sgfc>}),
    blank,
};

// What a comparison ends with.
constexpr std::array<Line, 1> end_in_file{line({.label = separator})};
constexpr std::array end_on_terminal{sample_block[0], blank};

// A field says where to write as well. What calls this only looks.
Value value_of(const Field& field, const Report& report, std::size_t s) {
    return field.in(const_cast<Report&>(report), s);
}

textio::Item item_of(const Value& value) {
    if (const auto* number = std::get_if<float*>(&value)) return **number;
    if (const auto* whole = std::get_if<std::int32_t*>(&value)) return **whole;
    const auto text = *std::get_if<std::span<char>>(&value);
    return std::string_view(text.data(), text.size());
}

void write_lines(textio::Output& output, std::span<const Line> lines, const Report& report,
                 std::size_t s = 0) {
    for (const Line& line : lines) {
        for (const Field& field : line) {
            put(output, field.label);
            if (field.in != nullptr) put_item(output, item_of(value_of(field, report, s)));
        }
        put(output, "\n");
    }
}

void write_report(textio::Output& output, const Report& report, std::span<const Line> end) {
    for (std::size_t s = 0; s < samples(report); ++s) {
        write_lines(output, sample_block, report, s);
    }
    if (report.nsamp < 2) return;
    write_lines(output, statistics_block, report);
    write_lines(output, end, report);
}

// Cuts the first `count` characters off, as far as there are so many.
std::string_view cut(std::string_view& text, std::size_t count) {
    const std::string_view part = text.substr(0, count);
    text.remove_prefix(part.size());
    return part;
}

// Takes a number, and the blanks before it. It is left as it was if there is none; what is amiss
// shows when the number is written again.
template <typename Number>
void take_number(std::string_view& line, Number& number) {
    cut(line, line.find_first_not_of(' '));
    const std::string_view digits = cut(line, line.find(' '));
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
}

void take_value(std::string_view& line, const Value& value) {
    if (const auto* number = std::get_if<float*>(&value)) {
        take_number(line, **number);
    } else if (const auto* whole = std::get_if<std::int32_t*>(&value)) {
        take_number(line, **whole);
    } else {
        const auto field = *std::get_if<std::span<char>>(&value);
        std::ranges::fill(field, ' ');
        std::ranges::copy(cut(line, field.size()), field.begin());
    }
}

// Takes these lines. False if `text` does not begin with them as they are written.
bool take_lines(std::string_view& text, std::span<const Line> lines, Report& report,
                std::size_t s = 0) {
    std::string_view rest = text;
    for (const Line& fields : lines) {
        std::string_view line = cut(rest, rest.find('\n'));
        cut(rest, 1);
        for (const Field& field : fields) {
            cut(line, field.label.size());
            if (field.in != nullptr) take_value(line, field.in(report, s));
        }
    }
    textio::Output written{.fd = -1};  // holds them all, and is not flushed
    write_lines(written, lines, report, s);
    if (!text.starts_with(std::string_view(written.buffer.data(), written.used))) return false;
    text = rest;
    return true;
}

}  // namespace

float number_of(const Field& field, const Report& report, std::size_t s) {
    const Value value = value_of(field, report, s);
    return **std::get_if<float*>(&value);
}

std::span<const Line> sample_lines() {
    return sample_block;
}

std::span<const Line> statistics_lines() {
    return statistics_block;
}

void write_head(textio::Output& output) {
    write_lines(output, head, {});
}

void write_file_name(textio::Output& output, const Report& report, std::size_t s) {
    write_lines(output, data_file, report, s);
}

void write_results(textio::Output& output, const Report& report) {
    write_report(output, report, end_in_file);
}

void write_terminal(textio::Output& output, const Report& report) {
    write_report(output, report, end_on_terminal);
}

bool take_head(std::string_view& text) {
    Report none;
    return take_lines(text, head, none);
}

bool take_file_name(std::string_view& text, Report& report, std::size_t s) {
    return take_lines(text, data_file, report, s);
}

bool take_report(std::string_view& text, Report& report) {
    std::string_view rest = text;
    for (std::size_t s = 0; s < samples(report); ++s) {
        if (!take_lines(rest, sample_block, report, s)) return false;
    }
    if (report.nsamp == 2 &&
        !(take_lines(rest, statistics_block, report) && take_lines(rest, end_in_file, report))) {
        return false;
    }
    text = rest;
    return true;
}

}  // namespace dorvek::driver
