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

// By letter, most often those that most files have; then by a sign alone, then no exponent at all.
inline constexpr std::string_view letters = "EeDEedEeQEeq";
inline constexpr unsigned sign_alone = letters.size();
inline constexpr unsigned no_exponent = sign_alone + 2;
inline constexpr unsigned spellings = no_exponent + 2;

// Appends a decimal of at least one digit in one of the spellings.
inline void spell(std::string& line, const Decimal& decimal, unsigned spelling) {
    const std::string_view digits(decimal.digits.data(), decimal.count);
    if (spelling < no_exponent) {
        // The point stands before the digits, amid them or behind them.
        const std::size_t before = digits.size() * (digits.size() % 3) / 2;
        line.append(digits.substr(0, before)).append(1, '.').append(digits.substr(before));
        const int exponent = decimal.point - static_cast<int>(before);
        if (spelling < sign_alone) line += letters[spelling];
        if (spelling >= sign_alone && exponent >= 0) line += '+';
        line += std::to_string(exponent);
    } else if (decimal.point <= 0) {
        line.append("0.").append(static_cast<std::size_t>(-decimal.point), '0').append(digits);
    } else {
        const auto whole = static_cast<std::size_t>(decimal.point);
        line.append(digits.substr(0, whole));
        line.append(whole - std::min(whole, digits.size()), '0').append(1, '.');
        if (whole < digits.size()) line.append(digits.substr(whole));
    }
}

// The shortest decimal that is nearest to no other float.
inline Decimal shortest(float magnitude) {
    std::array<char, 32> text{};
    const char* const end = std::to_chars(text.data(), text.data() + text.size(), magnitude,
                                          std::chars_format::scientific)
                                .ptr;
    Decimal decimal;
    const char* at = text.data();
    for (; *at != 'e'; ++at) {
        if (*at != '.') decimal.digits[decimal.count++] = *at;
    }
    std::from_chars(at[1] == '+' ? at + 2 : at + 1, end, decimal.point);
    ++decimal.point;
    return decimal;
}

// One unit of a further digit less: 1250 becomes 12499.
inline Decimal just_below(Decimal decimal) {
    std::size_t last = decimal.count++;
    decimal.digits[last] = '0';
    for (; decimal.digits[last] == '0'; --last) decimal.digits[last] = '9';
    --decimal.digits[last];
    return decimal;
}

// One unit of a further digit more: 1250 becomes 12501.
inline Decimal just_above(Decimal decimal) {
    decimal.digits[decimal.count++] = '1';
    return decimal;
}

// Reads the shortest decimal of the float of these bits, its negative, and three decimals between
// it and the next float, given what lies midway: that itself, read as the even one, and those one
// unit of a further digit below and above it. Returns the line if any is read wrongly. The spelling
// changes with every turn, the sign of the last three with every sixteenth.
inline std::string misread(std::uint32_t bits, const Decimal& midway, std::uint32_t turn) {
    constexpr std::uint32_t minus = 0x80000000U;
    const std::uint32_t spelling = (turn + turn / spellings) % spellings;
    const std::uint32_t sign = turn / spellings % 2 == 0 ? 0 : minus;
    const Decimal decimal = shortest(std::bit_cast<float>(bits));
    std::string line;
    line.reserve(1024);  // for five tokens, at once
    spell(line, decimal, spelling);
    spell(line += " -", decimal, (spelling + 3) % spellings);
    const std::string_view between = sign == 0 ? " " : " -";
    spell(line += between, just_below(midway), spelling);
    spell(line += between, midway, (spelling + 1) % spellings);
    spell(line += between, just_above(midway), (spelling + 2) % spellings);

    const std::array expected{bits, bits | minus, bits | sign, (bits + bits % 2) | sign,
                              (bits + 1) | sign};
    std::array<float, expected.size()> got{};
    textio::ScanState state;
    const bool right = textio::scan_line(line, state, got) == textio::Scan::complete &&
                       std::bit_cast<std::array<std::uint32_t, expected.size()>>(got) == expected;
    return right ? std::string() : line;
}

}  // namespace dorvek::exact
