// Tables as RFC 4180 has them, read and written: rows of cells, the first with the headings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "failure.hpp"

namespace dorvek::tools {

using Row = std::vector<std::string>;

// A table being read, row after row. Comma separates, or tab if the line of headings holds one.
// CRLF, a byte-order mark, a last line without a line feed and blank lines do no harm.
class TableReader {
   public:
    // Reads the headings in the content of the file `name`; standard input is called "-". None, two
    // that are alike, a zero byte, and semicolons in the place of commas throw WrongCall.
    TableReader(std::string content, const std::string& name);

    // Some may be empty.
    [[nodiscard]] const Row& headings() const { return headings_; }

    // The number of the column with this heading, counted from 0, if there is one.
    [[nodiscard]] std::optional<std::size_t> column(std::string_view heading) const;

    // The same of one that has to be there; else WrongCall.
    [[nodiscard]] std::size_t needed(std::string_view heading) const;

    // Takes the next row; false if there is none. It has at least as many cells as there are
    // headings, empty ones where the line ends early. Throws Failure, with the number of the row,
    // if a quote is never closed, or is closed before its cell ends.
    bool next(Row& row);

   private:
    [[nodiscard]] Failure bad_row(const char* what) const;
    std::string take_cell();
    bool take_row(Row& row);

    std::string name_;
    std::string content_;
    std::size_t taken_ = 0;  // bytes of the content
    std::size_t rows_ = 0;   // taken, without that of the headings
    char separator_ = ',';
    Row headings_;
};

// The cell as a number that the program would take as an answer; nothing if it is not one. Blanks
// around it do no harm, and a whole number may have a decimal point: 3.0 is 3.
[[nodiscard]] std::optional<float> real_of(std::string_view cell);
[[nodiscard]] std::optional<std::int32_t> whole_of(std::string_view cell);

// Is the cell a whole number that whole_of does not take, for an std::int32_t does not hold it?
[[nodiscard]] bool is_too_large(std::string_view cell);

// The shortest text that the program reads as this number.
[[nodiscard]] std::string shortest(float number);

// Adds one row to `table`, quoted where needed, as valid UTF-8 whatever the cells hold. Between
// tabs, tabs and line feeds of a cell become blanks, and quotes are needed only where it begins
// with one, which would not be read as it is.
void append_row(std::string& table, const Row& row, char separator = ',');

}  // namespace dorvek::tools
