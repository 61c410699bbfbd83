// Lines of points in panels, one above another over a common axis: the picture of a scan, or of a
// series with error bars.
#pragma once

#include <limits>
#include <string>
#include <vector>

#include "layout.hpp"

namespace dorvek::tools {

struct Point {
    double x = 0;
    double y = 0;                                           // NaN parts the line
    double bar = std::numeric_limits<double>::quiet_NaN();  // half its length; NaN: none
    bool is_proposed = false;                               // of a scan: the window that was
};

// What is drawn; points ascend in x.
struct Graph {
    std::string name;                                       // of the table, for messages
    std::vector<std::string> of;                            // quantities, a panel each
    std::vector<std::string> lines;                         // their names for the key
    std::vector<std::vector<std::vector<Point>>> points{};  // of each line and quantity
    std::vector<std::string> texts{};  // at x = 0, 1, ..., if these are no numbers
    std::string across{};              // the heading of x
    std::string bars{};                // that of their lengths, if there are bars
    bool is_scan = false;              // dots at the window proposed alone, not at each point
};

// The picture. Complains of a quantity without numbers; throws Failure if there is no other.
[[nodiscard]] Page page_of(const Graph& graph, const Look& look);

}  // namespace dorvek::tools
