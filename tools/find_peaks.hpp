// Where the peaks of a partial PDF are, and the windows that they are best analysed in.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "grid.hpp"
#include "input/window.hpp"

namespace dorvek::tools {

// What is taken for a peak.
struct PeakSearch {
    Range range;
    double prominence = 0.3;  // the least, in the unit of g
    double smooth = 0.02;  // standard deviation of the filter, in parts of the r of the largest g
};

// The windows around the peaks of `g` over the ascending grid `r`, of equal lengths, in the order
// of r. Each has its bins in ilo and ihi, and rmin and rmax as set_limits has them. None if
// r does not ascend.
//
// Up to the first zero of g nothing is looked at if the first bin is not zero: pairs of an atom
// with itself. A peak is a local maximum of a copy of g, smoothed by a Gaussian filter that is cut
// at four standard deviations and takes the end bins to go on for ever; of a flat top, its middle.
// The prominence is the height above the higher of the two lowest places that part it from anything
// higher or from the ends of the range. A window reaches on either side to the nearest bin where g
// itself is zero or, if there is none before the next peak or the end of the range, to the lowest
// bin of the copy, of equally low ones the nearest.
[[nodiscard]] std::vector<input::Window> find_peaks(std::span<const float> r,
                                                    std::span<const float> g,
                                                    const PeakSearch& search);

// Sets rmin and rmax so that locate_window finds the bins ilo and ihi in the ascending grid `r`.
// They lie midway between two grid points, but for a hundredth of their distance if that saves
// digits; behind the last, half a mean step from it.
void set_limits(std::span<const float> r, input::Window& window);

// The highest bin of a window, the first of equals, and what there is to warn of.
struct Highest {
    float mode = 0;    // its r
    float height = 0;  // its g
    std::string note{};
};
[[nodiscard]] Highest highest_of(std::span<const float> r, std::span<const float> g,
                                 const input::Window& window);

}  // namespace dorvek::tools
