// A real is read in two ways that agree: nearly every token is one that std::from_chars takes as it
// stands; any other is taken apart into its digits and an exponent first, and is then respelled for
// std::from_chars, which alone turns digits into a float.

#include "textio/free_form.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <system_error>

#include "textio/real.hpp"

namespace dorvek::textio {
namespace {

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}
bool is_sign(char c) {
    return c == '+' || c == '-';
}

bool token_ends(const char* at, const char* line_end) {
    return at == line_end || *at == ' ' || *at == ',' || *at == '/';
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

float nearest_float(const Decimal& decimal) {
    float magnitude = 0.0f;
    if (decimal.count != 0 && decimal.exponent > -60) {
        magnitude = std::numeric_limits<float>::infinity();
        if (decimal.exponent < 60) {
            std::array<char, 160> text{'.'};
            char* out = std::copy_n(decimal.digits.begin(), decimal.count, text.data() + 1);
            *out++ = 'E';
            out = std::to_chars(out, text.data() + text.size(), decimal.exponent).ptr;
            float value = 0.0f;
            const auto [stop, error] = std::from_chars(text.data(), out, value);
            if (error == std::errc{}) {
                magnitude = value;
            } else if (decimal.exponent < 0) {
                magnitude = 0.0f;
            }
        }
    }
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

// A number spelled as std::from_chars reads it, which nearly every one is: no plus sign, repeat
// count or rarer exponent. Returns the token's end, or nullptr to have the token read with care.
const char* take_plain(const char* at, const char* line_end, float& value) {
    const char first = *at == '-' && at + 1 != line_end ? at[1] : *at;
    if (!is_digit(first) && first != '.') return nullptr;  // not "inf" or "nan"
    const auto [stop, error] = std::from_chars(at, line_end, value);
    return error == std::errc{} && token_ends(stop, line_end) ? stop : nullptr;
}

const char* take_plain(const char* at, const char* line_end, std::int32_t& value) {
    const auto [stop, error] = std::from_chars(at, line_end, value);
    return error == std::errc{} && token_ends(stop, line_end) ? stop : nullptr;
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
    const char* at = line.data();
    const char* const line_end = at + line.size();
    const std::size_t wanted = targets.size() + surplus;
    while (state.filled < wanted) {
        while (at != line_end && *at == ' ') ++at;
        if (at == line_end) return Scan::wants_more;
        Number value{};
        if (const char* stop = take_plain(at, line_end, value); stop != nullptr) {
            if (state.filled < targets.size()) targets[state.filled] = value;
            ++state.filled;
            state.separator_due = true;
            at = stop;
            continue;
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
        while (!token_ends(at, line_end)) ++at;
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
