#include <gtest/gtest.h>

#include <string>

#include "support/files.hpp"

namespace dorvek::textio {
namespace {

TEST(Output, IsCutAndWrappedNowhere) {
    const std::string text(10000, 'x');
    const std::string shown = support::play("", [&](Terminal& terminal) {
        write_line(terminal.out, {"two ", "texts", 1, -2.0f, 3, "and", text});
        write_text(terminal.out, text + ' ');
    });
    EXPECT_EQ(shown, " two texts  1 -2.00000  3 and" + text + "\n" + text + " \n");
}

}  // namespace
}  // namespace dorvek::textio
