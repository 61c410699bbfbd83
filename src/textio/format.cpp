// Reals are written in two steps: digits first (an exact decimal rounding), then their layout.
// std::to_chars and printf do not serve: they round exact ties to even, and of the floats there
// are millions that are exact ties at the sixth or seventh digit.

#include "textio/format.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "textio/real.hpp"

namespace dorvek::textio {
namespace {

__extension__ using Wide = unsigned __int128;

// 5^k for k = 0 .. 55; 5^55 is the last one below 2^128.
constexpr auto powers_of_five = [] {
    std::array<Wide, 56> powers{};
    Wide power = 1;
    for (Wide& entry : powers) {
        entry = power;
        power *= 5;
    }
    return powers;
}();

// A magnitude mantissa * 2^exponent.
struct Binary {
    std::uint32_t mantissa;  // below 2^24
    int exponent;            // -149 .. 104
};

// A magnitude rounded to n digits, digits * 10^(exponent - n + 1): the decimal point stands behind
// the first digit, times 10^exponent.
struct Rounded {
    std::uint32_t digits;
    int exponent;
};

// The finite magnitude as its two parts.
Binary split(float magnitude) {
    assert(magnitude >= 0.0f && std::isfinite(magnitude));
    const auto bits = std::bit_cast<std::uint32_t>(magnitude);
    const auto biased = static_cast<int>(bits >> 23);
    const std::uint32_t fraction = bits & 0x7FFFFFU;
    if (biased == 0) return {.mantissa = fraction, .exponent = -149};
    return {.mantissa = fraction | 0x800000U, .exponent = biased - 150};
}

// A value that has to fit 64 bits.
std::uint64_t narrowed(Wide value) {
    assert(value >> 64U == 0);
    return static_cast<std::uint64_t>(value);
}

// floor(2 * x * 10^scale) for x = mantissa * 2^exponent, exact.
std::uint64_t doubled_and_scaled(Binary x, int scale) {
    assert(scale >= -33 && scale <= 55);
    if (scale < 0) {
        // Only x >= 10^6 comes here. Dividing by an integer, its fraction does not matter.
        const Wide whole = x.exponent < 0 ? Wide{x.mantissa >> static_cast<unsigned>(-x.exponent)}
                                          : Wide{x.mantissa} << static_cast<unsigned>(x.exponent);
        const Wide half_divisor = powers_of_five[static_cast<std::size_t>(-scale)]
                                  << static_cast<unsigned>(-scale - 1);
        return narrowed(whole / half_divisor);
    }
    // 2 * x * 10^scale = mantissa * 5^scale * 2^(exponent + scale + 1). The product has up to 152
    // bits; it is kept in two pieces, high * 2^64 + low.
    const Wide five = powers_of_five[static_cast<std::size_t>(scale)];
    const Wide low_product = Wide{static_cast<std::uint64_t>(five)} * x.mantissa;
    const Wide high = (five >> 64U) * x.mantissa + (low_product >> 64U);
    const auto low = static_cast<std::uint64_t>(low_product);
    const int shift = x.exponent + scale + 1;
    if (shift >= 0) return low << static_cast<unsigned>(shift);
    if (shift <= -64) return narrowed(high >> static_cast<unsigned>(-shift - 64));
    return narrowed(((Wide{narrowed(high)} << 64U) | low) >> static_cast<unsigned>(-shift));
}

// x rounded half up to `count` significant digits, x > 0.
Rounded round_half_up(Binary x, int count) {
    assert(x.mantissa > 0);
    std::uint32_t limit = 1;
    for (int i = 0; i < count; ++i) limit *= 10;
    // 1233/4096 is near enough to log10(2) to give the decimal exponent of every float or one less.
    const int top_bit = x.exponent + static_cast<int>(std::bit_width(x.mantissa)) - 1;
    int exponent = (top_bit * 1233) >> 12;
    for (;; ++exponent) {
        const std::uint64_t rounded = (doubled_and_scaled(x, count - 1 - exponent) + 1) / 2;
        if (rounded < limit) {
            return {.digits = static_cast<std::uint32_t>(rounded), .exponent = exponent};
        }
    }
}

// Writes the last `count` decimal digits of `value` at `out`, leading zeros included.
char* put_digits(char* out, std::uint32_t value, int count) {
    for (int i = count - 1; i >= 0; --i) {
        out[i] = static_cast<char>('0' + value % 10);
        value /= 10;
    }
    return out + count;
}

// Six digits and a decimal point.
char* put_positional(char* out, Rounded decimal) {
    assert(decimal.exponent >= -1 && decimal.exponent <= 5);
    if (decimal.exponent < 0) {
        *out++ = '0';
        *out++ = '.';
        return put_digits(out, decimal.digits, 6);
    }
    std::array<char, 6> digits{};
    put_digits(digits.data(), decimal.digits, 6);
    const std::size_t whole = static_cast<std::size_t>(decimal.exponent) + 1;
    out = std::copy_n(digits.data(), whole, out);
    *out++ = '.';
    return std::copy_n(digits.data() + whole, digits.size() - whole, out);
}

// Seven digits, the point behind the first, and a two-digit exponent.
char* put_scientific(char* out, Rounded decimal) {
    out = put_digits(out, decimal.digits / 1000000, 1);
    *out++ = '.';
    out = put_digits(out, decimal.digits, 6);
    *out++ = 'E';
    *out++ = decimal.exponent < 0 ? '-' : '+';
    return put_digits(out, static_cast<std::uint32_t>(std::abs(decimal.exponent)), 2);
}

char* put_magnitude(char* out, float magnitude) {
    if (magnitude == 0.0f) return put_positional(out, {.digits = 0, .exponent = -1});
    const Binary x = split(magnitude);
    const Rounded six = round_half_up(x, 6);
    // Just below 0.1, six significant digits are seven decimals, so that this one rounding decides
    // the form as well as the digits.
    if (six.exponent >= -1 && six.exponent <= 5) return put_positional(out, six);
    return put_scientific(out, round_half_up(x, 7));
}

std::string_view text_until(const NumberText& text, const char* end) {
    return {text.data(), static_cast<std::size_t>(end - text.data())};
}

}  // namespace

std::string_view format_integer(std::int32_t value, NumberText& text) {
    char* out = text.data();
    *out++ = ' ';
    if (value >= 0) *out++ = ' ';
    return text_until(text, std::to_chars(out, text.data() + text.size(), value).ptr);
}

std::string_view format_real(float value, NumberText& text) {
    char* out = text.data();
    *out++ = ' ';
    *out++ = std::signbit(value) && value != 0.0f ? '-' : ' ';
    if (std::isnan(value)) {
        out = std::copy_n("NaN", 3, out);
    } else if (std::isinf(value)) {
        out = std::copy_n("INF", 3, out);
    } else {
        out = put_magnitude(out, std::abs(value));
    }
    return text_until(text, out);
}

}  // namespace dorvek::textio
