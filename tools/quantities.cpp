#include "quantities.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

#include "csv.hpp"
#include "program.hpp"
#include "text.hpp"
#include "textio/lines.hpp"

namespace dorvek::tools {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// Which columns of the table are what, counted from 0.
struct Columns {
    std::vector<std::size_t> quantities{};  // of results: one for each
    std::optional<std::size_t> quantity{};  // of means: the one with their names
    std::optional<std::size_t> mean{};      // likewise
    std::optional<std::size_t> bar{};       // likewise
    std::size_t across = 0;
    std::vector<std::size_t> each{};
    std::optional<std::size_t> shift{};       // of the limit across
    std::vector<std::size_t> other_shifts{};  // only rows with 0 there are drawn
};

struct Point {
    double x = 0;
    double y = 0;
    double bar = nan;  // half its length; NaN: none
    bool is_proposed = false;
};

// The points of a line, for each quantity.
using Panels = std::vector<std::vector<Point>>;

struct Graph {
    std::vector<std::string> names{};  // of the lines
    std::vector<Panels> points{};      // likewise
    std::vector<std::string> texts{};  // across, if there are other than numbers
    std::string bars{};                // the column of their lengths, if there is one
    std::string across{};
    bool is_scan = false;
};

struct Span {
    double low = HUGE_VAL;
    double high = -HUGE_VAL;
};

Columns columns_of(const Quantities& wanted, const TableReader& table, const std::string& name) {
    const Row& headings = table.headings();
    Columns columns{.quantity = table.column("quantity")};
    if (columns.quantity && table.column("difference")) {
        throw WrongCall(name + ": holds the differences of --compare, which are not drawn");
    }
    std::size_t default_across = 0;
    if (columns.quantity && table.column("mean")) {
        columns.mean = table.column("mean");
        columns.bar = table.column("U95") ? table.column("U95") : table.column("ci95");
        if (columns.quantity == 0U) throw WrongCall(name + ": has no column before quantity");
        default_across = *columns.quantity - 1;
        for (std::size_t c = 0; c < default_across; ++c) columns.each.push_back(c);
    } else {
        columns.quantity.reset();
        for (const std::string& quantity : wanted.of)
            columns.quantities.push_back(table.needed(quantity));
        if (wanted.against.empty()) default_across = table.needed("rmax");
        if (wanted.each.empty()) columns.each = {table.needed("file"), table.needed("pdf")};
    }
    columns.across = wanted.against.empty() ? default_across : table.needed(wanted.against);
    if (!wanted.each.empty()) {
        columns.each.clear();
        for (const std::string& heading : wanted.each)
            columns.each.push_back(table.needed(heading));
    }
    const std::string& across = headings[columns.across];
    for (const std::string limit : {"rmax", "rmin"}) {
        const std::string heading = limit == "rmax" ? "shift" : "shift_min";
        const auto shift = table.column(heading);
        if (!shift || std::ranges::find(columns.each, *shift) != columns.each.end()) continue;
        if (across == limit || across == heading) {
            columns.shift = shift;
        } else {
            columns.other_shifts.push_back(*shift);
        }
    }
    return columns;
}

// The number in the cell; NaN if it is none that can be drawn, as an empty one. In double
// precision, for means have ten digits.
std::optional<double> value_of(const std::string& cell) {
    const std::string_view text = textio::trimmed(cell);
    double value = nan;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) {
        const auto real = real_of(cell);
        if (!text.empty() && !real) return {};
        value = real ? *real : nan;
    }
    return std::abs(value) < 1e100 ? value : nan;
}

// A line is called by its cells; a number has its heading before it.
std::string name_of(const Columns& columns, const TableReader& table, const Row& row) {
    std::string name;
    for (const std::size_t c : columns.each) {
        if (row[c].empty()) continue;
        const std::string& heading = table.headings()[c];
        const auto label = table.column("label");
        name += name.empty() ? "" : ", ";
        if (heading == "pdf" && label && !row[*label].empty()) {
            name += row[*label];
        } else {
            if (value_of(row[c])) name += (heading == "pdf" ? "partial" : heading) + " ";
            name += row[c];
        }
    }
    return printable(name);
}

// A row of the table as points, one for each quantity or, of means, one.
struct RowOfPoints {
    std::size_t line = 0;
    std::string across;
    std::vector<std::pair<std::size_t, Point>> points{};  // each with the number of its quantity
};

double number_in(const Row& row, std::size_t column, const TableReader& table) {
    if (const auto value = value_of(row[column])) return *value;
    throw Failure(table.headings()[column] + " is no number");
}

// Nothing if the row has none of the quantities, or another shift.
RowOfPoints points_of(const Quantities& wanted, const Columns& columns, const TableReader& table,
                      const Row& row) {
    RowOfPoints read{.across = row[columns.across]};
    if (row.size() > table.headings().size()) throw Failure("more fields than headings");
    const auto is_moved = [&](std::size_t shift) {
        const double value = number_in(row, shift, table);
        return value < 0 || value > 0;
    };
    if (std::ranges::any_of(columns.other_shifts, is_moved)) return read;
    const bool is_proposed = columns.shift && !is_moved(*columns.shift);
    for (std::size_t q = 0; q < wanted.of.size(); ++q) {
        if (columns.mean && row[*columns.quantity] != wanted.of[q]) continue;
        const std::size_t c = columns.mean ? *columns.mean : columns.quantities[q];
        const double bar = columns.bar ? number_in(row, *columns.bar, table) : nan;
        read.points.push_back(
            {q, {.y = number_in(row, c, table), .bar = bar, .is_proposed = is_proposed}});
    }
    return read;
}

std::vector<RowOfPoints> rows_of(const Quantities& wanted, const Columns& columns,
                                 TableReader& table, const std::string& name,
                                 std::vector<std::string>& lines) {
    std::vector<RowOfPoints> rows;
    std::map<Row, std::size_t> numbers;  // of the lines
    const auto status = table.column("status");
    std::size_t failed = 0;
    Row row;
    for (std::size_t n = 1; table.next(row); ++n) {
        if (status && row[*status] == "failed") {
            ++failed;
            continue;
        }
        try {
            RowOfPoints read = points_of(wanted, columns, table, row);
            if (read.points.empty()) continue;
            Row cells;
            for (const std::size_t c : columns.each) cells.push_back(row[c]);
            const auto [line, is_new] = numbers.try_emplace(cells, lines.size());
            if (is_new) lines.push_back(name_of(columns, table, row));
            read.line = line->second;
            rows.push_back(std::move(read));
        } catch (const Failure& failure) {
            complain(name + ", row " + std::to_string(n) + ": " + failure.what());
        }
    }
    if (failed > 0) tell("rows that failed, left out: " + std::to_string(failed));
    if (rows.empty()) throw Failure(name + ": there are no rows to draw");
    return rows;
}

// Places the rows across and sorts the points of each line from left to right.
Graph graph_of(const Quantities& wanted, const Columns& columns, TableReader& table,
               const std::string& name) {
    Graph graph{.across = table.headings()[columns.across], .is_scan = columns.shift.has_value()};
    if (columns.bar) graph.bars = table.headings()[*columns.bar];
    const std::vector<RowOfPoints> rows = rows_of(wanted, columns, table, name, graph.names);
    const bool is_text =
        std::ranges::any_of(rows, [](const RowOfPoints& row) { return !value_of(row.across); });
    graph.points.resize(graph.names.size(), Panels(wanted.of.size()));
    std::size_t nowhere = 0;
    for (const RowOfPoints& row : rows) {
        double x = value_of(row.across).value_or(nan);
        if (is_text) {
            const auto known = std::ranges::find(graph.texts, row.across);
            x = static_cast<double>(known - graph.texts.begin());
            if (known == graph.texts.end()) graph.texts.push_back(row.across);
        }
        if (std::isnan(x)) ++nowhere;
        for (auto [q, point] : row.points) {
            point.x = x;
            if (!std::isnan(x)) graph.points[row.line][q].push_back(point);
        }
    }
    if (nowhere > 0) {
        complain(name + ": rows without " + graph.across +
                 ", left out: " + std::to_string(nowhere));
    }
    for (std::size_t q = 0; q < wanted.of.size(); ++q) {
        const auto has_it = [&](const Panels& panels) { return !panels[q].empty(); };
        if (columns.mean && std::ranges::none_of(graph.points, has_it)) {
            throw WrongCall(name + ": has no quantity " + wanted.of[q]);
        }
    }
    bool is_told = false;
    const auto is_left = [](const Point& a, const Point& b) { return a.x < b.x; };
    for (std::size_t line = 0; line < graph.names.size(); ++line) {
        for (std::vector<Point>& points : graph.points[line]) {
            std::ranges::stable_sort(points, is_left);
            const auto again = std::ranges::adjacent_find(points, std::not_fn(is_left));
            if (again == points.end() || std::exchange(is_told, true)) continue;
            tell(name + ": more than one row of a line at the same " + graph.across + ": " +
                 graph.names[line] + " (--each parts them, dorvek-replicas averages)");
        }
    }
    return graph;
}

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
    for (const Panels& panels : graph.points) {
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
    for (const Panels& panels : graph.points) {
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
    for (std::size_t line = 0; line < graph.names.size(); ++line) {
        if (graph.names[line].empty()) continue;
        entries.push_back({Mark::line, line % line_styles + 1, graph.names[line], ""});
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

Page page_of(const Quantities& quantities, const Look& look, const std::string& content,
             const std::string& name) {
    TableReader table(content, name);
    const Graph graph = graph_of(quantities, columns_of(quantities, table, name), table, name);
    const Span shown = across(graph, look.range);
    std::vector<std::pair<std::size_t, Span>> panels;  // quantity and values
    for (std::size_t q = 0; q < quantities.of.size(); ++q) {
        const Span values = values_of(graph, q, shown);
        if (values.low <= values.high) {
            panels.emplace_back(q, widened(values));
        } else {
            complain(name + ": there are no numbers of " + quantities.of[q] + " to draw");
        }
    }
    if (panels.empty()) throw Failure(name + ": there is nothing to draw");

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
        const std::string label = gnuplot_string(label_of(quantities.of[q], look));
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
        for (std::size_t line = 0; line < graph.names.size(); ++line) {
            plotted += write_line(script, graph, line, q, shown);
        }
        script << "plot" << plotted.substr(1) << "\nunset label; unset arrow; unset object\n";
    }
    script << "unset multiplot\n";
    return {height, script.str(), text_of(key)};
}

}  // namespace dorvek::tools
