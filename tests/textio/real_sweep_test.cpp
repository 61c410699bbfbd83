// Reals written and read where a wrong rounding would hide, against exact decimal arithmetic. The
// programs in every_float/ do the same for all floats.

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

#include "every_float/exact_decimal.hpp"
#include "every_float/reading.hpp"
#include "every_float/writing.hpp"

namespace dorvek {
namespace {

constexpr std::uint32_t bits_of(double magnitude) {
    return std::bit_cast<std::uint32_t>(static_cast<float>(magnitude));
}

void expect_written(std::uint32_t bits) {
    exact::Decimal decimal;
    if (bits < 0x7F800000U) expand(exact::walk_floats(bits, 0), decimal);
    ASSERT_EQ(exact::miswritten(bits, decimal), "") << std::hex << bits;
}

void expect_read(std::uint32_t bits, std::uint32_t turn) {
    exact::Decimal midway;
    expand(exact::walk_floats(bits, 0, 1), midway);
    ASSERT_EQ(exact::misread(bits, midway, turn), "") << std::hex << bits;
}

// Bit patterns: zero and the smallest, the largest subnormals and the first normal floats, those
// within 1e-6 of 0.1 and of 1000000, powers of two, the largest, and a spread of all.
constexpr struct {
    std::uint32_t first, last, step;
} ranges[] = {
    {0, 200, 1},
    {0x200, 0x7FFF00, 8191},
    {0x7FFF00, 0x800100, 1},
    {bits_of(0.1 - 1e-7), bits_of(0.1 + 1e-7), 1},
    {bits_of(1e6 - 1), bits_of(1e6 + 1), 1},
    {0x3F7FFFC0, 0x3F800040, 1},
    {0x4AFFFFC0, 0x4B000040, 1},
    {0x7F7FFF00, 0x7F7FFFFF, 1},
    {0x800000, 0x7F7FFFFF, 104729},
};

TEST(RealSweep, WritesTheExactValueRoundedHalfUp) {
    for (const auto [first, last, step] : ranges) {
        for (std::uint32_t bits = first; bits <= last; bits += step) expect_written(bits);
    }
    for (const std::uint32_t not_finite : {0x7F800000U, 0x7F800001U, 0x7FC00000U, 0x7FFFFFFFU}) {
        expect_written(not_finite);
    }
}

TEST(RealSweep, WritesTiesUp) {
    // Odd multiples of `unit` in a decade are all its floats midway between two numbers of six
    // digits, or from a million up and below a tenth, of seven.
    constexpr struct {
        double unit, from, to;
        std::uint32_t step;  // one of so many is tried, besides those near the ends
    } decades[] = {
        {1. / 2048, 1e-4, 1e-3, 1}, {1. / 1024, 1e-3, 1e-2, 1},   {1. / 512, 1e-2, 0.1, 1},
        {1. / 128, 0.1, 1, 1},      {1. / 64, 1, 10, 1},          {1. / 32, 10, 100, 1},
        {1. / 16, 100, 1e3, 3},     {1. / 8, 1e3, 1e4, 17},       {1. / 4, 1e4, 1e5, 97},
        {1. / 2, 1e5, 1e6, 487},    {1. / 2, 1e6, 8388608, 3989}, {5, 1e7, 16777216, 331}};
    std::array<std::uint32_t, 2> ties{};  // positional, in exponent form
    for (const auto [unit, from, to, step] : decades) {
        constexpr std::uint32_t near_ends = 1000;
        const auto first = static_cast<std::uint32_t>(std::ceil(from / unit)) | 1U;
        const auto end = static_cast<std::uint32_t>(std::ceil(to / unit));
        for (std::uint32_t odd = first; odd < end; odd += 2) {
            ++ties[exact::is_positional(static_cast<float>(from)) ? 0 : 1];
            const bool tried =
                odd - first < near_ends || end - odd < near_ends || odd / 2 % step == 0;
            if (tried) expect_written(bits_of(odd * unit));
        }
    }
    EXPECT_EQ(ties[0], 1124986);  // with 999999.5, where the tie decides the form
    EXPECT_EQ(ties[1], 8066358);
}

TEST(RealSweep, ReadsShortestDecimalsAndWhatLiesMidway) {
    std::uint32_t turn = 0;
    for (const auto [first, last, step] : ranges) {
        for (std::uint32_t bits = first; bits <= last; bits += step) expect_read(bits, turn++);
    }
}

TEST(RealSweep, ReadsTheEndsInEverySpelling) {
    for (std::uint32_t turn = 0; turn < 2 * exact::spellings; ++turn) {
        for (const double end : {0.0, 1.4e-45, 1.17549435e-38, 0.1, 1.0, 3.40282347e38}) {
            expect_read(bits_of(end), turn);
        }
    }
}

}  // namespace
}  // namespace dorvek
