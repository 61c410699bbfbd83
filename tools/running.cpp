#include "running.hpp"

#include <cstddef>
#include <numbers>

namespace dorvek::tools {

std::vector<double> running_numbers(std::span<const double> r, std::span<const double> g,
                                    double rho, std::span<const double> grid) {
    const double span = grid.back() - grid.front();
    const double factor =
        rho * (4 * std::numbers::pi * span / static_cast<double>(grid.size() - 1));
    std::vector<double> n(r.size());
    double sum = 0;
    for (std::size_t i = 0; i < n.size(); ++i) {
        sum += g[i] * r[i] * r[i];
        n[i] = factor * sum;
    }
    return n;
}

}  // namespace dorvek::tools
