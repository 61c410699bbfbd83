// A real is read in two ways that agree. Nearly every token is a plain decimal: its digits are one
// integer, scaled by a power of ten in double precision where that provably gives the nearest
// float. Any other is taken apart into its digits and an exponent and respelled. What scaling
// cannot tell, std::from_chars does.

#include "textio/free_form.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <system_error>
#include <type_traits>

#include "textio/real.hpp"

namespace dorvek::textio {
namespace {

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}
bool is_sign(char c) {
    return c == '+' || c == '-';
}

bool token_ends(char c) {
    return c == ' ' || c == '\n' || c == ',' || c == '/';
}

// Digits from `at` on as a number, at most `ceiling`; `at` moves behind them.
std::int64_t take_digits(const char*& at, const char* end, std::int64_t ceiling) {
    std::int64_t number = 0;
    for (; at != end && is_digit(*at); ++at) {
        number = std::min<std::int64_t>(number * 10 + (*at - '0'), ceiling);
    }
    return number;
}

// A real in any of its spellings, exactly: the number 0.d1d2d3... * 10^exponent, d1 not 0.
struct Decimal {
    // The point midway between two floats, which decides a rounding, has at most 113 digits; a
    // last digit 1 stands for all that follow where any of them is not 0.
    std::array<char, 128> digits{};
    std::size_t count = 0;
    std::int64_t exponent = 0;
    bool negative = false;
};

// The sign and the digits before any exponent. False if there is no digit.
bool take_mantissa(const char*& at, const char* end, Decimal& decimal) {
    constexpr std::size_t enough = 120;
    bool any_digit = false;
    bool behind_point = false;
    bool rest = false;  // a digit beyond those kept is not 0
    if (at != end && is_sign(*at)) decimal.negative = *at++ == '-';
    for (; at != end && (is_digit(*at) || (*at == '.' && !behind_point)); ++at) {
        if (*at == '.') {
            behind_point = true;
            continue;
        }
        any_digit = true;
        const bool leading_zero = decimal.count == 0 && *at == '0';
        if (!behind_point && !leading_zero) ++decimal.exponent;
        if (behind_point && leading_zero) --decimal.exponent;
        if (leading_zero) continue;
        if (decimal.count < enough) {
            decimal.digits[decimal.count++] = *at;
        } else {
            rest = rest || *at != '0';
        }
    }
    if (rest) decimal.digits[decimal.count++] = '1';
    return any_digit;
}

// The exponent that a token may end with. False if what stands there is not one.
bool take_exponent(const char*& at, const char* end, Decimal& decimal) {
    if (at == end) return true;
    const bool letter = std::string_view("EDQedq").find(*at) != std::string_view::npos;
    if (letter) ++at;
    bool negative = false;
    if (at != end && is_sign(*at)) {
        negative = *at++ == '-';
    } else if (!letter) {
        return false;
    }
    if (at == end || !is_digit(*at)) return false;
    // Far beyond any exponent that the digits of a mantissa could bring back into range.
    constexpr std::int64_t ceiling = 1'000'000'000'000'000;
    const std::int64_t exponent = take_digits(at, end, ceiling);
    decimal.exponent += negative ? -exponent : exponent;
    return true;
}

// The float nearest to an unsigned number spelled as std::from_chars reads it, which leaves values
// beyond the range of a float to us.
float nearest_float(const char* at, const char* end, bool below_one) {
    float value = 0.0f;
    if (std::from_chars(at, end, value).ec == std::errc{}) return value;
    return below_one ? 0.0f : std::numeric_limits<float>::infinity();
}

float nearest_float(const Decimal& decimal) {
    std::array<char, 160> text{'.'};
    char* out = std::copy_n(decimal.digits.begin(), decimal.count, text.data() + 1);
    if (decimal.count == 0) *out++ = '0';
    *out++ = 'E';
    // From 10^60 on or below 10^-60, it does not matter how far.
    const std::int64_t exponent = std::clamp<std::int64_t>(decimal.exponent, -60, 60);
    out = std::to_chars(out, text.data() + text.size(), exponent).ptr;
    const float magnitude = nearest_float(text.data(), out, exponent < 0);
    return decimal.negative ? -magnitude : magnitude;
}

bool parse(std::string_view token, float& value) {
    const char* at = token.data();
    const char* const end = at + token.size();
    Decimal decimal;
    if (!take_mantissa(at, end, decimal) || !take_exponent(at, end, decimal) || at != end) {
        return false;
    }
    value = nearest_float(decimal);
    return true;
}

bool parse(std::string_view token, std::int32_t& value) {
    if (token.starts_with('+')) {
        token.remove_prefix(1);
        if (token.starts_with('-')) return false;
    }
    const auto [stop, error] = std::from_chars(token.data(), token.data() + token.size(), value);
    return error == std::errc{} && stop == token.data() + token.size();
}

// The powers of ten that a double holds exactly.
constexpr std::array<double, 23> exact_power{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                             1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                             1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// The float nearest to digits * 10^exponent, digits below 10^19. False if this way cannot tell.
//
// The integer becomes a double, which is then multiplied or divided by a power of ten that is
// exact. Each step rounds once: the first is wrong by at most 2^-53 of the value, which is less
// than one unit in the last place of the result, and the second adds at most half a unit. Together
// that is less than 1.5 units. The last 29 bits of a double are those that a float lacks, and are
// 2^28 midway between two floats. Where they are two units or more away from there, no such point
// lies between the double and the exact value, and both have the same nearest float. That float is
// neither subnormal nor infinite: but for 0, the values go from 1e-22 to below 1e38.
bool scale(std::uint64_t digits, std::int64_t exponent, float& value) {
    if (exponent < -22 || exponent > 19) return false;
    const auto whole = static_cast<double>(digits);
    const double real = exponent < 0 ? whole / exact_power[static_cast<std::size_t>(-exponent)]
                                     : whole * exact_power[static_cast<std::size_t>(exponent)];
    constexpr std::uint64_t midway = 1U << 28U;
    const std::uint64_t behind_float = std::bit_cast<std::uint64_t>(real) % (2 * midway);
    value = static_cast<float>(real);
    return behind_float < midway - 1 || behind_float > midway + 1;
}

// Appends the digits from `at` on to a number, which is of no use once there are too many. Returns
// behind the last one.
const char* append_digits(const char* at, std::uint64_t& number) {
    for (;; ++at) {
        const std::uint64_t digit = static_cast<unsigned char>(*at) - std::uint64_t{'0'};
        if (digit > 9) return at;
        number = 10 * number + digit;
    }
}

// A plain decimal: digits, at most 19, with or without a minus sign, a point among them, and an
// exponent with E and two digits. Returns the token's end, or nullptr if the token is no such.
const char* take_plain(const char* at, float& value) {
    const bool negative = *at == '-';
    if (negative) ++at;
    std::uint64_t digits = 0;
    const char* const first = at;
    at = append_digits(at, digits);
    std::int64_t count = at - first;
    std::int64_t exponent = 0;
    if (*at == '.') {
        const char* const behind_point = at + 1;
        at = append_digits(behind_point, digits);
        exponent = behind_point - at;
        count -= exponent;
    }
    if (count < 1 || count > 19) return nullptr;
    if (*at == 'E' || *at == 'e') {
        ++at;
        const bool below_one = *at == '-';
        if (is_sign(*at)) ++at;
        if (!is_digit(at[0]) || !is_digit(at[1])) return nullptr;
        const std::int64_t power = 10 * (at[0] - '0') + (at[1] - '0');
        exponent += below_one ? -power : power;
        at += 2;
    }
    if (!token_ends(*at)) return nullptr;
    if (!scale(digits, exponent, value)) value = nearest_float(first, at, exponent < 0);
    if (negative) value = -value;
    return at;
}

// "v" or "r*v"; false if it is neither.
template <typename Number>
bool parse_repeated(std::string_view token, std::size_t& count, Number& value) {
    const std::size_t star = token.find('*');
    count = 1;
    if (star != std::string_view::npos) {
        constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max();
        const char* at = token.data();
        const std::int64_t digits = take_digits(at, at + star, largest + 1);
        if (at != token.data() + star || digits < 1 || digits > largest) return false;
        count = static_cast<std::size_t>(digits);
        token.remove_prefix(star + 1);
    }
    return parse(token, value);
}

template <typename Number>
Scan scan(std::string_view line, ScanState& state, std::span<Number> targets, std::size_t surplus) {
    assert(line.ends_with('\n'));
    const char* at = line.data();
    const std::size_t wanted = targets.size() + surplus;
    while (state.filled < wanted) {
        while (*at == ' ') ++at;
        if (*at == '\n') return Scan::wants_more;
        Number value{};
        if constexpr (std::is_same_v<Number, float>) {
            if (const char* const end = take_plain(at, value); end != nullptr) {
                if (state.filled < targets.size()) targets[state.filled] = value;
                ++state.filled;
                state.separator_due = true;
                at = end;
                continue;
            }
        }
        if (*at == '/') return Scan::complete;
        if (*at == ',') {
            if (!state.separator_due) ++state.filled;
            state.separator_due = false;
            ++at;
            continue;
        }
        state.separator_due = true;
        const char* const token = at;
        while (!token_ends(*at)) ++at;
        std::size_t count = 0;
        if (!parse_repeated({token, static_cast<std::size_t>(at - token)}, count, value)) {
            return Scan::illegal_character;
        }
        const std::size_t next = std::min(state.filled + count, wanted);
        for (; state.filled < std::min(next, targets.size()); ++state.filled) {
            targets[state.filled] = value;
        }
        state.filled = next;
    }
    return Scan::complete;
}

}  // namespace

Scan scan_line(std::string_view line, ScanState& state, std::span<float> targets,
               std::size_t surplus) {
    return scan(line, state, targets, surplus);
}

Scan scan_line(std::string_view line, ScanState& state, std::span<std::int32_t> targets) {
    return scan(line, state, targets, 0);
}

}  // namespace dorvek::textio
