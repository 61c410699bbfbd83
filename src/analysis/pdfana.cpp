#include "analysis/pdfana.hpp"

#include <cmath>

#include "analysis/errana.hpp"
#include "textio/real.hpp"

namespace dorvek::analysis {
namespace {

constexpr float norm_threshold = 1.0e-35f;
constexpr float below_every_value = -1.0e35f;

// One sample's window: equally long columns of the chosen partial.
struct Peak {
    std::span<const float> r;
    std::span<const float> g;
    std::span<const float> cn;
    float dr;  // bin width
};

void set_coordination(const Peak& peak, WindowStats& s) {
    s.CN = peak.cn.back() - peak.cn.front();
    float shell = 0.0f;  // integral of r^2 g
    for (std::size_t i = 0; i < peak.r.size(); ++i) {
        shell += peak.r[i] * peak.r[i] * peak.dr * peak.g[i];
    }
    const auto term = [&](std::size_t i) { return peak.dr * peak.g[i] * peak.r[i] * peak.r[i]; };
    s.dCN = errana(peak.g, term, shell) * s.CN / shell;
}

// What the mean is made of.
struct Sums {
    float weighted = 0.0f;  // of g r
    float norm = 0.0f;      // of g
};

// Sets Rmod on the way.
Sums sum_up(const Peak& peak, WindowStats& s) {
    Sums sums;
    float largest = below_every_value;
    for (std::size_t i = 0; i < peak.r.size(); ++i) {
        sums.weighted += peak.g[i] * peak.r[i];
        sums.norm += peak.g[i];
        if (peak.g[i] > largest) {
            largest = peak.g[i];
            s.Rmod = peak.r[i];
        }
    }
    return sums;
}

void set_mean(const Peak& peak, const Sums& sums, WindowStats& s) {
    s.Rmea = sums.weighted / sums.norm;
    const auto position = [&](std::size_t i) { return peak.r[i]; };
    s.dRmea = errana(peak.g, position, s.Rmea);
}

void set_variance(const Peak& peak, float norm, WindowStats& s) {
    const auto deviation = [&](std::size_t i) { return peak.r[i] - s.Rmea; };
    float all = 0.0f;
    float left = 0.0f;
    float right = 0.0f;
    for (std::size_t i = 0; i < peak.r.size(); ++i) {
        const float d = deviation(i);
        const float term = d * (d * peak.g[i]);
        all += term;
        if (s.Rmea >= peak.r[i]) left += term;
        if (peak.r[i] >= s.Rmea) right += term;
    }
    s.var = all / norm;
    s.varl = left / norm;
    s.varr = right / norm;
    s.adif = s.varr - s.varl;
    s.arat = s.varr / s.varl;
    s.sdev = std::sqrt(s.var);
    const auto square = [&](std::size_t i) { return deviation(i) * deviation(i); };
    s.dvar = errana(peak.g, square, s.var);
}

void set_higher_moments(const Peak& peak, float norm, WindowStats& s) {
    s.pmo3 = s.skew = s.pmo4 = s.kurt = s.cum4 = s.dpmo3 = s.dpmo4 = 0.0f;
    if (!(s.var > variance_threshold)) return;
    const auto deviation = [&](std::size_t i) { return peak.r[i] - s.Rmea; };
    float sum3 = 0.0f;
    float sum4 = 0.0f;
    for (std::size_t i = 0; i < peak.r.size(); ++i) {
        const float d = deviation(i);
        sum3 += d * (d * (d * peak.g[i]));
        sum4 += d * (d * (d * (d * peak.g[i])));
    }
    s.pmo3 = sum3 / norm;
    s.pmo4 = sum4 / norm;
    s.skew = s.pmo3 / (s.sdev * s.sdev * s.sdev);
    s.kurt = -3.0f + s.pmo4 / (s.sdev * s.sdev * s.sdev * s.sdev);
    s.cum4 = s.pmo4 - 3.0f * s.var * s.var;
    const auto cube = [&](std::size_t i) { return deviation(i) * deviation(i) * deviation(i); };
    const auto fourth = [&](std::size_t i) {
        return deviation(i) * deviation(i) * deviation(i) * deviation(i);
    };
    s.dpmo3 = errana(peak.g, cube, s.pmo3);
    s.dpmo4 = errana(peak.g, fourth, s.pmo4);
}

// The errors that follow from others, and from the number of bins.
void set_derived_errors(const Peak& peak, WindowStats& s) {
    const auto steps = static_cast<float>(peak.r.size() - 1);
    s.dskew = std::sqrt(6.0f / steps);
    s.dkurt = std::sqrt(24.0f / steps);
    s.dcum4 = 6.0f * s.var * s.dvar + s.dpmo4;
}

Norm analyse(const Peak& peak, WindowStats& stats) {
    set_coordination(peak, stats);
    const Sums sums = sum_up(peak, stats);
    if (sums.norm <= norm_threshold) return Norm::zero;
    set_mean(peak, sums, stats);
    set_variance(peak, sums.norm, stats);
    set_higher_moments(peak, sums.norm, stats);
    set_derived_errors(peak, stats);
    return Norm::found;
}

}  // namespace

Norm pdfana(std::span<const input::PdfSet> sets, std::span<const std::int32_t> ipdf,
            std::int32_t ilo, std::int32_t ihi, std::span<WindowStats> stats) {
    if (ihi < ilo) return Norm::zero;
    for (std::size_t sample = 0; sample < sets.size(); ++sample) {
        const input::PdfSet& set = sets[sample];
        if (!holds_partial(set, ipdf[sample])) return Norm::zero;
        const auto p = static_cast<std::size_t>(ipdf[sample] - 1);
        const Peak peak{.r = input::window_of(set.r, ilo, ihi),
                        .g = input::window_of(set.g[p], ilo, ihi),
                        .cn = input::window_of(set.cn[p], ilo, ihi),
                        .dr = set.r[1] - set.r[0]};
        if (analyse(peak, stats[sample]) == Norm::zero) return Norm::zero;
    }
    return Norm::found;
}

}  // namespace dorvek::analysis
