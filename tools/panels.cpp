#include "panels.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

#include "program.hpp"
#include "text.hpp"

namespace dorvek::tools {
namespace {

struct Span {
    double low = HUGE_VAL;
    double high = -HUGE_VAL;
};

bool is_seen(const Point& point, const Span& across) {
    return !std::isnan(point.y) && point.x >= across.low && point.x <= across.high;
}

// Some more on either side, so that nothing lies on an edge and gnuplot finds a width.
Span widened(Span span) {
    const double width = span.high - span.low;
    const double largest = std::max(std::abs(span.low), std::abs(span.high));
    const double more = width > 1e-9 * largest ? 0.06 * width : largest > 0 ? 0.1 * largest : 1;
    return {span.low - more, span.high + more};
}

Span across(const Graph& graph, const Range& range) {
    if (!graph.texts.empty()) return {-0.5, static_cast<double>(graph.texts.size()) - 0.5};
    Span span;
    for (const auto& panels : graph.points) {
        for (const std::vector<Point>& points : panels) {
            for (const Point& point : points) {
                span.low = std::min(span.low, point.x);
                span.high = std::max(span.high, point.x);
            }
        }
    }
    span = widened(span);
    if (std::isfinite(range.from)) span.low = range.from;
    if (std::isfinite(range.to)) span.high = range.to;
    return span;
}

// The values of a quantity that are seen, with their bars.
Span values_of(const Graph& graph, std::size_t quantity, const Span& across) {
    Span span;
    for (const auto& panels : graph.points) {
        for (const Point& point : panels[quantity]) {
            if (!is_seen(point, across)) continue;
            const double bar = std::isnan(point.bar) ? 0 : point.bar;
            span.low = std::min(span.low, point.y - bar);
            span.high = std::max(span.high, point.y + bar);
        }
    }
    return span;
}

// The line, which a missing number parts, and its dots, which a scan has at the window proposed
// alone. Returns what is to be plotted of it.
std::string write_line(std::ostream& script, const Graph& graph, std::size_t line,
                       std::size_t quantity, const Span& across) {
    const std::vector<Point>& points = graph.points[line][quantity];
    if (std::ranges::none_of(points, [&](const Point& p) { return is_seen(p, across); })) return "";
    const std::size_t style = line % line_styles + 1;
    const std::string block = std::to_string(line) + "q" + std::to_string(quantity);
    script << "$line" << block << " << END\n";
    for (const Point& point : points) {
        script << point.x << ' ';
        (std::isnan(point.y) ? script << "NaN" : script << point.y) << '\n';
    }
    script << "END\n";
    std::ostringstream dotted;
    dotted.precision(script.precision());
    for (const Point& point : points) {
        if (!is_seen(point, across) || (graph.is_scan && !point.is_proposed)) continue;
        dotted << point.x << ' ' << point.y << ' ' << (std::isnan(point.bar) ? 0 : point.bar)
               << '\n';
    }
    std::string plotted =
        ", $line" + block + " with lines linestyle " + std::to_string(style) + " notitle";
    if (!dotted.str().empty()) {
        script << "$dots" << block << " << END\n" << dotted.str() << "END\n";
        plotted += ", $dots" + block + " with yerrorbars linestyle " +
                   std::to_string(style + dot_styles) + " notitle";
    }
    return plotted;
}

// The distance of tics that are 1, 2 or 5 times a power of ten apart, at most six.
double step_of(const Span& span) {
    const double least = (span.high - span.low) / 6;
    const double power = std::pow(10, std::floor(std::log10(least)));
    for (const double step : {power, 2 * power, 5 * power}) {
        if (step >= least) return step;
    }
    return 10 * power;
}

// The texts across, shortened to what there is room for; if that is nothing, not each of them. Only
// the lowest panel has them.
void write_tics(std::ostream& script, const Graph& graph, Kind kind, bool is_last) {
    script << "set format x " << (is_last ? "\"%h\"\n" : "\"\"\n");
    if (graph.texts.empty()) return;
    constexpr std::size_t least = 9;  // columns for a text and the blank behind it
    const std::size_t columns = kind == Kind::text ? 64 : 38;
    const std::size_t every = (graph.texts.size() * least + columns - 1) / columns;
    const std::size_t room = columns * every / graph.texts.size() - 1;
    const char* before = "set xtics (";
    for (std::size_t t = 0; t < graph.texts.size(); ++t) {
        const bool has_text = is_last && t % every == 0;
        const std::string text = has_text ? shortened(printable(graph.texts[t]), room) : "";
        script << std::exchange(before, ", ") << gnuplot_string(text) << ' ' << t;
    }
    script << ")\n";
}

Key key_of(const Graph& graph, Kind kind, double height) {
    std::vector<Entry> entries;
    for (std::size_t line = 0; line < graph.lines.size(); ++line) {
        if (graph.lines[line].empty()) continue;
        entries.push_back({Mark::line, line % line_styles + 1, graph.lines[line], ""});
    }
    if (graph.is_scan) entries.push_back({Mark::dot, 1, "", "window proposed"});
    if (!graph.bars.empty()) entries.push_back({Mark::mean, 1, "", "mean, " + graph.bars});
    return key_of(std::move(entries), kind, height);
}

// The quantities and limits that are lengths have the unit of r.
std::string label_of(const std::string& heading, const Look& look) {
    static const std::set<std::string_view> lengths{"rmin", "rmax", "Rmea", "Rmod", "Rmed", "Rtop"};
    return lengths.contains(heading) ? in_unit(heading, look) : printable(heading);
}

}  // namespace

Page page_of(const Graph& graph, const Look& look) {
    const Span shown = across(graph, look.range);
    std::vector<std::pair<std::size_t, Span>> panels;  // quantity and values
    for (std::size_t q = 0; q < graph.of.size(); ++q) {
        const Span values = values_of(graph, q, shown);
        if (values.low <= values.high) {
            panels.emplace_back(q, widened(values));
        } else {
            complain(graph.name + ": there are no numbers of " + graph.of[q] + " to draw");
        }
    }
    if (panels.empty()) throw Failure(graph.name + ": there is nothing to draw");

    const bool is_text = look.kind == Kind::text;
    const auto count = static_cast<double>(panels.size());
    double height = is_text ? std::max<double>(text_lines, 4 + 7 * count)
                            : std::max(figure_height, 70 + 64 * count);
    const Key key = key_of(graph, look.kind, height);
    if (is_text) height -= static_cast<double>(key.rows.size());
    std::ostringstream script;
    script.precision(12);
    script << "set multiplot\nset errorbars small\nset pointsize 0.7\n";
    const double above = is_text ? 0.5 : write_key(script, key, height);
    const double below = is_text ? 3.5 : 30;
    const double gap = is_text ? 1 : 8;
    const double each = (height - above - below + gap) / count;
    if (!is_text) script << "set lmargin at screen 0.21\n";
    script << "set xrange [" << shown.low << ':' << shown.high << "]\n";
    for (std::size_t p = 0; p < panels.size(); ++p) {
        const auto& [q, values] = panels[p];
        const bool is_last = p + 1 == panels.size();
        const double top = above + static_cast<double>(p) * each;
        write_tics(script, graph, look.kind, is_last);
        if (is_last) {
            script << "set xlabel " << gnuplot_string(label_of(graph.across, look)) << '\n';
        }
        const std::string label = gnuplot_string(label_of(graph.of[q], look));
        if (is_text) {
            script << "set ylabel " << label << '\n';
        } else {  // where the numbers leave it, however wide they are
            script << "set label " << label << " at screen 0.03, graph 0.5 center rotate\n";
        }
        script << "set yrange [" << values.low << ':' << values.high << "]\n"
               << "set ytics " << step_of(values) << '\n'
               << "set tmargin at screen " << 1 - top / height << '\n'
               << "set bmargin at screen " << 1 - (top + each - gap) / height << '\n';
        std::string plotted;
        for (std::size_t line = 0; line < graph.lines.size(); ++line) {
            plotted += write_line(script, graph, line, q, shown);
        }
        script << "plot" << plotted.substr(1) << "\nunset label; unset arrow; unset object\n";
    }
    script << "unset multiplot\n";
    return {height, script.str(), text_of(key)};
}

}  // namespace dorvek::tools
