#include "pdf_text.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <string_view>

#include "csv.hpp"
#include "failure.hpp"
#include "grid.hpp"
#include "running.hpp"

namespace dorvek::tools {
namespace {

// A column of a block, r being 0.
struct Column {
    const Block* block = nullptr;
    std::size_t number = 0;
};

struct Partial {
    Column g, n;  // n has no block where it is to be computed
};

double value_at(const Column& column, std::size_t row) {
    return at(*column.block, row, column.number).value;
}

std::vector<double> column_of(const Block& block, std::size_t column) {
    std::vector<double> values(rows_of(block));
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = at(block, i, column).value;
    return values;
}

// Columns of a block that are written as they stand there, or one that has been computed.
struct Piece {
    Column first{};
    std::size_t columns = 1;
    std::vector<double> computed{};
};

void add_column(std::vector<Piece>& pieces, const Column& column) {
    Piece& last = pieces.back();
    const bool goes_on = column.block == last.first.block && column.block->single_blanks &&
                         column.number == last.first.number + last.columns;
    if (goes_on) {
        ++last.columns;
    } else {
        pieces.push_back({.first = column});
    }
}

// What has been computed is rounded to the float that the program reads.
std::string written(double value) {
    const auto nearest = static_cast<float>(value);
    if (!std::isfinite(nearest)) throw Failure("a number is too large to be written");
    return shortest(nearest);
}

void append_row(std::string& text, std::span<const Piece> pieces, std::size_t row) {
    for (const Piece& piece : pieces) {
        const auto& [block, number] = piece.first;
        if (block == nullptr) {
            text += written(piece.computed[row]);
        } else if (at(*block, row, number).length == 0) {
            text += written(at(*block, row, number).value);
        } else {
            const std::string_view last = text_at(*block, row, number + piece.columns - 1);
            text.append(text_at(*block, row, number).data(), last.data() + last.size());
        }
        text += ' ';
    }
    text.back() = '\n';
}

// The columns of g of a block, r being 0.
std::vector<std::size_t> columns_of_g(const Layout& layout, std::size_t width) {
    std::vector<std::size_t> columns;
    for (const std::size_t column : layout.use) columns.push_back(column - 1);
    const std::size_t step = layout.running ? 2 : 1;
    for (std::size_t column = 1; layout.use.empty() && column < width; column += step) {
        columns.push_back(column);
    }
    const std::size_t last = columns.empty() ? width : std::ranges::max(columns) + step - 1;
    if (last < width) return columns;
    if (!layout.use.empty()) {
        throw WrongCall("--use: the number of columns is " + std::to_string(width));
    }
    throw Failure("columns: " + std::to_string(width) + "; they are not r, and g" +
                  (layout.running ? " and n" : "") + " of each partial");
}

void require_same_grid(std::span<const double> r, const Block& block, const std::string& what) {
    const auto other = column_of(block, 0);
    const auto [place, other_place] = std::ranges::mismatch(r, other);
    if (place == r.end() && other_place == other.end()) return;
    throw Failure(what + " has another grid from row " + std::to_string(place - r.begin() + 1) +
                  " on");
}

std::vector<Partial> partials_of(std::span<const Block> sets, std::span<const Block> running,
                                 const Layout& layout, std::span<const double> r) {
    if (!running.empty() && running.size() != sets.size()) {
        throw Failure("--cn: the number of blocks is " + std::to_string(running.size()) + ", not " +
                      std::to_string(sets.size()));
    }
    std::vector<Partial> partials;
    for (std::size_t set = 0; set < sets.size(); ++set) {
        require_same_grid(r, sets[set], "set " + std::to_string(set + 1));
        for (const std::size_t column : columns_of_g(layout, sets[set].width)) {
            Partial partial;
            partial.g = {&sets[set], column};
            if (layout.running) partial.n = {&sets[set], column + 1};
            if (!running.empty()) {
                if (column >= running[set].width) {
                    throw Failure("--cn: the number of columns is " +
                                  std::to_string(running[set].width));
                }
                require_same_grid(r, running[set], "--cn: the file");
                partial.n = {&running[set], column};
            }
            partials.push_back(partial);
        }
    }
    return partials;
}

// The density of the atoms that this partial counts.
double density_of(const Layout& layout, std::size_t partial, std::size_t partials) {
    if (layout.densities.empty()) return layout.density;
    if (layout.densities.size() == partials) return layout.densities[partial];
    throw WrongCall(layout.counted + ": " + std::to_string(layout.densities.size()) +
                    ", but the number of partials is " + std::to_string(partials));
}

// n that has been read and falls is another function, or that of another partial.
void require_running(const Partial& partial, std::size_t number) {
    const Block& block = *partial.g.block;
    for (std::size_t i = 1; i < rows_of(block); ++i) {
        if (value_at(partial.n, i) >= value_at(partial.n, i - 1) || value_at(partial.g, i) < 0) {
            continue;
        }
        throw Failure("n of partial " + std::to_string(number) + " falls at r = " +
                      std::string(text_at(block, i, 0)) + ": that is no running number");
    }
}

// The places behind the point, and the significant digits, of a number as text.
struct Digits {
    int behind_point = 0;
    int significant = 0;
};

Digits digits_of(std::string_view text) {
    Digits digits;
    bool behind_point = false;
    std::size_t i = 0;
    for (; i < text.size() &&
           (std::string_view("+-.0123456789").find(text[i]) != std::string_view::npos);
         ++i) {
        if (text[i] == '.') behind_point = true;
        if (text[i] < '0') continue;
        if (behind_point) ++digits.behind_point;
        if (digits.significant > 0 || text[i] != '0') ++digits.significant;
    }
    if (i < text.size()) digits.behind_point = 30;  // an exponent: digits alone count
    return digits;
}

std::size_t bad_step(std::span<const double> r) {
    return out_of_step(r.size(), [&](std::size_t i) { return r[i]; });
}

// Does no bin lie further off its place than rounding to these digits moves it? A missing bin does
// not either, if a step is the last digit, but puts few bins out of step.
bool is_rounded(std::span<const double> r, const Digits& digits) {
    const double step = (r.back() - r.front()) / static_cast<double>(r.size() - 1);
    std::size_t jumps = 0;
    for (std::size_t i = 0; i < r.size(); ++i) {
        if (i > 0 && std::abs(r[i] - r[i - 1] - step) >= step / 2) ++jumps;
        const double place = r.front() + static_cast<double>(i) * step;
        const double leading = std::floor(std::log10(std::max(std::abs(place), 1e-30)));
        const double unit = std::pow(10, std::max(-static_cast<double>(digits.behind_point),
                                                  leading + 1 - digits.significant));
        if (std::abs(r[i] - place) > 1.01 * unit) return false;
    }
    return jumps == 0 || (jumps > 1 && 20 * jumps > r.size());
}

void require_even(std::span<const double> r, const Block& block, std::size_t first) {
    if (r.size() < 2) throw Failure("fewer than two bins");
    const std::size_t bad = r.back() > r.front() ? bad_step(r) : 1;
    if (bad == r.size()) return;
    Digits most;
    for (std::size_t i = 0; i < r.size(); ++i) {
        const Digits digits = digits_of(text_at(block, first + i, 0));
        most.behind_point = std::max(most.behind_point, digits.behind_point);
        most.significant = std::max(most.significant, digits.significant);
    }
    const bool is_whole = most.behind_point == 0;
    throw Failure("r does not ascend in even steps at " +
                  std::string(text_at(block, first + bad, 0)) +
                  (is_whole && r[bad] == r[bad - 1]   ? ": has it decimal commas?"
                   : !is_whole && is_rounded(r, most) ? ": more digits of r would cure that"
                                                      : ""));
}

}  // namespace

std::string pdf_text(std::span<const Block> sets, std::span<const Block> running,
                     const Layout& layout, Remarks& remarks) {
    const Block& first = sets.front();
    const std::vector<double> r = column_of(first, 0);
    const std::vector<Partial> partials = partials_of(sets, running, layout, r);

    const auto inside = [&](double place) {
        const auto rounded = static_cast<float>(place);
        return rounded >= layout.range.from && rounded <= layout.range.to;
    };
    const auto from = static_cast<std::size_t>(std::ranges::find_if(r, inside) - r.begin());
    const auto end = static_cast<std::size_t>(
        std::find_if_not(r.begin() + static_cast<std::ptrdiff_t>(from), r.end(), inside) -
        r.begin());
    const auto grid = std::span(r).subspan(from, end - from);
    require_even(grid, first, from);

    std::vector<Piece> pieces{{.first = {&first, 0}}};
    std::vector<char> below_zero(r.size());  // in any partial
    for (std::size_t p = 0; p < partials.size(); ++p) {
        const auto& [g, n] = partials[p];
        for (std::size_t i = from; i < end; ++i) {
            if (value_at(g, i) < 0) below_zero[i] = 1;
        }
        add_column(pieces, g);
        if (n.block != nullptr) {
            require_running(partials[p], p + 1);
            add_column(pieces, n);
            continue;
        }
        // By the step of the whole file if that is even, so that a range changes no digit.
        const double rho = density_of(layout, p, partials.size());
        pieces.push_back(
            {.computed = running_numbers(r, column_of(*g.block, g.number), rho,
                                         bad_step(r) == r.size() ? std::span(r) : grid)});
    }
    remarks.bins = std::max(remarks.bins, grid.size());
    remarks.partials = std::max(remarks.partials, partials.size());
    remarks.below_zero += static_cast<std::size_t>(std::ranges::count(below_zero, 1));
    remarks.all_count_all = partials.size() > 1 && layout.densities.empty() && layout.density > 0;

    std::string text;
    text.reserve(sets.size() * first.text.size() + 16 * r.size());
    for (std::size_t i = from; i < end; ++i) append_row(text, pieces, i);
    return text;
}

}  // namespace dorvek::tools
