#include "analysis/pdfana.hpp"

#include <cmath>

#include "analysis/errana.hpp"
#include "textio/real.hpp"

namespace dorvek::analysis {
namespace {

constexpr float norm_threshold = 1.0e-35f;
constexpr float variance_threshold = 1.0e-6f;  // higher moments of a narrower peak are noise
constexpr float below_every_value = -1.0e35f;

// One sample's window: equally long columns of the chosen partial.
struct Peak {
    std::span<const float> r;
    std::span<const float> g;
    std::span<const float> cn;
    float dr;  // bin width
};

// Fills `work` with value(bin) for each bin of the peak, for errana.
template <typename Value>
std::span<const float> listed(const Peak& peak, std::span<float> work, Value value) {
    const auto list = work.first(peak.r.size());
    for (std::size_t i = 0; i < list.size(); ++i) list[i] = value(i);
    return list;
}

void set_coordination(const Peak& peak, std::span<float> work, WindowStats& s) {
    s.CN = peak.cn.back() - peak.cn.front();
    float shell = 0.0f;  // integral of r^2 g
    for (std::size_t i = 0; i < peak.r.size(); ++i) {
        shell += peak.r[i] * peak.r[i] * peak.dr * peak.g[i];
    }
    const auto terms = listed(
        peak, work, [&](std::size_t i) { return peak.dr * peak.g[i] * peak.r[i] * peak.r[i]; });
    s.dCN = errana(peak.g, terms, shell) * s.CN / shell;
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

void set_variance(const Peak& peak, float norm, std::span<float> work, WindowStats& s) {
    float all = 0.0f;
    float left = 0.0f;
    float right = 0.0f;
    for (std::size_t i = 0; i < peak.r.size(); ++i) {
        const float d = peak.r[i] - s.Rmea;
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
    const auto squares = listed(peak, work, [&](std::size_t i) {
        const float d = peak.r[i] - s.Rmea;
        return d * d;
    });
    s.dvar = errana(peak.g, squares, s.var);
}

void set_higher_moments(const Peak& peak, float norm, std::span<float> work, WindowStats& s) {
    s.pmo3 = s.skew = s.pmo4 = s.kurt = s.cum4 = s.dpmo3 = s.dpmo4 = 0.0f;
    if (!(s.var > variance_threshold)) return;
    float sum3 = 0.0f;
    float sum4 = 0.0f;
    for (std::size_t i = 0; i < peak.r.size(); ++i) {
        const float d = peak.r[i] - s.Rmea;
        sum3 += d * (d * (d * peak.g[i]));
        sum4 += d * (d * (d * (d * peak.g[i])));
    }
    s.pmo3 = sum3 / norm;
    s.pmo4 = sum4 / norm;
    s.skew = s.pmo3 / (s.sdev * s.sdev * s.sdev);
    s.kurt = -3.0f + s.pmo4 / (s.sdev * s.sdev * s.sdev * s.sdev);
    s.cum4 = s.pmo4 - 3.0f * s.var * s.var;
    const auto cubes = listed(peak, work, [&](std::size_t i) {
        const float d = peak.r[i] - s.Rmea;
        return d * d * d;
    });
    s.dpmo3 = errana(peak.g, cubes, s.pmo3);
    const auto fourths = listed(peak, work, [&](std::size_t i) {
        const float d = peak.r[i] - s.Rmea;
        return d * d * d * d;
    });
    s.dpmo4 = errana(peak.g, fourths, s.pmo4);
}

Norm analyse(const Peak& peak, std::span<float> work, WindowStats& stats) {
    set_coordination(peak, work, stats);
    const auto [weighted, norm] = sum_up(peak, stats);
    if (norm <= norm_threshold) return Norm::zero;
    stats.Rmea = weighted / norm;
    stats.dRmea = errana(peak.g, peak.r, stats.Rmea);
    set_variance(peak, norm, work, stats);
    set_higher_moments(peak, norm, work, stats);
    return Norm::found;
}

}  // namespace

Norm pdfana(std::span<const input::PdfSet> sets, std::span<const std::int32_t> ipdf,
            std::int32_t ilo, std::int32_t ihi, std::span<WindowStats> stats, input::Column& work,
            textio::Output& terminal) {
    for (std::size_t sample = 0; sample < sets.size(); ++sample) {
        const input::PdfSet& set = sets[sample];
        Norm norm = Norm::zero;
        if (ipdf[sample] >= 1 && ipdf[sample] <= input::maxpdf) {
            const auto p = static_cast<std::size_t>(ipdf[sample] - 1);
            const Peak peak{.r = input::window_of(set.r, ilo, ihi),
                            .g = input::window_of(set.g[p], ilo, ihi),
                            .cn = input::window_of(set.cn[p], ilo, ihi),
                            .dr = set.r[1] - set.r[0]};
            norm = analyse(peak, work, stats[sample]);
        }
        if (norm == Norm::zero) {
            write_line(terminal, {"zero norm, no atoms found"});
            return Norm::zero;
        }
    }
    return Norm::found;
}

}  // namespace dorvek::analysis
