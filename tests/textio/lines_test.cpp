#include "textio/lines.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

#include "support/files.hpp"

namespace dorvek::textio {
namespace {

// All lines of a file, each without its line feed, and how the last read ended.
std::vector<std::string> lines_of(std::string_view content, Status& end, std::size_t limit = 0) {
    Input input;
    input.limit = limit;
    attach(input, support::file_holding(content));
    std::vector<std::string> lines;
    std::string_view line;
    while ((end = take_line(input, line)) == Status::ok) {
        EXPECT_TRUE(line.ends_with('\n'));
        lines.emplace_back(line.substr(0, line.size() - 1));
    }
    EXPECT_EQ(input.line_number, static_cast<std::int64_t>(lines.size()));
    ::close(input.fd);
    return lines;
}

TEST(TakeLine, LeavesPlainTextAndNoControls) {
    using Lines = std::vector<std::string>;
    static const struct {
        std::string_view content;
        Lines lines;
    } cases[] = {
        {"", {}},
        {"\n\n", {"", ""}},
        {"one\ntwo\n", {"one", "two"}},
        {"one\nnot a line", {"one"}},
        {"one\r\n\rt\rwo\r\n", {"one", "two"}},
        {"\tb\nab\tc\n12345678\td\n", {"        b", "ab      c", "12345678        d"}},
        {"a\r\tb\n", {"a       b"}},
        {std::string_view("a\0b\n", 4), {std::string("a\0b", 3)}},
    };
    for (const auto& [content, lines] : cases) {
        Status end{};
        EXPECT_EQ(lines_of(content, end), lines) << content;
        EXPECT_EQ(end, Status::end_of_input);
    }
}

TEST(TakeLine, ExpandsTabsByTabsize) {
    const std::string wide = "a" + std::string(255, ' ') + "b";
    const struct {
        const char* size;
        std::string expected;
    } cases[] = {
        {"4", "a   b"},
        {"1", "a b"},
        {"8", "a       b"},
        {"0", "a       b"},
        {"-4", "a       b"},
        {"4x", "a       b"},
        {"", "a       b"},
        {"10", "a         b"},
        {"99999999999999999999", wide},  // up to the longest field
    };
    for (const auto& [size, expected] : cases) {
        ::setenv("TABSIZE", size, 1);
        Status end{};
        EXPECT_EQ(lines_of("a\tb\n", end).at(0), expected) << size;
    }
    ::unsetenv("TABSIZE");
}

TEST(TakeLine, GrowsToAnyLength) {
    // Lengths around the first block and its multiples, with short lines before and between.
    std::string content = "first\n";
    std::vector<std::string> lines{"first"};
    for (const std::size_t length : {16378U, 16383U, 16384U, 16385U, 1U, 100000U, 2U}) {
        lines.emplace_back(length, static_cast<char>('a' + length % 26));
        content += lines.back() + "\n";
    }
    Status end{};
    EXPECT_EQ(lines_of(content, end), lines);
}

TEST(TakeLine, TakesNoLineBeyondALimit) {
    // The last lines are too long: with their line feed, and as far as they have been read.
    for (const std::string content : {"\n12345\n123456\n", "\n12345\n123456"}) {
        Status end{};
        EXPECT_EQ(lines_of(content, end, 5), (std::vector<std::string>{"", "12345"})) << content;
        EXPECT_EQ(end, Status::line_too_long);
    }
}

TEST(TakeLastLine, TakesWhatNoLineFeedEnds) {
    Input input;
    attach(input, support::file_holding("one\ntwo\tends"));
    std::string_view line;
    while (take_line(input, line) == Status::ok) {
    }
    EXPECT_EQ(take_last_line(input, line), Status::ok);
    EXPECT_EQ(line, "two     ends");
    EXPECT_EQ(input.line_number, 2);
    EXPECT_EQ(take_last_line(input, line), Status::end_of_input);
    ::close(input.fd);
}

TEST(ReadValues, SeesNothingOfALongerLineBefore) {
    Input input;
    attach(input, support::file_holding("1 234\r\n1E\r\n"));
    std::array<float, 2> values{};
    EXPECT_EQ(read_values(input, values), Status::ok);
    EXPECT_EQ(read_values(input, std::span(values).first(1)), Status::illegal_character);
    ::close(input.fd);
}

TEST(TakeLine, SaysWhyItCannotRead) {
    Input input;
    EXPECT_EQ(open_file(input, std::string(5000, 'x'), O_RDONLY), Status::cannot_open);
    EXPECT_EQ(input.error, ENAMETOOLONG);
    attach(input, ::memfd_create("test", 0));
    ::close(input.fd);
    std::string_view line;
    EXPECT_EQ(take_line(input, line), Status::cannot_read);
    EXPECT_EQ(input.error, EBADF);
}

}  // namespace
}  // namespace dorvek::textio
