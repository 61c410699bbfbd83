#include "curves.hpp"

#include <algorithm>
#include <limits>
#include <memory>
#include <set>
#include <sstream>
#include <utility>

#include "csv.hpp"
#include "data_file.hpp"
#include "find_peaks.hpp"
#include "program.hpp"
#include "results.hpp"
#include "text.hpp"
#include "weight.hpp"

namespace dorvek::tools {
namespace {

struct Curve {
    std::vector<float> r;
    std::vector<float> g;
};

// What of the curves is shown.
struct View {
    double left = 0;
    double right = 0;
    double bottom = 0;
    double top = 0;  // of the curves; there is room above
    bool log = false;
};

Curve load_curve(const SampleCurve& sample) {
    static const auto set = std::make_unique<input::PdfSet>();
    static std::set<std::string> told;
    const std::string name = sample.file.string();
    for (const std::string& what : load_pdf(name, sample.partials, *set)) {
        const auto [text, is_new] = told.insert((name + ": ").append(what));
        if (is_new) tell(*text);
    }
    const Partial partial = partial_of(*set, sample.pdf, name);
    Curve curve;
    for (std::size_t i = 0; i < partial.r.size(); ++i) {
        const float r = partial.r[i];
        const float g = partial.g[i];
        if (!std::isfinite(r) || !std::isfinite(g)) continue;
        curve.r.push_back(r);
        curve.g.push_back(g);
    }
    if (sample.is_r2) weigh_r2(curve.r, curve.g);
    if (curve.r.empty()) throw Failure(name + ": there are no bins");
    return curve;
}

View view_of(const Look& look, const CurvePicture& picture, const std::vector<Curve>& curves) {
    View view{.log = look.log};
    for (const Curve& curve : curves) {
        view.left = std::min<double>(view.left, curve.r.front());
        view.right = std::max<double>(view.right, curve.r.back());
    }
    if (picture.is_report) {
        const double rmin = picture.windows[0].rmin;
        const double rmax = picture.windows[0].rmax;
        view.left = std::max(view.left, rmin - 0.6 * (rmax - rmin));
        view.right = rmax + 0.6 * (rmax - rmin);
    }
    if (std::isfinite(look.range.from)) view.left = look.range.from;
    if (std::isfinite(look.range.to)) view.right = look.range.to;

    bool holds_any = false;
    double lowest = 0;
    double lowest_positive = HUGE_VAL;
    double highest = 0;
    for (const Curve& curve : curves) {
        for (std::size_t i = 0; i < curve.r.size(); ++i) {
            if (curve.r[i] < view.left || curve.r[i] > view.right) continue;
            lowest = std::min<double>(lowest, curve.g[i]);
            highest = std::max<double>(highest, curve.g[i]);
            if (curve.g[i] > 0) lowest_positive = std::min<double>(lowest_positive, curve.g[i]);
            holds_any = true;
        }
    }
    const std::string where = picture.samples[0].file.string() + ", r from " +
                              shortest(static_cast<float>(view.left)) + " to " +
                              shortest(static_cast<float>(view.right));
    if (!holds_any) throw Failure(where + ": there are no bins");
    // gnuplot would refuse what has no width in the digits that it gets, and the smallest numbers.
    if (view.right - view.left <= 2e-6 * std::max(std::abs(view.left), std::abs(view.right))) {
        throw Failure(where + ": too narrow");
    }
    if (look.log && highest < std::numeric_limits<float>::min()) {
        throw Failure(where + ": g has no logarithm");
    }
    // Of a logarithm, the power of ten below the smallest value, or below a millionth of the
    // largest.
    const double smallest = std::max(lowest_positive, 1e-6 * highest);
    view.bottom = look.log ? std::pow(10, std::ceil(std::log10(smallest / 2)) - 1) : lowest;
    view.top = highest > view.bottom ? highest : view.bottom + 1;
    return view;
}

// The g at a part of the way from the bottom of the view to the highest of the curves.
double level(const View& view, double part) {
    return view.log ? view.bottom * std::pow(view.top / view.bottom, part)
                    : view.bottom + part * (view.top - view.bottom);
}

// Zero has no logarithm and is drawn at the bottom.
double shown(const View& view, double g) {
    return view.log ? std::max(g, view.bottom) : g;
}

bool is_marked(const SampleCurve& sample) {
    return std::isfinite(sample.Rmea) && std::isfinite(sample.Rmod) && std::isfinite(sample.var) &&
           sample.var >= 0;
}

// g of the curve at the mode of a report, which has a bin on either side.
double height_of(const SampleCurve& sample, const Curve& curve) {
    const float r = sample.Rmod;
    const auto i = static_cast<std::size_t>(std::ranges::lower_bound(curve.r, r) - curve.r.begin());
    if (i < curve.r.size() && curve.r[i] == r) return curve.g[i];
    if (i == 0 || i == curve.r.size()) {
        throw Failure(sample.file.string() + ": not the data of the report, whose mode is " +
                      text_of(r));
    }
    const double part = (static_cast<double>(r) - curve.r[i - 1]) /
                        (static_cast<double>(curve.r[i]) - curve.r[i - 1]);
    return curve.g[i - 1] + part * (static_cast<double>(curve.g[i]) - curve.g[i - 1]);
}

// The curve within the view and one bin beyond, the mean with its bar, and the mode, as blocks of
// data.
void write_data(std::ostream& script, const View& view, const SampleCurve& sample,
                const Curve& curve) {
    const auto is_left = [&](std::size_t i) { return curve.r[i] < view.left; };
    const auto is_right = [&](std::size_t i) { return curve.r[i] > view.right; };
    script << "$curve" << sample.number << " << END\n";
    for (std::size_t i = 0; i < curve.r.size(); ++i) {
        if (is_left(i) && (i + 1 == curve.r.size() || is_left(i + 1))) continue;
        if (is_right(i) && (i == 0 || is_right(i - 1))) continue;
        script << curve.r[i] << ' ' << shown(view, curve.g[i]) << '\n';
    }
    script << "END\n";
    if (!is_marked(sample)) return;
    script << "$mean" << sample.number << " << END\n"
           << sample.Rmea << ' ' << level(view, 1 + 0.09 * sample.number) << ' '
           << std::sqrt(sample.var) << "\nEND\n"
           << "$mode" << sample.number << " << END\n"
           << sample.Rmod << ' ' << shown(view, height_of(sample, curve)) << "\nEND\n";
}

std::string named(const SampleCurve& sample) {
    return sample.label.empty() ? "partial " + std::to_string(sample.pdf)
                                : shortened(printable(sample.label), 16);
}

Key key_of(const CurvePicture& picture, const View& view, Kind kind) {
    std::vector<Entry> entries;
    const std::vector<SampleCurve>& samples = picture.samples;
    const bool alike = samples.size() == 2 && samples[0].name == samples[1].name;
    for (const SampleCurve& sample : samples) {
        const auto style = static_cast<std::size_t>(sample.number);
        const std::string name = printable(alike ? sample.file.string() : sample.name);
        entries.push_back({Mark::line, style, name, ", " + named(sample), true});
        if (!is_marked(sample)) continue;
        const std::string mean = "mean " + in_four_digits(sample.Rmea);
        const std::string sd = ", sd " + in_four_digits(std::sqrt(sample.var));
        entries.push_back({Mark::mean, style, "", mean + sd, true});
        entries.push_back({Mark::mode, style, "", "mode " + in_four_digits(sample.Rmod)});
    }
    bool is_first = true;
    for (std::size_t w = 0; w < picture.windows.size(); ++w) {
        const auto& [rmin, rmax, ilo, ihi] = picture.windows[w];
        std::string text;
        if (picture.is_report) {
            text = "window " + in_four_digits(rmin) + " to " + in_four_digits(rmax);
        } else if (kind == Kind::text && rmin < view.right && rmax > view.left) {
            // To be typed, so with all digits. A figure has them above the plot.
            text = std::to_string(w + 1) + ": " + shortest(rmin) + " to " + shortest(rmax);
        } else {
            continue;
        }
        entries.push_back({Mark::window, 1, "", text, is_first});
        is_first = false;
    }
    return key_of(std::move(entries), kind, kind == Kind::text ? text_lines : figure_height);
}

// Where the numbers at `numbers`, which ascend, stand above the plot without touching each other.
std::vector<double> spread(const std::vector<float>& numbers, const View& view) {
    constexpr double height = 9 / (0.825 * figure_width);  // of a line, in parts of the r axis
    const double gap =
        std::min(height, 1 / static_cast<double>(numbers.size())) * (view.right - view.left);
    std::vector<double> places(numbers.begin(), numbers.end());
    for (std::size_t i = 1; i < places.size(); ++i) {
        places[i] = std::max(places[i], places[i - 1] + gap);
    }
    double most = view.right;
    for (std::size_t i = places.size(); i > 0; --i) {
        places[i - 1] = std::min(places[i - 1], most);
        most = places[i - 1] - gap;
    }
    return places;
}

// Returns the height of what stands above the plot of a figure.
double write_windows(std::ostream& script, const View& view, const CurvePicture& picture,
                     Kind kind) {
    std::set<float> marked;
    for (std::size_t w = 0; w < picture.windows.size(); ++w) {
        const auto& [rmin, rmax, ilo, ihi] = picture.windows[w];
        const double left = std::max<double>(rmin, view.left);
        const double right = std::min<double>(rmax, view.right);
        if (!(left < right)) continue;
        if (kind != Kind::text) {
            script << "set object rectangle from " << left << ", graph 0 to " << right
                   << ", graph 1\n";
        } else if (!picture.is_report) {
            script << "set label \"" << w + 1 << "\" at " << (left + right) / 2
                   << ", graph 0.98 center\n";
        }
        if (kind != Kind::text && picture.is_report) continue;
        for (const float limit : {rmin, rmax}) {
            if (limit >= view.left && limit <= view.right) marked.insert(limit);
        }
    }
    const std::vector<float> ascending(marked.begin(), marked.end());
    const std::vector<double> places = spread(ascending, view);
    double height = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const float r = ascending[i];
        script << "set arrow from " << r << ", graph 0 to " << r << ", graph 1 nohead linestyle "
               << limit_style << '\n';
        if (kind == Kind::text) continue;
        const std::string text = shortest(r);
        script << "set arrow from " << r << ", graph 1 to " << places[i]
               << ", graph 1.06 nohead linestyle " << limit_style << "\n"
               << "set label \"" << text << "\" at " << places[i] << ", graph 1.08 rotate left\n";
        height = std::max(height, 14 + 5 * static_cast<double>(text.size()));
    }
    return height;
}

}  // namespace

CurvePicture preview(const SampleCurve& sample) {
    const Curve curve = load_curve(sample);
    return {.is_report = false, .windows = find_peaks(curve.r, curve.g, {}), .samples = {sample}};
}

Page page_of(const CurvePicture& picture, const Look& look) {
    std::vector<Curve> curves;
    for (const SampleCurve& sample : picture.samples) curves.push_back(load_curve(sample));
    const View view = view_of(look, picture, curves);
    const Key key = key_of(picture, view, look.kind);
    const bool is_r2 = picture.samples[0].is_r2;  // the two of a report are alike

    std::ostringstream script;
    script.precision(7);  // as many as a float has
    script << "unset label; unset arrow; unset object\n"
           << "set xlabel " << gnuplot_string(in_unit("r", look)) << "; set ylabel "
           << (is_r2 ? "\"r² g(r)\"\n" : "\"g(r)\"\n") << "set xrange [" << view.left << ':'
           << view.right << "]\n"
           << "set yrange [" << view.bottom << ':' << level(view, 1.25) << "]\n"
           << (view.log ? "set logscale y\n" : "");
    const double limits_height = write_windows(script, view, picture, look.kind);
    if (look.kind != Kind::text) {
        const double above = write_key(script, key, figure_height) + limits_height;
        script << "set bmargin at screen 0.15; set tmargin at screen " << 1 - above / figure_height
               << '\n';
    }
    for (std::size_t s = 0; s < curves.size(); ++s) {
        write_data(script, view, picture.samples[s], curves[s]);
    }
    script << "plot";
    const char* before = " ";
    for (const SampleCurve& sample : picture.samples) {
        const auto s = static_cast<std::size_t>(sample.number);
        script << std::exchange(before, ", ") << "$curve" << s << " with lines linestyle " << s
               << " notitle";
        if (!is_marked(sample)) continue;
        script << ", $mean" << s << " with xerrorbars linestyle " << s + dot_styles
               << " notitle, $mode" << s << " with points linestyle " << s + mode_styles
               << " notitle";
    }
    script << '\n';
    if (look.kind != Kind::text) return {figure_height, script.str(), ""};
    return {static_cast<double>(text_lines - key.rows.size()), script.str(), text_of(key)};
}

}  // namespace dorvek::tools
