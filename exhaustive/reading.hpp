// What a decimal must be read as, however it is spelled.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "exact_decimal.hpp"
#include "textio/free_form.hpp"

namespace dorvek::exact {

inline constexpr unsigned spellings = 8;  // six letters, a sign alone, no exponent at all

// Appends 0.d1d2d3... * 10^point in one of the spellings.
inline void spell(std::string& line, std::string_view digits, int point, unsigned spelling) {
    constexpr std::string_view letters = "EeDdQq";
    if (spelling <= letters.size()) {
        // The point stands before the digits, amid them or behind them.
        const std::size_t before = digits.size() * (digits.size() % 3) / 2;
        line.append(digits.substr(0, before)).append(1, '.').append(digits.substr(before));
        const int exponent = point - static_cast<int>(before);
        if (spelling < letters.size()) line += letters[spelling];
        if (spelling == letters.size() && exponent >= 0) line += '+';
        line += std::to_string(exponent);
    } else if (point <= 0) {
        line.append("0.").append(static_cast<std::size_t>(-point), '0').append(digits);
    } else {
        const auto whole = static_cast<std::size_t>(point);
        line.append(digits.substr(0, whole));
        line.append(whole - std::min(whole, digits.size()), '0').append(1, '.');
        if (whole < digits.size()) line.append(digits.substr(whole));
    }
}

// Appends the shortest decimal that is nearest to no other float.
inline void spell_shortest(std::string& line, float magnitude, unsigned spelling) {
    std::array<char, 32> text{};
    char* const end = std::to_chars(text.data(), text.data() + text.size(), magnitude,
                                    std::chars_format::scientific)
                          .ptr;
    char* const e = std::find(text.data(), end, 'e');
    int exponent = 0;
    std::from_chars(e[1] == '+' ? e + 2 : e + 1, end, exponent);
    std::string digits(text.data(), e);
    if (digits.size() > 1) digits.erase(1, 1);
    spell(line, digits, exponent + 1, spelling);
}

// Appends a decimal and its next neighbours with one more digit, lower neighbour first, with a
// blank before each. The decimal has at least one digit.
inline void spell_with_neighbours(std::string& line, const Decimal& decimal, unsigned spelling,
                                  std::string_view sign) {
    std::string digits(decimal.digits.data(), decimal.count);
    // One unit of a further digit less: 1250 becomes 12499.
    std::string below = digits + '9';
    const std::size_t last = digits.find_last_not_of('0');
    std::fill(below.begin() + static_cast<std::ptrdiff_t>(last) + 1, below.end(), '9');
    --below[last];
    spell(line.append(sign), below, decimal.point, spelling);
    spell(line.append(sign), digits, decimal.point, (spelling + 1) % spellings);
    spell(line.append(sign), digits += '1', decimal.point, (spelling + 2) % spellings);
}

// Reads the shortest decimal of the float of these bits, its negative, and three decimals between
// it and the next float, given what lies midway: that itself, read as the even one, and those one
// unit of a further digit below and above it. Returns the line if any is read wrongly. The spelling
// changes with every turn, the sign of the last three with every eighth.
inline std::string misread(std::uint32_t bits, const Decimal& midway, std::uint32_t turn) {
    constexpr std::uint32_t minus = 0x80000000U;
    const std::uint32_t spelling = turn % spellings;
    const std::uint32_t sign = turn / spellings % 2 == 0 ? 0 : minus;
    std::string line;
    spell_shortest(line, std::bit_cast<float>(bits), spelling);
    spell_shortest(line += " -", std::bit_cast<float>(bits), (spelling + 3) % spellings);
    spell_with_neighbours(line, midway, spelling, sign == 0 ? " " : " -");

    const std::array expected{bits, bits | minus, bits | sign, (bits + bits % 2) | sign,
                              (bits + 1) | sign};
    std::array<float, expected.size()> got{};
    textio::ScanState state;
    const bool right = textio::scan_line(line, state, got) == textio::Scan::complete &&
                       std::bit_cast<std::array<std::uint32_t, expected.size()>>(got) == expected;
    return right ? std::string() : line;
}

}  // namespace dorvek::exact
