// Reals written and read where a wrong rounding would hide. every_float/ does the same for all.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

#include "support/reals.hpp"

namespace dorvek {
namespace {

constexpr std::uint32_t bits_of(double magnitude) {
    return std::bit_cast<std::uint32_t>(static_cast<float>(magnitude));
}

// Bit patterns: zero and the smallest, the largest subnormals and the first normal floats, those
// within 1e-7 of 0.1 and 1 of 1000000, powers of two, the largest, and a spread of all.
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

TEST(RealSweep, WritesAndReadsTheHardPlaces) {
    std::uint64_t turn = 0;
    for (const auto [first, last, step] : ranges) {
        for (std::uint32_t bits = first; bits <= last; bits += step) {
            ASSERT_EQ(checks::miswritten(bits), "") << std::hex << bits;
            ASSERT_EQ(checks::misread(bits, turn++), "") << std::hex << bits;
        }
    }
    for (const std::uint32_t bits : {0x7F800000U, 0x7F800001U, 0x7FC00000U, 0x7FFFFFFFU}) {
        ASSERT_EQ(checks::miswritten(bits), "") << std::hex << bits;
    }
}

TEST(RealSweep, WritesTiesUp) {
    // From 10^-4 to 2^24 there are floats midway between two numbers of six digits, or from a
    // million up and below a tenth of seven: in each decade the odd multiples of a power of two,
    // in the last one of 5. Some 20 000 of each are tried.
    for (int decade = -4; decade <= 7; ++decade) {
        const int digits = decade >= -1 && decade <= 5 ? 6 : 7;
        const double unit = decade == 7 ? 5 : std::ldexp(1, decade - digits);
        const double limit = std::min(std::pow(10, decade + 1), decade == 6 ? 0x1p23 : 0x1p24);
        const auto from = static_cast<std::uint32_t>(std::ceil(std::pow(10, decade) / unit));
        const auto to = static_cast<std::uint32_t>(std::ceil(limit / unit));
        for (std::uint32_t odd = from | 1U; odd < to; odd += 2 * (to / 40000 | 1U)) {
            ASSERT_EQ(checks::miswritten(bits_of(odd * unit)), "") << odd << " * " << unit;
        }
    }
}

// Decimals of 1 to 20 digits at 10^-45 to 10^45, as near as they come to a point midway between two
// floats. What is right comes from strtof, which calculates exactly.
TEST(RealSweep, ReadsDecimalsNextToTies) {
    std::mt19937_64 random;
    for (int decade = -45; decade <= 45; ++decade) {
        for (int turn = 0; turn < 20 * 12; ++turn) {
            const double near =
                std::pow(10, decade) * (1 + 0x9p-64 * static_cast<double>(random()));
            const auto tie = std::bit_cast<std::uint64_t>(near) >> 29U << 29U | 1U << 28U;
            checks::Decimal decimal = checks::decimal(std::bit_cast<double>(tie), turn % 20);
            const int last = decimal.digits.back();
            for (const int digit :
                 {last, last == '0' ? '1' : last - 1, last == '9' ? '8' : last + 1}) {
                decimal.digits.back() = static_cast<char>(digit);
                std::string line;
                checks::spell(line, decimal, "Ee."[turn % 3]);
                line += '\n';
                float got = 0;
                textio::ScanState state;
                ASSERT_EQ(textio::scan_line(line, state, {&got, 1}), textio::Scan::complete)
                    << line;
                ASSERT_EQ(got, std::strtof(line.c_str(), nullptr)) << line;
            }
        }
    }
}

TEST(RealSweep, ReadsTheEndsInEverySpelling) {
    for (std::uint64_t turn = 0; turn < 4 * checks::spellings.size(); ++turn) {
        for (const double end : {0.0, 1.4e-45, 1.17549435e-38, 0.1, 1.0, 3.40282347e38}) {
            ASSERT_EQ(checks::misread(bits_of(end), turn), "") << end;
        }
    }
}

}  // namespace
}  // namespace dorvek
