// Pictures of quantities of a table against one of its columns: a scan, a series with error bars.
#pragma once

#include <string>
#include <vector>

#include "layout.hpp"

namespace dorvek::tools {

// What is drawn: a panel for each quantity, a line for each combination of some columns.
struct Quantities {
    std::vector<std::string> of;
    std::string against;            // if empty: rmax; of means, the column before `quantity`
    std::vector<std::string> each;  // if empty: file and pdf; of means, all columns before that one
};

// The picture of a table of results, or of means as dorvek-replicas writes them, whose ci95 or U95
// become bars. Numbers that are not finite, or not there, are not drawn. Across, text is spread
// evenly in the order met. Of rows with a shift other than 0 only those are drawn whose shift is
// that of the limit across, or one of the columns of the lines; there, shift 0 is marked as the
// window proposed.
//
// `name` is that of the table, for messages. A column that is missing and a table of differences
// throw WrongCall; nothing to draw throws Failure. What single rows and panels lack is told.
[[nodiscard]] Page page_of(const Quantities& quantities, const Look& look,
                           const std::string& content, const std::string& name);

}  // namespace dorvek::tools
