// Tables and files of other programs: the bytes are read as a table, whose rows are written and
// read again, and by each reader of dorvek-convert.

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "csv.hpp"
#include "foreign.hpp"
#include "harness.hpp"
#include "support/files.hpp"
#include "text.hpp"

namespace {

using dorvek::fuzz::claim;
using namespace dorvek::tools;

// The headings and the rows, up to the first that cannot be read.
std::vector<Row> rows_of_table(std::string_view text) {
    std::vector<Row> rows;
    try {
        TableReader table(std::string(text), "table");
        rows.push_back(table.headings());
        for (Row row; table.next(row); rows.push_back(row)) {
            claim(row.size() >= table.headings().size(), "a row has a cell for each heading");
        }
    } catch (const std::runtime_error&) {
        // WrongCall of the headings, Failure of a row
    }
    return rows;
}

void check_numbers(const std::string& cell) {
    const auto whole = whole_of(cell);
    const auto real = real_of(cell);
    claim(!whole || (real && *real == static_cast<float>(*whole)), "a whole number is a real");
    claim(!real || !std::isfinite(*real) || real_of(shortest(*real)) == real,
          "shortest reads the same");
}

// What is written is read as the same cells, but for bytes that are not UTF-8.
void check_rows(const std::vector<Row>& rows) {
    std::size_t width = 0;
    for (const Row& row : rows) width = std::max(width, row.size());
    Row headings{"row"};
    while (headings.size() <= width) headings.push_back(std::to_string(headings.size()));
    std::string written;
    append_row(written, headings);
    std::vector<Row> expected{headings};
    for (const Row& row : rows) {
        expected.emplace_back(1, "row");
        for (const std::string& cell : row) {
            check_numbers(cell);
            expected.back().push_back(valid_utf8(cell));
        }
        append_row(written, expected.back());
        expected.back().resize(headings.size());
    }
    claim(rows_of_table(written) == expected, "a table is read as it was written");
}

void check_reader(void (*read)(ForeignFile&, const TakeBlock&), std::string_view text) {
    ForeignFile file{.name = "file", .input = {}};
    attach(file.input, dorvek::support::file_holding(text));
    std::size_t taken = 0;
    try {
        read(file, [&](Block& block) {
            ++taken;
            claim(block.width > 0 && block.numbers.size() == rows_of(block) * block.width,
                  "rows are of equal width");
            for (std::size_t i = 0; i < block.numbers.size(); ++i) {
                claim(number_of(text_at(block, i / block.width, i % block.width)) ==
                          block.numbers[i].value,
                      "a number is what its text says");
            }
        });
        claim(taken > 0 && taken == file.blocks, "whole blocks are taken, and counted");
    } catch (const Failure&) {
        // says what is wrong, and where
    }
    ::close(file.input.fd);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text{reinterpret_cast<const char*>(data), size};
    check_rows(rows_of_table(text));
    for (const auto read : {read_lammps, read_columns, read_dlpoly}) check_reader(read, text);
    return 0;
}
