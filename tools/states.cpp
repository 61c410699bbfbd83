#include "states.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <map>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "doubts.hpp"
#include "failure.hpp"
#include "textio/lines.hpp"

namespace dorvek::tools {
namespace {

constexpr std::array<std::string_view, 13> always{"CN",   "Rmea", "Rmod", "var",  "varl",
                                                  "varr", "adif", "arat", "pmo3", "skew",
                                                  "pmo4", "kurt", "cum4"};
constexpr std::array<std::string_view, 2> if_there{"Rmed", "Rtop"};  // they may have empty cells

// What is nothing but 0 where the unit of r is too large.
constexpr std::array<std::string_view, 5> of_shape{"pmo3", "skew", "pmo4", "kurt", "cum4"};

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// The columns that are read, counted from 0.
struct Columns {
    std::size_t by = 0;
    std::size_t pair = 0;
    std::size_t rmin = 0;
    std::size_t rmax = 0;
    std::optional<std::size_t> pdf{};
    std::optional<std::size_t> status{};
    std::optional<std::size_t> message{};
    std::optional<std::size_t> file{};
    std::vector<std::size_t> each{};
    std::vector<std::size_t> window{};
    std::vector<std::size_t> alike{};
    std::vector<std::size_t> quantities{};
};

// The results while they are taken, and where the states of these keys stand: the number of the
// combination, and in it that of the state.
struct Taking {
    const Question& question;
    std::span<const std::string> headings;
    Columns at{};
    Study study{};
    std::map<Texts, std::size_t> combinations{};
    std::map<Texts, std::size_t> states{};
};

bool holds(const auto& all, std::string_view one) {
    return std::ranges::find(all, one) != all.end();
}

std::string joined(const Texts& texts) {
    std::string all;
    for (const std::string& text : texts) all += (all.empty() ? "" : ",") + text;
    return all;
}

// The number in the cell, if it is one. In double precision, for small differences of six digits
// are wanted.
std::optional<double> value_of(std::string_view cell) {
    const std::string_view text = textio::trimmed(cell);
    const char* const last = text.data() + text.size();
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), last, value);
    if (error != std::errc() || end != last) return {};
    return value;
}

void include(Extent& extent, double value) {
    extent.least = std::min(extent.least, value);
    extent.most = std::max(extent.most, value);
}

std::optional<std::size_t> column(std::span<const std::string> headings, std::string_view heading) {
    const auto found = std::ranges::find(headings, heading);
    if (found == headings.end()) return {};
    return static_cast<std::size_t>(found - headings.begin());
}

std::size_t needed(std::span<const std::string> headings, std::string_view heading) {
    if (const auto found = column(headings, heading)) return *found;
    throw WrongCall("the table has no column " + std::string(heading));
}

std::vector<std::size_t> needed(std::span<const std::string> headings, const Texts& all) {
    std::vector<std::size_t> columns;
    for (const std::string& heading : all) columns.push_back(needed(headings, heading));
    return columns;
}

Texts quantities_of(const Question& question, std::span<const std::string> headings) {
    Texts all(always.begin(), always.end());
    for (const std::string_view heading : if_there) {
        if (!question.of.empty() || column(headings, heading)) all.emplace_back(heading);
    }
    if (question.of.empty()) return all;
    for (const std::string& asked : question.of) {
        if (!holds(all, asked)) {
            throw WrongCall("no quantity is " + asked + "; there are " + joined(all));
        }
    }
    return question.of;
}

// Replicas of one state are the same peak of the same sample, weighted and cut in the same way,
// unless the user has named the column in which they differ.
Texts alike_of(const Question& question, std::span<const std::string> headings) {
    Texts alike{column(headings, "label") ? "label" : "pdf"};
    alike.insert(alike.end(), {"sample", "weight", "peak", "shift", "shift_min"});
    std::erase_if(alike, [&](const std::string& heading) {
        return !column(headings, heading) || question.by == heading ||
               holds(question.each, heading) || holds(question.window, heading);
    });
    return alike;
}

Columns columns_of(const Question& question, std::span<const std::string> headings,
                   const Study& study) {
    return {.by = needed(headings, question.by),
            .pair = needed(headings, question.pair.empty() ? question.by : question.pair),
            .rmin = needed(headings, "rmin"),
            .rmax = needed(headings, "rmax"),
            .pdf = column(headings, "pdf"),
            .status = column(headings, "status"),
            .message = column(headings, "message"),
            .file = column(headings, "file"),
            .each = needed(headings, question.each),
            .window = needed(headings, question.window),
            .alike = needed(headings, study.alike),
            .quantities = needed(headings, study.quantities)};
}

// Two rows, or two states, that differ in a column are not for one mean, or for one difference.
void require_alike(const std::string& name, const std::string& heading, const std::string& cell,
                   const std::string& other, const Question& question) {
    if (cell == other || key_of(cell) == key_of(other)) return;
    std::string option = "--each " + heading;
    if (heading.starts_with("shift")) {
        Texts window = question.window;
        window.push_back(heading);
        option += " or --window " + joined(window);
    }
    throw Failure(name + ": " + heading + " is \"" + cell + "\" and \"" + other + "\" (use " +
                  option + ')');
}

void require_overlap(const std::string& name, const Extent& rmin, const Extent& rmax) {
    if (rmin.most <= rmax.least) return;
    throw Failure(name + ": windows do not overlap: one begins at rmin " +
                  text_of({rmin.most, rmin.most}) + ", one ends at rmax " +
                  text_of({rmax.least, rmax.least}) +
                  " (name the column that tells the peaks apart with --each)");
}

// The columns with what stands in them, for messages.
std::string named(const Texts& headings, const Texts& cells) {
    std::string name;
    for (std::size_t i = 0; i < headings.size(); ++i) {
        name += (name.empty() ? "" : ", ") + headings[i] + ' ' + cells[i];
    }
    return name;
}

Texts cells_of(const Texts& row, std::span<const std::size_t> columns) {
    Texts cells;
    for (const std::size_t column : columns) cells.push_back(row[column]);
    return cells;
}

// The state that the row belongs to, made if it is new.
State& state_of(Taking& taking, const Texts& row) {
    const Columns& at = taking.at;
    auto& combinations = taking.study.combinations;
    const Texts cells = cells_of(row, at.each);
    Texts keys;
    std::ranges::transform(cells, std::back_inserter(keys), key_of);
    const auto [each, is_new] = taking.combinations.try_emplace(keys, combinations.size());
    if (is_new)
        combinations.push_back({.cells = cells, .name = named(taking.question.each, cells)});
    auto& [ignored, prefix, states] = combinations[each->second];
    keys.push_back(key_of(row[at.by]));
    const auto [state, is_new_state] = taking.states.try_emplace(std::move(keys), states.size());
    if (is_new_state) {
        const std::string name = named({taking.question.by}, {row[at.by]});
        states.push_back({.cell = row[at.by],
                          .name = prefix.empty() ? name : prefix + ", " + name,
                          .alike = cells_of(row, at.alike)});
    }
    return states[state->second];
}

// Adds a row of the table to its state.
void take(Taking& taking, const Texts& row, const std::string& row_name) {
    const Columns& at = taking.at;
    const auto number_in = [&](std::size_t column) {
        if (const auto value = value_of(row[column])) return *value;
        throw Failure(row_name + ": " + taking.headings[column] + " is no number: \"" +
                      row[column] + '"');
    };
    State& state = state_of(taking, row);
    for (std::size_t i = 0; i < at.alike.size(); ++i) {
        require_alike(state.name, taking.study.alike[i], state.alike[i], row[at.alike[i]],
                      taking.question);
    }
    std::vector<double> shift;
    for (const std::size_t column : at.window) shift.push_back(number_in(column));
    const auto [place, is_new] = state.moved.try_emplace(std::move(shift));
    Moved& moved = place->second;
    std::string window = row[at.rmin] + " to " + row[at.rmax];
    if (at.pdf) window += " of pdf " + row[*at.pdf];
    if (is_new) {
        moved.name = named(taking.question.window, cells_of(row, at.window));
        moved.window = window;
    } else if (state.other_windows.empty() && window != moved.window) {
        state.other_windows = moved.window + ", " + window;
    }
    include(moved.rmin, number_in(at.rmin));
    include(moved.rmax, number_in(at.rmax));
    require_overlap(state.name, moved.rmin, moved.rmax);
    if (at.file && at.pdf) {
        const std::string file = row[*at.file] + ", pdf " + row[*at.pdf];
        if (!moved.files.insert(file).second && state.twice.empty()) state.twice = file;
    }
    const bool is_narrow = at.message && row[*at.message].find(too_narrow) != std::string::npos;
    Replica& replica = moved.replicas.emplace_back();
    replica.pair = key_of(row[at.pair]);
    for (std::size_t q = 0; q < at.quantities.size(); ++q) {
        const std::string& quantity = taking.study.quantities[q];
        const bool is_empty = holds(if_there, quantity) && row[at.quantities[q]].empty();
        const double value = is_empty ? nan : number_in(at.quantities[q]);
        replica.values.push_back(is_narrow && holds(of_shape, quantity) ? nan : value);
    }
}

}  // namespace

Study study_of(const Question& question, const Results& results) {
    const auto& [headings, next, tell, complain] = results;
    Taking taking{.question = question, .headings = headings};
    taking.study.quantities = quantities_of(question, headings);
    taking.study.alike = alike_of(question, headings);
    taking.at = columns_of(question, headings, taking.study);
    const Columns& at = taking.at;
    std::vector<std::size_t> names = at.each;
    names.push_back(at.by);
    std::size_t failed = 0;
    std::size_t messages = 0;
    std::size_t nameless = 0;
    std::string first;
    std::string first_nameless;
    Texts row;
    for (std::size_t number = 1; next(row); ++number) {
        const std::string name = "row " + std::to_string(number);
        if (row.size() > headings.size()) throw Failure(name + ": more fields than headings");
        if (at.status && row[*at.status] != "ok") {
            ++failed;
            continue;
        }
        const auto is_empty = [&](std::size_t column) { return key_of(row[column]).empty(); };
        if (const auto empty = std::ranges::find_if(names, is_empty); empty != names.end()) {
            if (nameless++ == 0) first_nameless = name + ": " + headings[*empty] + " is empty";
            continue;
        }
        if (at.message && !row[*at.message].empty() && messages++ == 0) {
            first = name + ": " + row[*at.message];
        }
        take(taking, row, name);
    }
    if (failed > 0) tell("rows that failed, left out: " + std::to_string(failed));
    if (nameless > 0) {
        complain("rows of no state, left out: " + std::to_string(nameless) + ", the first is " +
                 first_nameless);
    }
    if (messages > 0) {
        tell("rows with a message: " + std::to_string(messages) + ", the first is " + first);
    }
    if (taking.study.combinations.empty()) throw Failure("no results in the table");
    return std::move(taking.study);
}

std::string key_of(const std::string& cell) {
    std::string text(textio::trimmed(cell));
    const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
    const auto number = value_of(text);
    if (!number || !std::isfinite(*number) || std::ranges::count_if(text, is_digit) > 15) {
        return text;
    }
    const double value = *number == 0 ? 0 : *number;  // -0 is 0
    std::array<char, 32> shortest{};
    return {shortest.data(), std::to_chars(shortest.begin(), shortest.end(), value).ptr};
}

const State* state_named(const std::string& name, const Combination& among) {
    const auto is_meant = [&](const State& state) { return key_of(state.cell) == key_of(name); };
    const auto found = std::ranges::find_if(among.states, is_meant);
    return found == among.states.end() ? nullptr : &*found;
}

std::string cells_of(const Combination& combination) {
    std::string all;
    for (const State& state : combination.states) {
        if (all.size() < 200) all += (all.empty() ? "" : ", ") + state.cell;
    }
    return all;
}

void require_comparable(const State& a, const State& b, const Study& study,
                        const Question& question) {
    const std::string name = a.name + ", " + b.name;
    for (std::size_t i = 0; i < study.alike.size(); ++i) {
        const bool may_differ = study.alike[i] == "sample" || study.alike[i] == "pdf";
        if (!may_differ) require_alike(name, study.alike[i], a.alike[i], b.alike[i], question);
    }
    for (const auto& [shift, moved] : a.moved) {
        const Moved* const other = moved_of(b, shift);
        if (other == nullptr) continue;
        Extent rmin = moved.rmin;
        Extent rmax = moved.rmax;
        include(rmin, other->rmin);
        include(rmax, other->rmax);
        require_overlap(name, rmin, rmax);
    }
}

const Moved* moved_of(const State& state, const std::vector<double>& shift) {
    const auto found = state.moved.find(shift);
    return found == state.moved.end() ? nullptr : &found->second;
}

void include(Extent& extent, const Extent& other) {
    include(extent, other.least);
    include(extent, other.most);
}

std::string text_of(const Extent& extent) {
    std::array<char, 64> text{};
    const auto shortest = [&](double value) {
        return std::string(text.data(), std::to_chars(text.begin(), text.end(), value).ptr);
    };
    const std::string least = shortest(extent.least);
    return extent.least == extent.most ? least : least + " to " + shortest(extent.most);
}

}  // namespace dorvek::tools
