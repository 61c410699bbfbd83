#include "textio/free_form.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace dorvek::textio {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

// Reads lines into three targets that hold -9 before.
template <typename Number>
Scan read_three(std::string_view lines, std::array<Number, 3>& targets) {
    ScanState state;
    targets.fill(-9);
    Scan scan = Scan::wants_more;
    while (scan == Scan::wants_more && !lines.empty()) {
        const std::size_t feed = lines.find('\n');
        scan = scan_line(lines.substr(0, feed), state, std::span<Number>(targets));
        lines.remove_prefix(feed == std::string_view::npos ? lines.size() : feed + 1);
    }
    return scan;
}

TEST(ScanLine, TakesValuesNullsAndRepeats) {
    static constexpr struct {
        std::string_view lines;
        std::array<float, 3> targets;  // -9 is a target that kept its value
        Scan end = Scan::complete;
    } cases[] = {
        {"1 2.5 -3", {1, 2.5, -3}},
        {"  1 ,2 ,  3 what follows is ignored", {1, 2, 3}},
        {"1\n\n   \n2 3", {1, 2, 3}},
        {"1 2", {1, 2, -9}, Scan::wants_more},
        // Null values: a comma before the first token or after a comma.
        {",2,3", {-9, 2, 3}},
        {"1,,3", {1, -9, 3}},
        {"1, ,3", {1, -9, 3}},
        {"1 ,, 3", {1, -9, 3}},
        {",,,", {-9, -9, -9}},
        // A comma is a separator at the end of a line, and belongs to the token of the line before.
        {"1,\n2,\n3", {1, 2, 3}},
        {"1\n,2\n,3", {1, 2, 3}},
        {"1,\n,3", {1, -9, 3}},
        {"1\n , ,3", {1, -9, 3}},
        // A slash ends the read.
        {"/", {-9, -9, -9}},
        {"1/ 2 3", {1, -9, -9}},
        {"1 2 / x", {1, 2, -9}},
        {"1,,/", {1, -9, -9}},
        // Repeat counts.
        {"2*4 5", {4, 4, 5}},
        {"1,2*4", {1, 4, 4}},
        {"9*1.5", {1.5, 1.5, 1.5}},
        {"2147483647*1/", {1, 1, 1}},
        {"02*7,8", {7, 7, 8}},
        {"2*-1D1\n6", {-10, -10, 6}},
    };
    for (const auto& [lines, expected, end] : cases) {
        std::array<float, 3> targets{};
        EXPECT_EQ(read_three(lines, targets), end) << lines;
        EXPECT_EQ(targets, expected) << lines;
    }
}

TEST(ScanLine, TakesIntegers) {
    std::array<std::int32_t, 3> targets{};
    EXPECT_EQ(read_three("+1 -2147483648 2147483647", targets), Scan::complete);
    EXPECT_EQ(targets, (std::array<std::int32_t, 3>{1, -2147483647 - 1, 2147483647}));
    EXPECT_EQ(read_three("2*007,/", targets), Scan::complete);
    EXPECT_EQ(targets, (std::array<std::int32_t, 3>{7, 7, -9}));
    for (const char* line : {"2.0",
                             "1E2",
                             "x",
                             "+",
                             "-",
                             "+-1",
                             "--1",
                             "1+",
                             "2147483648",
                             "-2147483649",
                             "99999999999999999999",
                             "0*1",
                             "2*",
                             "2* 1",
                             "2*,",
                             "*1",
                             "-2*1",
                             "+2*1",
                             "2*3*1",
                             "2147483648*1",
                             "1;2",
                             "0x10"}) {
        EXPECT_EQ(read_three(line, targets), Scan::illegal_character) << line;
    }
}

TEST(ScanLine, TakesRealsInEverySpelling) {
    static constexpr struct {
        std::string_view token;
        float value;
    } cases[] = {
        {"1", 1.0f},
        {"+1.", 1.0f},
        {"-.5", -0.5f},
        {"1.5E3", 1500.0f},
        {"1.5e+3", 1500.0f},
        {"1.5D-3", 0.0015f},
        {"1.5d3", 1500.0f},
        {"1.5Q+03", 1500.0f},
        {"1.5q3", 1500.0f},
        {"1.5-3", 0.0015f},
        {"15+2", 1500.0f},
        {"+2.5D0", 2.5f},
        {".5-1", 0.05f},
        {"0", 0.0f},
        {"000.10", 0.1f},
        {"1E0000000000002", 100.0f},
        // Out of range.
        {"1E39", infinity},
        {"-3.5D38", -infinity},
        {"1+99999999999999999999", infinity},
        {"1E-50", 0.0f},
        {"1D-99999999999999999999", 0.0f},
        {"0D99", 0.0f},
        {"340282356779733661637539395458142568448", infinity},  // midway to 2^128: even is out
        {"3.40282356779733661637539395458142568447D38", std::numeric_limits<float>::max()},
        // Digits beyond those of a float decide between two neighbours; on a tie the even one.
        {"16777217", 16777216.0f},
        {"16777219", 16777220.0f},
        {"16777217.0000000000000000000001", 16777218.0f},
        {"16777216999999999999999999999999D-24", 16777216.0f},
    };
    for (const auto& [token, value] : cases) {
        std::array<float, 3> targets{};
        const std::string twice = std::string(token) + ",0," + std::string(token) + "/";
        EXPECT_EQ(read_three(twice, targets), Scan::complete) << token;
        EXPECT_EQ(targets[0], value) << token;
        EXPECT_EQ(targets[2], value) << token;
        EXPECT_EQ(std::signbit(targets[0]), token[0] == '-') << token;
    }
}

// 2^24 + 1 is midway between two floats; a digit behind hundreds of zeros moves it off.
TEST(ScanLine, LosesNoDigitOfALongReal) {
    const std::string zeros(400, '0');
    const std::string point = "16777217." + zeros;
    std::array<float, 3> targets{};
    EXPECT_EQ(read_three(point + "-0 " + point + "1-0 " + zeros + "1" + zeros + "-400", targets),
              Scan::complete);
    EXPECT_EQ(targets, (std::array{16777216.0f, 16777218.0f, 1.0f}));
}

TEST(ScanLine, RefusesWhatIsNoReal) {
    std::array<float, 3> targets{};
    for (const char* token :
         {".",     "+",      "-",        "+.",     "E5",    ".E5",   "1.5E", "1.5E+",
          "1.5-",  "1.5--3", "1.5E--3",  "1.5EE3", "1..5",  "1.5.2", "1.5X", "inf",
          "-inf",  "nan",    "infinity", "+inf",   "0x1p3", "1,5x",  "1*",   "0*1",
          "1.0*2", "1.5\t2", "1.5E3.0",  "1.5DE3", "(1)",   "#",     "1_0"}) {
        EXPECT_EQ(read_three(token, targets), Scan::illegal_character) << token;
    }
}

}  // namespace
}  // namespace dorvek::textio
