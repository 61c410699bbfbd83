// What a float must be written as.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "exact_decimal.hpp"
#include "textio/format.hpp"

namespace dorvek::exact {

// The form that a magnitude is written in decides how many digits it has: six or seven.
inline bool is_positional(float magnitude) {
    const double m = magnitude;
    return m == 0.0 || (m >= 0.09999995 && m < 999999.5);
}
inline std::size_t digits_written(float magnitude) {
    return is_positional(magnitude) ? 6 : 7;
}

// The text for a magnitude, given its expansion if it is finite.
inline std::string written(float magnitude, const Decimal& decimal) {
    if (std::isnan(magnitude)) return "  NaN";
    if (std::isinf(magnitude)) return "  INF";
    const std::size_t count = digits_written(magnitude);
    std::string digits;
    for (std::size_t i = 0; i < count; ++i) digits += digit(decimal, i);
    int point = decimal.point;
    if (digit(decimal, count) >= '5') {
        const std::size_t last = digits.find_last_not_of('9');
        if (last == std::string::npos) {
            digits.assign(count, '0').front() = '1';
            ++point;
        } else {
            ++digits[last];
            std::fill(digits.begin() + static_cast<std::ptrdiff_t>(last) + 1, digits.end(), '0');
        }
    }
    if (is_positional(magnitude)) {
        if (point == 0) return "  0." + digits;
        return "  " + digits.insert(static_cast<std::size_t>(point), 1, '.');
    }
    const int exponent = point - 1;
    digits.insert(1, 1, '.') += exponent < 0 ? "E-" : "E+";
    digits += static_cast<char>('0' + std::abs(exponent) / 10);
    digits += static_cast<char>('0' + std::abs(exponent) % 10);
    return "  " + digits;
}

// What is wrong with the text of the float of these bits and of its negative, given its expansion;
// nothing if both are right.
inline std::string miswritten(std::uint32_t bits, const Decimal& decimal) {
    const auto magnitude = std::bit_cast<float>(bits);
    std::string expected = written(magnitude, decimal);
    for (const std::uint32_t sign : {0U, 0x80000000U}) {
        if (sign != 0 && magnitude != 0.0f) expected[1] = '-';
        textio::NumberText text{};
        const auto got = textio::format_real(std::bit_cast<float>(bits | sign), text);
        if (got != expected) return '"' + std::string(got) + "\" instead of \"" + expected + '"';
    }
    return {};
}

}  // namespace dorvek::exact
