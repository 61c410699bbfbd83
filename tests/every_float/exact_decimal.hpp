// The exact decimal expansion of floats and of the points between them, what writing and reading
// are checked against. A way of its own, slow and plain: everything is added up in base 10, where
// src/textio multiplies and shifts binary integers.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace dorvek::exact {

// A natural number below 10^126 in base 10^18, lowest limb first. The longest one needed, midway
// between two small floats, has 113 digits.
using Natural = std::array<std::uint64_t, 7>;
inline constexpr std::uint64_t base = 1'000'000'000'000'000'000;
inline constexpr std::size_t digits_per_limb = 18;
inline constexpr std::size_t longest = 7 * digits_per_limb;

inline void add(Natural& sum, const Natural& term) {
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < sum.size(); ++i) {
        const std::uint64_t limb = sum[i] + term[i] + carry;
        carry = limb >= base ? 1 : 0;
        sum[i] = limb - carry * base;
    }
}

inline void multiply(Natural& product, std::uint64_t small_factor) {
    std::uint64_t carry = 0;
    for (std::uint64_t& limb : product) {
        limb = limb * small_factor + carry;
        carry = limb / base;
        limb %= base;
    }
}

// The numbers first, first + step, first + 2 step, ..., each times 2^exponent.
struct Walk {
    Natural value{};  // the present one, times 10^decimals
    Natural step{};
    int decimals = 0;
};

inline Walk walk(std::uint32_t first, std::uint32_t step, int exponent) {
    Walk walk{.value = {first}, .step = {step}, .decimals = std::max(-exponent, 0)};
    const std::uint64_t factor = exponent < 0 ? 5 : 2;  // 2^-n is 5^n * 10^-n
    for (int i = 0; i < std::abs(exponent); ++i) {
        multiply(walk.value, factor);
        multiply(walk.step, factor);
    }
    return walk;
}

// Starts at the float of these bits (positive, finite) and goes on by `halves` halves of the
// distance to the next float; `ahead` halves further to begin with: 1 is midway.
inline Walk walk_floats(std::uint32_t bits, std::uint32_t halves, std::uint32_t ahead = 0) {
    const std::uint32_t biased = bits >> 23U;
    const std::uint32_t mantissa = (bits & 0x7FFFFFU) | (biased == 0 ? 0U : 0x800000U);
    return walk(2 * mantissa + ahead, halves, static_cast<int>(std::max(biased, 1U)) - 151);
}

// The number 0.d1d2d3... * 10^point with d1 not 0; without digits it is 0.
struct Decimal {
    std::array<char, longest> digits{};
    std::size_t count = 0;
    int point = 0;
};

inline void expand(const Walk& walk, Decimal& decimal) {
    std::array<char, longest> all{};
    char* out = all.data() + all.size();
    std::size_t limbs = walk.value.size();
    while (limbs > 0 && walk.value[limbs - 1] == 0) --limbs;
    for (std::size_t i = 0; i < limbs; ++i) {
        // Two halves side by side: a division need not wait for the one before it.
        constexpr std::size_t half = digits_per_limb / 2;
        auto low = static_cast<std::uint32_t>(walk.value[i] % 1'000'000'000);
        auto high = static_cast<std::uint32_t>(walk.value[i] / 1'000'000'000);
        out -= digits_per_limb;
        for (std::size_t k = half; k-- > 0; low /= 10, high /= 10) {
            out[half + k] = static_cast<char>('0' + low % 10);
            out[k] = static_cast<char>('0' + high % 10);
        }
    }
    char* const end = all.data() + all.size();
    const char* const first = std::find_if(out, end, [](char digit) { return digit != '0'; });
    decimal.count = static_cast<std::size_t>(end - first);
    decimal.point = decimal.count == 0 ? 0 : static_cast<int>(decimal.count) - walk.decimals;
    std::copy(first, static_cast<const char*>(end), decimal.digits.begin());
}

inline char digit(const Decimal& decimal, std::size_t i) {
    return i < decimal.count ? decimal.digits[i] : '0';
}

}  // namespace dorvek::exact
