// What a float must be written as, and what must be read as it. real_sweep_test.cpp tries the hard
// places, every_float.cpp all floats.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "textio/format.hpp"
#include "textio/free_form.hpp"

namespace dorvek::checks {

inline constexpr std::uint32_t infinity = 0x7F800000U;
inline constexpr std::uint32_t minus = 0x80000000U;

// The number 0.d1d2d3... * 10^point.
struct Decimal {
    std::string digits;
    int point = 0;
};

// The shortest decimal that is nearest to no other number of its type; or, given how many digits
// follow the first one, the nearest decimal of so many.
template <typename Real, typename... Digits>
Decimal decimal(Real magnitude, Digits... behind_first) {
    char text[128];
    const auto [end, error] = std::to_chars(text, std::end(text), magnitude,
                                            std::chars_format::scientific, behind_first...);
    const char* const letter = end - 4;  // as in "1.25e-03" and "1e+02"
    const char* const digits = text[1] == '.' ? text + 1 : text;
    if (digits != text) text[1] = text[0];
    Decimal decimal{.digits = {digits, letter}};
    std::from_chars(letter[1] == '+' ? letter + 2 : letter + 1, end, decimal.point);
    ++decimal.point;
    return decimal;
}

// A float, or the point midway between two floats, with zeros behind: a double holds both, and
// neither has more than 113 digits, so that nothing is rounded.
inline Decimal exactly(double magnitude) {
    return decimal(magnitude, 112);
}

inline std::string written(float value) {
    if (std::isnan(value)) return "  NaN";
    if (std::isinf(value)) return "  INF";
    if (value == 0.0f) return "  0.000000";
    const double magnitude = value;
    const bool positional = magnitude >= 0.09999995 && magnitude < 999999.5;
    const std::size_t count = positional ? 6 : 7;
    auto [digits, point] = exactly(magnitude);
    std::uint32_t kept = 0;
    std::from_chars(digits.data(), digits.data() + count, kept);
    digits = std::to_string(digits[count] >= '5' ? kept + 1 : kept);
    if (digits.size() > count) {
        digits.pop_back();
        ++point;
    }
    if (positional && point == 0) return "  0." + digits;
    digits.insert(positional ? static_cast<std::size_t>(point) : 1, 1, '.');
    if (positional) return "  " + digits;
    const std::string exponent = std::to_string(100 + std::abs(point - 1)).substr(1);
    return "  " + digits + (point < 1 ? "E-" : "E+") + exponent;
}

// What is wrong with the text of the float of these bits or of its negative; nothing if both are
// right.
inline std::string miswritten(std::uint32_t bits) {
    const auto magnitude = std::bit_cast<float>(bits);
    std::string expected = written(magnitude);
    for (const std::uint32_t sign : {0U, minus}) {
        if (sign != 0 && magnitude != 0.0f) expected[1] = '-';
        textio::NumberText text{};
        const std::string_view got = textio::format_real(std::bit_cast<float>(bits | sign), text);
        if (got != expected) return '"' + std::string(got) + "\" instead of \"" + expected + '"';
    }
    return {};
}

// Each stands for a way to spell an exponent: a letter, most often those that most files have; a
// plus for a sign alone; a point for none. Their number is odd, so that each meets every parity.
inline constexpr std::string_view spellings = "EeEDeEdeEQeEqeEe+EeE.";

inline void spell(std::string& line, const Decimal& decimal, char spelling) {
    const std::string_view digits = decimal.digits;
    const auto count = static_cast<int>(digits.size());
    // With an exponent the point stands before the digits, amid them or behind them.
    const int point = spelling == '.' ? decimal.point : count * (count % 3) / 2;
    const auto whole = static_cast<std::size_t>(std::clamp(point, 0, count));
    line.append(digits.substr(0, whole));
    line.append(static_cast<std::size_t>(std::max(point - count, 0)), '0').append(1, '.');
    line.append(static_cast<std::size_t>(std::max(-point, 0)), '0').append(digits.substr(whole));
    if (spelling == '.') return;
    const int exponent = decimal.point - point;
    if (spelling != '+') line += spelling;
    if (spelling < 'a' && exponent >= 0) line += '+';  // and none behind a small letter
    line += std::to_string(exponent);
}

// Reads the shortest decimal of the float of these bits, its negative, and three decimals between
// it and the next float: the one exactly midway, read as the even float, and those one unit of its
// tenth further digit above and below. Behind the largest float comes infinity, as if it were
// 2^128. Returns the line if any is read wrongly. Spellings and signs change with every turn.
inline std::string misread(std::uint32_t bits, std::uint64_t turn) {
    std::string line;
    line.reserve(1000);
    std::array<std::uint32_t, 5> expected{};
    std::size_t count = 0;
    const auto add = [&](const Decimal& number, std::uint32_t read_as) {
        line += read_as >= minus ? " -" : " ";
        spell(line, number, spellings[(turn + count) % spellings.size()]);
        expected[count++] = read_as;
    };
    const auto magnitude = std::bit_cast<float>(bits);
    const Decimal shortest = decimal(magnitude);
    add(shortest, bits);
    add(shortest, bits | minus);
    const double next = bits + 1 == infinity ? 0x1p128 : std::bit_cast<float>(bits + 1);
    const std::uint32_t sign = turn / 2 % 2 == 0 ? 0 : minus;
    Decimal between = exactly((double{magnitude} + next) / 2);
    std::string& digits = between.digits;
    const std::size_t last = digits.find_last_not_of('0');
    digits.resize(last + 1);
    add(between, (bits + bits % 2) | sign);
    digits += "0000000001";
    add(between, (bits + 1) | sign);
    --digits[last];
    digits.replace(last + 1, 10, "9999999999");
    add(between, bits | sign);
    line += '\n';

    std::array<float, expected.size()> got{};
    textio::ScanState state;
    const bool right = textio::scan_line(line, state, got) == textio::Scan::complete &&
                       std::bit_cast<decltype(expected)>(got) == expected;
    return right ? std::string() : "misread:" + line;
}

}  // namespace dorvek::checks
