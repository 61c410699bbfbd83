#include "textio/format.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/table.hpp"

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
    support::for_each_row("textio/format.txt", [](std::istringstream& row) {
        std::string value;
        row >> value;
        NumberText text{};
        EXPECT_EQ(format_real(std::strtof(value.c_str(), nullptr), text), support::quoted(row));
    });
}

}  // namespace
}  // namespace dorvek::textio
