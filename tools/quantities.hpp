// Quantities of a table against one of its columns, as the lines of a picture.
#pragma once

#include <string>
#include <vector>

#include "panels.hpp"

namespace dorvek::tools {

// What is drawn: a panel for each quantity, a line for each combination of some columns.
struct Quantities {
    std::vector<std::string> of;
    std::string against;            // if empty: rmax; of means, the column before `quantity`
    std::vector<std::string> each;  // if empty: file and pdf; of means, all columns before that one
};

// The lines of a table of results, or of means as dorvek-replicas writes them, whose ci95 or U95
// become bars. Numbers that are not finite, or not there, part a line. Across, text is spread
// evenly in the order met. Of rows with a shift other than 0 only those are taken whose shift is
// that of the limit across, or one of the columns of the lines; there, shift 0 is marked as the
// window proposed.
//
// `name` is that of the table, for messages. A column that is missing and a table of differences
// throw WrongCall; a table without rows to draw throws Failure. Of rows that cannot be drawn it
// complains once.
[[nodiscard]] Graph graph_of(const Quantities& wanted, const std::string& content,
                             const std::string& name);

}  // namespace dorvek::tools
