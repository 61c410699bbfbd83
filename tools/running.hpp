// Running coordination numbers from g.
#pragma once

#include <span>
#include <vector>

namespace dorvek::tools {

// n = 4 pi rho sum(g r^2 dr) for each bin of the spans `r` and `g`, of equal lengths: the atoms up
// to the end of the bin, rho being the number density of the atoms counted, in the unit of r. dr is
// the mean step of `grid`, two bins or more: over the whole of an even grid, so that rounded r do
// not make the steps differ. In double precision; whoever writes n rounds it to a float once.
[[nodiscard]] std::vector<double> running_numbers(std::span<const double> r,
                                                  std::span<const double> g, double rho,
                                                  std::span<const double> grid);

}  // namespace dorvek::tools
