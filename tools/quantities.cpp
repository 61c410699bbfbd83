#include "quantities.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "csv.hpp"
#include "program.hpp"
#include "states.hpp"
#include "text.hpp"
#include "textio/lines.hpp"

namespace dorvek::tools {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// The points of a line, for each quantity.
using Panels = std::vector<std::vector<Point>>;

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
    const auto label = table.column("label");
    std::string name;
    for (const std::size_t c : columns.each) {
        if (row[c].empty()) continue;
        const std::string& heading = table.headings()[c];
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
    std::size_t bad = 0;
    std::string first_bad;
    Row row;
    for (std::size_t n = 1; table.next(row); ++n) {
        if (status && row[*status] == "failed") {
            ++failed;
            continue;
        }
        try {
            RowOfPoints read = points_of(wanted, columns, table, row);
            if (read.points.empty()) continue;
            Row keys;
            for (const std::size_t c : columns.each) keys.push_back(key_of(row[c]));
            const auto [line, is_new] = numbers.try_emplace(std::move(keys), lines.size());
            if (is_new) lines.push_back(name_of(columns, table, row));
            read.line = line->second;
            rows.push_back(std::move(read));
        } catch (const Failure& failure) {
            if (bad++ == 0) first_bad = "row " + std::to_string(n) + ": " + failure.what();
        }
    }
    if (bad > 0) {
        complain(name + ": rows that cannot be drawn, left out: " + std::to_string(bad) +
                 ", the first is " + first_bad);
    }
    if (failed > 0) tell("rows that failed, left out: " + std::to_string(failed));
    if (rows.empty()) throw Failure(name + ": there are no rows to draw");
    return rows;
}

}  // namespace

// Places the rows across and sorts the points of each line from left to right.
Graph graph_of(const Quantities& wanted, const std::string& content, const std::string& name) {
    TableReader table(content, name);
    const Columns columns = columns_of(wanted, table, name);
    Graph graph{.name = name,
                .of = wanted.of,
                .lines = {},
                .across = table.headings()[columns.across],
                .is_scan = columns.shift.has_value()};
    if (columns.bar) graph.bars = table.headings()[*columns.bar];
    const std::vector<RowOfPoints> rows = rows_of(wanted, columns, table, name, graph.lines);
    const bool is_text =
        std::ranges::any_of(rows, [](const RowOfPoints& row) { return !value_of(row.across); });
    graph.points.resize(graph.lines.size(), Panels(wanted.of.size()));
    std::size_t nowhere = 0;
    for (const RowOfPoints& row : rows) {
        double x = value_of(row.across).value_or(nan);
        const std::string text = key_of(row.across);
        if (is_text && !text.empty()) {
            const auto known = std::ranges::find(graph.texts, text);
            x = static_cast<double>(known - graph.texts.begin());
            if (known == graph.texts.end()) graph.texts.push_back(text);
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
    for (std::size_t line = 0; line < graph.lines.size(); ++line) {
        for (std::vector<Point>& points : graph.points[line]) {
            std::ranges::stable_sort(points, is_left);
            const auto again = std::ranges::adjacent_find(points, std::not_fn(is_left));
            if (again == points.end() || std::exchange(is_told, true)) continue;
            tell(name + ": more than one row of a line at the same " + graph.across + ": " +
                 graph.lines[line] + " (--each parts them, dorvek-replicas averages)");
        }
    }
    return graph;
}

}  // namespace dorvek::tools
