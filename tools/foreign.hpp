// Files of other programs, read as blocks of numbers: time steps or partials, one behind the other.
// A file streams: in memory are the block that is being read and what its taker keeps.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "fields.hpp"

namespace dorvek::tools {

// Rows of equal width: r, then the other columns.
struct Block {
    std::size_t width = 0;
    std::vector<Number> numbers;     // row by row
    std::string text;                // of all rows, as they were read but for decimal commas
    std::vector<std::size_t> begin;  // of each row in the text
    bool single_blanks = true;       // between the numbers of all rows
    std::string heading;             // of `columns` the line before it, of `dlpoly` the pair
};

[[nodiscard]] inline std::size_t rows_of(const Block& block) {
    return block.begin.size();
}
[[nodiscard]] inline const Number& at(const Block& block, std::size_t row, std::size_t column) {
    return block.numbers[row * block.width + column];
}
// What is only passed on keeps its digits.
[[nodiscard]] inline std::string_view text_at(const Block& block, std::size_t row,
                                              std::size_t column) {
    const Number& number = at(block, row, column);
    return std::string_view(block.text).substr(block.begin[row] + number.begin, number.length);
}

// Takes a block. Whoever keeps it leaves another in its place, whose memory is used again.
using TakeBlock = std::function<void(Block&)>;

// Each reader calls take(block) for each whole block of the file, and throws Failure, with the
// line, where something cannot be read with certainty; also if there is no whole block.

// What LAMMPS leaves through `fix ave/time` in mode vector: lines that begin with #, a line with
// the step and its number of rows, then the rows, each behind its own number. Or the same as YAML.
void read_lammps(ForeignFile& file, const TakeBlock& take);

// Columns of numbers, between lines that do not begin with one. A new block begins where r falls
// back. Cut short is a last block of fewer rows than the one before it, or one that ends within a
// line: with a number or the line feed missing. The line feed alone may be missing where there is
// no other block.
void read_columns(ForeignFile& file, const TakeBlock& take);

// RDFDAT of DL_POLY: a title, the numbers of pairs and of bins, then for each pair a line with its
// two kinds, and its bins.
void read_dlpoly(ForeignFile& file, const TakeBlock& take);

}  // namespace dorvek::tools
