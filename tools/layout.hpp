// What all pictures have in common: how they look, and the key above them.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

#include "gnuplot.hpp"
#include "grid.hpp"

namespace dorvek::tools {

// What the user asks of a picture, whatever it shows.
struct Look {
    Kind kind = Kind::text;
    Range range;       // of the axis across
    bool log = false;  // of g
    std::string unit;  // of r, for its label; empty: none
};

// A picture as gnuplot is to draw it, points or, of a text, lines high. A text has its key above
// it.
struct Page {
    double height = 0;
    std::string script;
    std::string key;
};

// What stands before a text of the key. A mean has a bar, a dot has none.
enum class Mark { none, line, mean, mode, dot, window };

struct Entry {
    Mark mark = Mark::none;
    std::size_t style = 1;    // of the line
    std::string name{};       // shortened if there is no room
    std::string text{};       // behind the name, never shortened
    bool begins_row = false;  // if there is room
    std::size_t column = 0;   // within its row, as key_of sets it
};

// The key, row after row. It takes at most a fifth of the height of the picture.
struct Key {
    double letters = 1;  // points
    double row_height = 1;
    double column_width = 1;
    std::vector<std::vector<Entry>> rows = {};
};

// Lays out the entries, whose texts are printable, above a picture of this height. The letters are
// of 8 points or, if there is no room, of 6; then names are shortened, but not until two are alike;
// at last, entries are left out, and the last one says how many.
[[nodiscard]] Key key_of(std::vector<Entry> entries, Kind kind, double height);

// The key as lines of text.
[[nodiscard]] std::string text_of(const Key& key);

// Adds the commands that draw the key on a figure of this height. Returns the height that it takes,
// with a margin above and below.
double write_key(std::ostream& script, const Key& key, double height);

// The number with four significant digits.
[[nodiscard]] std::string in_four_digits(double value);

// The label of an axis that shows this length.
[[nodiscard]] std::string in_unit(const std::string& what, const Look& look);

}  // namespace dorvek::tools
