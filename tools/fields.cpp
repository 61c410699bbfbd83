// Nearly every line is numbers that std::from_chars reads where they stand: taken at once, without
// a copy of any. What it does not read is split into fields first, and looked at with care.

#include "fields.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <span>
#include <system_error>

#include "csv.hpp"
#include "failure.hpp"
#include "text.hpp"

namespace dorvek::tools {

using textio::Status;

namespace {

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}
bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// Takes digits behind those already in `number`. Returns their end.
const char* take_digits(const char* at, const char* end, std::uint64_t& number) {
    for (; at != end && is_digit(*at); ++at) {
        number = 10 * number + static_cast<std::uint64_t>(*at - '0');
    }
    return at;
}

// Takes an exponent of at most three digits, behind its letter. Returns its end, or nullptr.
const char* take_exponent(const char* at, const char* end, int& exponent) {
    const bool negative = at != end && *at == '-';
    if (at != end && (*at == '-' || *at == '+')) ++at;
    std::uint64_t digits = 0;
    const char* const stop = take_digits(at, end, digits);
    if (stop == at || stop - at > 3) return nullptr;
    exponent = negative ? -static_cast<int>(digits) : static_cast<int>(digits);
    return stop;
}

// Takes a decimal of at most 15 digits, with or without an exponent. These and a power of ten up to
// 1E22 are exact as doubles, so their quotient or product is the nearest one (Clinger 1990), and in
// the range of a float. Returns its end, or nullptr if it is no such.
const char* take_decimal(const char* at, const char* end, double& value) {
    static constexpr std::array<double, 23> power{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const bool negative = at != end && *at == '-';
    if (negative) ++at;
    std::uint64_t digits = 0;
    const char* const point = take_digits(at, end, digits);
    auto count = static_cast<std::size_t>(point - at);
    std::size_t decimals = 0;
    at = point;
    if (at != end && *at == '.') {
        at = take_digits(point + 1, end, digits);
        decimals = static_cast<std::size_t>(at - point - 1);
        count += decimals;
    }
    if (count < 1 || count > 15) return nullptr;
    const auto all = static_cast<double>(static_cast<std::int64_t>(digits));
    if (at == end || is_blank(*at) || *at == ',') {
        value = all / power[decimals];
    } else {
        int exponent = 0;
        if ((*at | 0x20) != 'e') return nullptr;
        at = take_exponent(at + 1, end, exponent);
        exponent -= static_cast<int>(decimals);
        const auto size = static_cast<std::size_t>(std::abs(exponent));
        if (at == nullptr || size >= power.size()) return nullptr;
        value = exponent < 0 ? all / power[size] : all * power[size];
    }
    if (negative) value = -value;
    return at;
}

// Takes a number as nearly all are spelled, in the range of a float. Returns its end, or nullptr if
// none begins here.
const char* take_number(const char* at, const char* end, double& value) {
    if (const char* const stop = take_decimal(at, end, value); stop != nullptr) return stop;
    const auto [stop, error] = std::from_chars(at, end, value);
    const bool fits_float = std::abs(value) <= std::numeric_limits<float>::max();
    return error == std::errc{} && fits_float ? stop : nullptr;
}

}  // namespace

std::optional<double> number_of(std::string_view text) {
    double value = 0;
    if (take_number(text.data(), text.data() + text.size(), value) == text.data() + text.size()) {
        return value;
    }
    const std::optional<float> rounded = real_of(text);
    if (!rounded || !std::isfinite(*rounded)) return {};
    std::string respelled(text);  // for std::from_chars: no plus sign, the exponent behind an e
    const auto other_letter = [](char c) { return (c | 0x20) == 'd' || (c | 0x20) == 'q'; };
    std::ranges::replace_if(respelled, other_letter, 'e');
    const std::size_t sign = respelled.find_last_of("+-");
    if (sign != std::string::npos && sign > 0 && (respelled[sign - 1] | 0x20) != 'e') {
        respelled.insert(sign, 1, 'e');
    }
    value = 0;  // and stays where it is too small for a double
    std::from_chars(respelled.data() + (respelled[0] == '+' ? 1 : 0),
                    respelled.data() + respelled.size(), value);
    return value;
}

namespace {

bool contains(std::string_view text, char c) {
    return text.find(c) != std::string_view::npos;
}

// Takes a line of numbers as nearly all are. False if it is another, or not certainly one.
bool take_plain(std::string_view line, Fields& row) {
    const char* const begin = line.data();
    const char* const end = begin + line.size();
    const auto behind_blanks = [end](const char* from) {
        while (from != end && is_blank(*from)) ++from;
        return from;
    };
    bool blanks_separate = false;
    bool single_blanks = true;
    bool commas = false;
    bool comma_between_digits = false;
    row.text = line;
    row.numbers.clear();
    for (const char* at = behind_blanks(begin); at != end;) {
        Number& number = row.numbers.emplace_back();  // in place: a copy takes as long as reading
        const char* const stop = take_number(at, end, number.value);
        if (stop == nullptr) return false;
        number.begin = static_cast<std::uint32_t>(at - begin);
        number.length = static_cast<std::uint32_t>(stop - at);
        at = behind_blanks(stop);
        if (at == end) break;
        if (*at == ',') {
            comma_between_digits =
                comma_between_digits || (at == stop && at + 1 != end && is_digit(at[1]));
            commas = true;
            at = behind_blanks(at + 1);
        } else if (at == stop) {
            return false;
        } else {
            blanks_separate = true;
            single_blanks = single_blanks && at == stop + 1 && *stop == ' ';
        }
    }
    row.separator = commas ? ',' : ' ';
    row.single_blanks = single_blanks && !commas;
    row.decimal_commas = false;
    return !row.numbers.empty() && !(comma_between_digits && blanks_separate);
}

// Takes any line as fields that are not yet known to be numbers. A quoted field is one if nothing
// but a separator follows.
void split(std::string_view line, Fields& row) {
    constexpr std::string_view blanks = " \t";
    const bool semicolons = contains(line, ';');
    const char separator = semicolons ? ';' : ',';
    row.respelled = line;
    std::string& text = row.respelled;
    const auto behind_blanks = [&](std::size_t from) {
        return std::min(text.find_first_not_of(blanks, from), text.size());
    };
    const auto ends_field = [&](std::size_t i) {
        return i >= text.size() || text[i] == separator || is_blank(text[i]);
    };
    bool blanks_separate = false;
    bool comma_between_digits = false;
    row.separator = semicolons ? ';' : ' ';
    row.single_blanks = false;
    row.numbers.clear();
    for (std::size_t at = behind_blanks(0); at < text.size();) {
        std::size_t begin = at;
        std::size_t end = std::min(text.find_first_of(semicolons ? ";" : " \t,", at), text.size());
        std::size_t next = end;
        const std::size_t quote = text[at] == '"' ? text.find('"', at + 1) : std::string::npos;
        const bool quoted = quote != std::string::npos && ends_field(quote + 1);
        if (quoted) {
            begin = at + 1;
            end = quote;
            next = quote + 1;
        }
        while (end > begin && is_blank(text[end - 1])) --end;
        const auto field = std::span(text).subspan(begin, end - begin);
        if (quoted || semicolons) std::ranges::replace(field, ',', '.');
        row.numbers.push_back({.begin = static_cast<std::uint32_t>(begin),
                               .length = static_cast<std::uint32_t>(field.size())});
        at = behind_blanks(next);
        if (at == text.size()) break;
        blanks_separate = blanks_separate || text[at] != separator;
        if (text[at] != separator) continue;
        comma_between_digits =
            comma_between_digits || (at == end && !field.empty() && is_digit(field.back()) &&
                                     at + 1 < text.size() && is_digit(text[at + 1]));
        row.separator = separator;
        at = behind_blanks(at + 1);
    }
    while (row.numbers.size() > 1 && row.numbers.back().length == 0) row.numbers.pop_back();
    row.text = text;
    row.decimal_commas = comma_between_digits && blanks_separate && !semicolons;
}

}  // namespace

Failure bad_line(const ForeignFile& file, std::int64_t line, const std::string& what) {
    return Failure{file.name + ", line " + std::to_string(line) + ": " + what};
}

Failure bad_line(const ForeignFile& file, const std::string& what) {
    return bad_line(file, file.input.line_number, what);
}

std::string shown(std::int64_t number, std::string_view line) {
    return "line " + std::to_string(number) + ": " + shortened(printable(line.substr(0, 200)), 60);
}

void require_text(const ForeignFile& file, std::string_view line) {
    const bool marked = file.input.line_number == 1 &&
                        (line.starts_with("\xFF\xFE") || line.starts_with("\xFE\xFF"));
    if (marked || contains(line, '\0'))
        throw bad_line(file, "UTF-16, or no text; dorvek-convert reads UTF-8");
}

bool take_line(ForeignFile& file, std::string_view& line) {
    textio::Input& input = file.input;
    Status status = textio::take_line(input, line);
    const bool is_last = status == Status::end_of_input;
    if (is_last) status = take_last_line(input, line);
    if (status == Status::end_of_input) return false;
    if (status != Status::ok) {
        const std::string reason =
            input.error == 0 ? "" : std::string(": ") + std::strerror(input.error);
        const std::string what = std::string(message_of(status)) + reason;
        throw status == Status::line_too_long ? bad_line(file, input.line_number + 1, what)
                                              : Failure(file.name + ": " + what);
    }
    file.unterminated = is_last;
    if (!is_last) line.remove_suffix(line.ends_with("\r\n") ? 2 : 1);
    if (input.line_number == 1) {
        require_text(file, line.substr(0, 2));
        if (line.starts_with("\xEF\xBB\xBF")) line.remove_prefix(3);
    }
    return true;
}

void take_fields(std::string_view line, Fields& row) {
    row.are_numbers = take_plain(line, row);
    if (!row.are_numbers) split(line, row);
}

std::size_t first_bad(Fields& row, std::size_t from) {
    for (std::size_t i = from; !row.are_numbers && i < row.numbers.size(); ++i) {
        const std::optional<double> value = number_of(field_at(row, i));
        if (!value) return i;
        row.numbers[i].value = *value;
    }
    return row.numbers.size();
}

void require_numbers(const ForeignFile& file, Fields& row) {
    if (row.decimal_commas) {
        throw bad_line(file,
                       "decimal commas? A comma stands between digits, and blanks separate as "
                       "well; make them points, or let semicolons separate");
    }
    const std::size_t bad = first_bad(row);
    if (bad == row.numbers.size()) return;
    require_text(file, row.text);
    throw bad_line(file, "column " + std::to_string(bad + 1) + " is no number");
}

void require_width(const ForeignFile& file, const Fields& row, std::size_t width) {
    if (row.numbers.size() == width) return;
    throw bad_line(file, "the number of columns is " + std::to_string(row.numbers.size()) +
                             ", not " + std::to_string(width));
}

}  // namespace dorvek::tools
