// A PDF file made of the blocks of another program's file.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "foreign.hpp"
#include "grid.hpp"

namespace dorvek::tools {

// What the columns of a block are, and where the running numbers come from.
struct Layout {
    std::vector<std::size_t> use;   // the columns of g, counted from 1; empty for all behind r
    bool running = false;           // each g is followed by its running number
    std::vector<double> densities;  // otherwise, of the atoms that each partial counts,
    std::string counted;            // as this option has it,
    double density = 0;             // or that every partial counts
    Range range;                    // of the r that are written
};

// What there is to say about the files made.
struct Remarks {
    std::size_t bins = 0;      // at most
    std::size_t partials = 0;  // at most
    std::size_t below_zero = 0;
    bool all_count_all = false;  // several partials, and one density
};

// The PDF file whose partials are the columns of g of all these blocks, one set after the other, on
// the grid of the first. `running`, if it is not empty, holds their running numbers, each in the
// place of its g. Throws WrongCall where the layout does not fit, Failure where grids differ, r
// does not ascend in even steps, n falls, or a number is too large.
[[nodiscard]] std::string pdf_text(std::span<const Block> sets, std::span<const Block> running,
                                   const Layout& layout, Remarks& remarks);

}  // namespace dorvek::tools
