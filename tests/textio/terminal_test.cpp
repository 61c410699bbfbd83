#include "textio/terminal.hpp"

#include <gtest/gtest.h>

#include <string>

#include "support/typed.hpp"
#include "textio/runtime_error.hpp"

namespace dorvek::textio {
namespace {

using support::play;

TEST(WriteLine, SetsItemsApartByTheirKinds) {
    const std::string shown = play("", [](Terminal& terminal) {
        write_line(terminal.out, {" "});
        write_line(terminal.out, {"rmin= ", 2.5f});
        write_line(terminal.out, {"sample name (", 1, ") : "});
        write_line(terminal.out, {"CN=   ", 12.0f});
        write_line(terminal.out, {"stud= ", -3.370999f, " sgfc= ", 0.0009017827f});
        write_line(terminal.out, {"two ", "texts", 1, 2});
        write_text(terminal.out, "exactly ");
    });
    EXPECT_EQ(shown,
              "  \n"
              " rmin=   2.50000\n"
              " sample name (  1 ) : \n"
              " CN=     12.0000\n"
              " stud=  -3.37100  sgfc=   9.017827E-04\n"
              " two texts  1  2\n"
              "exactly \n");
}

TEST(WriteLine, CutsAndWrapsNothing) {
    const std::string text(10000, 'x');
    EXPECT_EQ(play("", [&](Terminal& terminal) { write_text(terminal.out, text); }), text + "\n");
}

TEST(Read, TakesEachAnswerFromANewLine) {
    play("2 3\nname \n1.5,\n2.5\n,7\n\n  8 / 9\n", [](Terminal& terminal) {
        std::int32_t count = 0;
        read_integer(terminal, count);
        EXPECT_EQ(count, 2);
        std::array<char, 6> name{};
        read_text(terminal, name);
        EXPECT_EQ(std::string(name.data(), name.size()), "name  ");
        std::array<float, 2> limits{};
        read_reals(terminal, limits);
        EXPECT_EQ(limits, (std::array{1.5f, 2.5f}));
        read_reals(terminal, limits);
        EXPECT_EQ(limits, (std::array{1.5f, 7.0f}));
        read_reals(terminal, limits);
        EXPECT_EQ(limits, (std::array{8.0f, 7.0f}));
    });
}

TEST(ReadText, FillsTheFieldWithOneLine) {
    const std::pair<const char*, std::string> cases[] = {
        {"\n", "    "}, {" ab\n", " ab "}, {"abcdef\n", "abcd"}, {"a\tb\n", "a   "}};
    for (const auto& [typed, expected] : cases) {
        std::array<char, 4> field{};
        play(typed, [&](Terminal& terminal) { read_text(terminal, field); });
        EXPECT_EQ(std::string(field.data(), field.size()), expected);
    }
}

TEST(Pause, ShowsTheMessageAndEatsOneLine) {
    const std::string shown = play("anything 1\n5\n", [](Terminal& terminal) {
        pause(terminal, "take a break");
        std::int32_t next = 0;
        read_integer(terminal, next);
        EXPECT_EQ(next, 5);
    });
    EXPECT_EQ(shown, " take a break\n");
}

TEST(RuntimeErrorDeathTest, EndsTheRunWith255) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Output terminal;
    const auto exits = ::testing::ExitedWithCode(255);
    EXPECT_EXIT(runtime_error(terminal, {.statement = "read", .unit = "*"}, "Why"), exits,
                "^\\? [^\n]*\n\\? Why\n\\? read, unit \\*\n$");
    EXPECT_EXIT(
        runtime_error(terminal,
                      {.statement = "read", .unit = "15", .file = "a b", .line = 12345678901},
                      "Cannot", ENOSPC),
        exits,
        "\n\\? Cannot: No space left on device\n"
        "\\? read, unit 15, file \"a b\", line 12345678901\n$");
    std::int32_t value = 0;
    EXPECT_EXIT(play("2.0\n", [&](Terminal& t) { read_integer(t, value); }), exits,
                "\\? Illegal character in numeric input\n\\? read, unit \\*");
    EXPECT_EXIT(play("2", [&](Terminal& t) { read_integer(t, value); }), exits,
                "\\? Attempt to read past end of file\n\\? read, unit \\*");
    EXPECT_EXIT(play("", [&](Terminal& t) { pause(t, " "); }), exits,
                "\\? Attempt to read past end of file\n\\? pause, unit \\*");
}

}  // namespace
}  // namespace dorvek::textio
