#include "doubts.hpp"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string_view>

#include "analysis/pdfana.hpp"
#include "grid.hpp"

namespace dorvek::tools {

void add_grid_doubts(std::span<const float> r, std::vector<std::string>& said) {
    const bool ascends = std::ranges::adjacent_find(r, std::not_fn(std::less())) == r.end();
    if (!ascends) said.emplace_back("r does not ascend");
    const auto at = [&](std::size_t i) { return static_cast<double>(r[i]); };
    if (out_of_step(r.size(), at) < r.size()) said.emplace_back("r is not evenly spaced");
}

void add_doubts(std::span<const input::PdfSet> sets, std::span<const std::int32_t> ipdf,
                const driver::Analysis& analysis, std::vector<std::string>& said) {
    for (std::size_t i = 0; i < analysis.messages.count; ++i) {
        const std::string_view text = analysis.messages.text[i];
        said.push_back(text == " " ? "pause without a message" : "pause: " + std::string(text));
    }
    for (std::size_t s = 0; s < sets.size(); ++s) {
        const std::string of = s == 0 ? "" : "sample 2: ";
        const auto& [rmin, rmax, ilo, ihi] = analysis.window;
        const auto g = input::window_of(sets[s].g[static_cast<std::size_t>(ipdf[s] - 1)], ilo, ihi);
        const auto below = std::ranges::count_if(g, [](float value) { return value < 0; });
        if (below > 0) {
            said.push_back(of + "g below zero in " + std::to_string(below) +
                           (below == 1 ? " bin" : " bins") + " of the window");
        }
        const float var = analysis.stats[s].var;
        if (!(var > dorvek::analysis::variance_threshold)) {
            said.push_back(of + std::string(too_narrow) +
                           ": skew, kurt, pmo3, pmo4 and cum4 are 0" +
                           (var > 0 ? " (is the unit of r too large?)" : ""));
        }
    }
    if (sets.size() == 2 && analysis.comparison.distribution.doff <= 0.0f) {
        said.emplace_back("the chi-square test has no degrees of freedom");
    }
}

}  // namespace dorvek::tools
