#include "driver/analyse_window.hpp"

#include "analysis/pdfana.hpp"
#include "input/conbin.hpp"

namespace dorvek::driver {

std::string_view message_of(Found found) {
    constexpr std::array<std::string_view, 3> messages{
        "", "no data in this window", "zero norm, no atoms found"};  // in the order of Found
    return messages[static_cast<std::size_t>(found)];
}

std::string_view reconcile(const input::PdfSet& first, input::PdfSet& second) {
    if (same_grid(first, second)) return {};
    conbin(first, second);
    return "inconsistent bining: adjusted by linear interpolation";
}

Found analyse_window(std::span<const input::PdfSet> sets, std::span<const std::int32_t> ipdf,
                     std::int64_t constraints, Analysis& analysis) {
    analysis.messages.count = 0;
    const std::int32_t nbins = common_bins(sets);
    const auto grid = sets.empty() ? std::span<const float>{} : input::first_bins(sets[0].r, nbins);
    if (!locate_window(grid, analysis.window)) return Found::no_data;

    const auto& [rmin, rmax, ilo, ihi] = analysis.window;
    if (analysis::pdfana(sets, ipdf, ilo, ihi, analysis.stats) == analysis::Norm::zero) {
        return Found::zero_norm;
    }
    if (sets.size() == 2) {
        const auto chosen = [&](std::size_t s) {
            const auto p = static_cast<std::size_t>(ipdf[s] - 1);
            return input::window_of(sets[s].g[p], analysis.window.ilo, analysis.window.ihi);
        };
        const auto& [first, second] = analysis.stats;
        analysis.comparison =
            stats::statana(chosen(0), chosen(1), constraints, {first.Rmea, second.Rmea},
                           {first.var, second.var}, analysis.messages);
    }
    return Found::peak;
}

}  // namespace dorvek::driver
