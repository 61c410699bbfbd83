#include "textio/format.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace dorvek::textio {
namespace {

TEST(FormatInteger, HasASignField) {
    constexpr struct {
        std::int32_t value;
        std::string_view text;
    } cases[] = {
        {0, "  0"}, {2147483647, "  2147483647"}, {-1, " -1"}, {-2147483647 - 1, " -2147483648"}};
    NumberText text{};
    for (const auto& [value, expected] : cases) EXPECT_EQ(format_integer(value, text), expected);
}

TEST(FormatReal, WritesTheTable) {
    std::ifstream table(SOURCE_DIR "/tests/textio/format.txt");
    int rows = 0;
    for (std::string line; std::getline(table, line);) {
        const std::size_t quote = line.find('"');
        if (quote == std::string::npos) continue;
        NumberText text{};
        const float value = std::strtof(line.c_str(), nullptr);
        EXPECT_EQ('"' + std::string(format_real(value, text)) + '"', line.substr(quote)) << line;
        ++rows;
    }
    EXPECT_EQ(rows, 39);
}

}  // namespace
}  // namespace dorvek::textio
