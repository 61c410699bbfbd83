#include "driver/analyse_window.hpp"

#include "analysis/pdfana.hpp"
#include "input/conbin.hpp"

namespace dorvek::driver {

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
        const auto& [first, second] = analysis.stats;
        analysis.comparison =
            stats::statana(ilo, ihi, ipdf.first<2>(), constraints, {first.Rmea, second.Rmea},
                           {first.var, second.var}, sets.first<2>(), analysis.messages);
    }
    return Found::peak;
}

}  // namespace dorvek::driver
