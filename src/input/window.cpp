#include "input/window.hpp"

#include "textio/real.hpp"

namespace dorvek::input {

std::int32_t locate(std::span<const float> xx, float x) {
    const auto n = static_cast<std::int32_t>(xx.size());
    std::int32_t jl = 0;
    std::int32_t ju = n + 1;
    while (ju - jl > 1) {
        const std::int32_t jm = (ju + jl) / 2;
        if ((x > xx[static_cast<std::size_t>(jm - 1)]) == (xx.back() > xx.front())) {
            jl = jm;
        } else {
            ju = jm;
        }
    }
    return jl;
}

bool locate_window(std::span<const float> grid, Window& window) {
    window.ilo = locate(grid, window.rmin);
    window.ihi = locate(grid, window.rmax);
    if (window.ilo == 0) window.ilo = 1;

    const auto snap = [grid](std::int32_t bin, float& limit) {
        const bool on_grid = bin >= 1 && bin <= static_cast<std::int32_t>(grid.size());
        if (on_grid) limit = grid[static_cast<std::size_t>(bin - 1)];
        return on_grid;
    };
    const bool rmin_on_grid = snap(window.ilo, window.rmin);
    const bool rmax_on_grid = snap(window.ihi, window.rmax);
    return rmin_on_grid && rmax_on_grid && window.ihi != window.ilo &&
           !(window.rmax <= window.rmin);
}

}  // namespace dorvek::input
