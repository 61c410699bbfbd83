// Tables as RFC 4180 has them, read and written: rows of cells, the first with the headings.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorvek::tools {

using Row = std::vector<std::string>;

// A table being read, row after row. Comma separates, or tab if the line of headings holds one.
// CRLF, a byte-order mark, a last line without a line feed and blank lines do no harm. A quote that
// is never closed and a file that cannot be read throw Failure.
class TableReader {
   public:
    // Reads the headings. `name` is that of a file; standard input is called "-".
    explicit TableReader(const std::string& name);
    // Of an opened file, which is closed at the end; nullptr stands for one that cannot be opened.
    TableReader(std::FILE* file, std::string name);
    TableReader(const TableReader&) = delete;
    TableReader& operator=(const TableReader&) = delete;
    ~TableReader();

    [[nodiscard]] const Row& headings() const { return headings_; }

    // The number of the column with this heading, counted from 0, if there is one.
    [[nodiscard]] std::optional<std::size_t> column(std::string_view heading) const;

    // Takes the next row; false if there is none. It has at least as many cells as there are
    // headings, empty ones where the line ends early.
    bool next(Row& row);

   private:
    int take();
    int take_quoted(std::string& cell);
    bool take_row(Row& row);

    std::string name_;
    std::FILE* file_;
    std::string ahead_;  // bytes that have been read to find the separator
    std::size_t taken_ = 0;
    char separator_ = ',';
    Row headings_;
};

// The cell as a number that the program would take as an answer; nothing if it is not one. A whole
// number may have a decimal point: 3.0 is 3.
[[nodiscard]] std::optional<float> real_of(std::string_view cell);
[[nodiscard]] std::optional<std::int32_t> whole_of(std::string_view cell);

// The shortest text that the program reads as this number.
[[nodiscard]] std::string shortest(float number);

// Adds one row to `table`, quoted where needed, as valid UTF-8 whatever the cells hold. Between
// tabs a cell cannot hold one; there, tabs and line feeds become blanks.
void append_row(std::string& table, const Row& row, char separator = ',');

}  // namespace dorvek::tools
