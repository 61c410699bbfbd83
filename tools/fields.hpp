// Lines of other programs' files, as fields that are numbers or are not.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "failure.hpp"
#include "textio/lines.hpp"

namespace dorvek::tools {

// The number that the program reads from `text`, if it is one, before it is rounded to a float.
[[nodiscard]] std::optional<double> number_of(std::string_view text);

// A number, and where its text stands in that of its row. Of what has been computed there is no
// text.
struct Number {
    double value = 0;
    std::uint32_t begin = 0;
    std::uint32_t length = 0;
};

// A file that has been opened and attached, and how its reading went.
struct ForeignFile {
    std::string name;           // for messages
    textio::Input input;        // which leaves tabs as they are: its tab is 0
    std::size_t blocks = 0;     // taken: all that are whole
    std::size_t announced = 0;  // blocks, if the file says how many
    bool cut_short = false;     // one more begins, which the end of the file cuts
    std::string words{};        // the first line of words among rows, or behind the last
    bool unterminated = false;  // the last line has no line feed
};

// A line as fields: apart by blanks, tabs, or a comma with any of these around it. If the line
// holds a semicolon, it is apart by semicolons only; there and between quotes, a comma is a decimal
// comma. Separators at the end of a line separate nothing.
struct Fields {
    std::string_view text;        // the line, or
    std::string respelled;        // the line with points for decimal commas
    std::vector<Number> numbers;  // the fields, which have values once they are known to be numbers
    char separator = ' ';         // semicolon, or comma if there is any, or blank
    bool single_blanks = false;   // and nothing else are between the fields
    bool are_numbers = false;     // as most are spelled: all have values
    bool decimal_commas = false;  // or so it seems: blanks separate as well
};

[[nodiscard]] inline std::string_view field_at(const Fields& row, std::size_t i) {
    return row.text.substr(row.numbers[i].begin, row.numbers[i].length);
}

// Takes the next line, without its end. False at the end of the file. Throws Failure.
[[nodiscard]] bool take_line(ForeignFile& file, std::string_view& line);

// Takes a line apart. `row` is valid as long as the line is.
void take_fields(std::string_view line, Fields& row);

// The first field that is no number, from this one on; as many as there are if all are numbers,
// whose values are then known.
[[nodiscard]] std::size_t first_bad(Fields& row, std::size_t from = 0);

// Something that cannot be read on a line, or on the line taken last.
[[nodiscard]] Failure bad_line(const ForeignFile& file, std::int64_t line, const std::string& what);
[[nodiscard]] Failure bad_line(const ForeignFile& file, const std::string& what);

// Throw Failure if the line taken last is no text, has a field that is no number, or has not that
// many.
void require_text(const ForeignFile& file, std::string_view line);
void require_numbers(const ForeignFile& file, Fields& row);
void require_width(const ForeignFile& file, const Fields& row, std::size_t width);

// A line as a message shows it.
[[nodiscard]] std::string shown(std::int64_t number, std::string_view line);

}  // namespace dorvek::tools
