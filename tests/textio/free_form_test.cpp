#include "textio/free_form.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>

#include "support/table.hpp"

namespace dorvek::textio {
namespace {

constexpr int kept = -9;  // what each target holds before

template <typename Number>
Scan read_three(std::string_view lines, std::array<Number, 3>& targets) {
    ScanState state;
    targets.fill(kept);
    Scan scan = Scan::wants_more;
    while (scan == Scan::wants_more && !lines.empty()) {
        const std::size_t end = lines.find('\n') + 1;
        scan = scan_line(lines.substr(0, end), state, std::span<Number>(targets));
        lines.remove_prefix(end);
    }
    return scan;
}

template <typename Number>
void expect_row(const std::string& lines, std::istringstream& expected) {
    std::array<Number, 3> targets{};
    const Scan end = read_three(lines, targets);
    std::string word;
    expected >> word;
    if (word == "illegal") {
        EXPECT_EQ(end, Scan::illegal_character);
        return;
    }
    for (const Number target : targets) {
        const double value = word == "_" ? kept : std::strtod(word.c_str(), nullptr);
        EXPECT_EQ(target, static_cast<Number>(value));
        EXPECT_EQ(std::signbit(target), std::signbit(value));
        word.clear();
        expected >> word;
    }
    EXPECT_EQ(end, word == "more" ? Scan::wants_more : Scan::complete);
}

TEST(ScanLine, ReadsTheTable) {
    support::for_each_row("textio/free_form.txt", [](std::istringstream& row) {
        std::string kind;
        row >> kind;
        std::string text = support::quoted(row) + "\\n";
        for (std::size_t at = 0; (at = text.find('\\')) != std::string::npos;) {
            text.replace(at, 2, text[at + 1] == 'n' ? "\n" : "\t");
        }
        kind == "real" ? expect_row<float>(text, row) : expect_row<std::int32_t>(text, row);
    });
}

// 2^24 + 1 is midway between two floats; a digit behind hundreds of zeros moves it off.
TEST(ScanLine, LosesNoDigitOfALongReal) {
    const std::string zeros(400, '0');
    const std::string point = "16777217." + zeros;
    std::array<float, 3> targets{};
    EXPECT_EQ(read_three(point + "-0 " + point + "10-0 " + zeros + "1" + zeros + "-400\n", targets),
              Scan::complete);
    EXPECT_EQ(targets, (std::array{16777216.0f, 16777218.0f, 1.0f}));
}

}  // namespace
}  // namespace dorvek::textio
