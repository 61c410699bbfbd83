// The ways to spell a real that free-form input takes.
#pragma once

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "exact_decimal.hpp"

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

}  // namespace dorvek::exact
