#include "states.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <map>
#include <set>
#include <string_view>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "doubts.hpp"
#include "failure.hpp"
#include "textio/lines.hpp"
#include "uncertainty.hpp"

namespace dorvek::tools {
namespace {

using Texts = std::vector<std::string>;

constexpr std::array<std::string_view, 13> always{"CN",   "Rmea", "Rmod", "var",  "varl",
                                                  "varr", "adif", "arat", "pmo3", "skew",
                                                  "pmo4", "kurt", "cum4"};
constexpr std::array<std::string_view, 2> if_there{"Rmed", "Rtop"};  // they may have empty cells

// What is nothing but 0 where the unit of r is too large.
constexpr std::array<std::string_view, 5> of_shape{"pmo3", "skew", "pmo4", "kurt", "cum4"};

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// The least and the most of some numbers.
struct Extent {
    double least = std::numeric_limits<double>::infinity();
    double most = -std::numeric_limits<double>::infinity();
};

struct Replica {
    std::string pair{};
    std::vector<double> values{};  // of the quantities asked for
};

// The replicas of a state at one shift of their windows.
struct Moved {
    std::string name{};    // the shift with its column, for messages
    std::string window{};  // that of the first replica
    Extent rmin{};
    Extent rmax{};
    std::set<std::string> files{};  // with the partial
    std::vector<Replica> replicas{};
};

struct State {
    std::string cell{};           // what its rows have in common
    std::string name{};           // with column and combination, for messages
    Texts alike{};                // cells that must not differ
    std::string other_windows{};  // the first two that differ at one shift, if any do
    std::string twice{};          // the first file and partial that stands twice
    std::map<std::vector<double>, Moved> moved{};  // by their shifts
};

// The states that agree in the --each columns, in the order met.
struct Combination {
    Texts cells{};
    std::string name{};  // with the columns, for messages
    std::vector<State> states{};
    std::unordered_map<std::string, std::size_t> numbers{};  // of the states, by their cells
};

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

struct Study {
    const Question& question;
    const Results& results;
    Texts quantities{};  // the headings of what is averaged
    Columns columns{};
    std::vector<Combination> combinations{};
    std::map<Texts, std::size_t> numbers{};  // of the combinations, by their cells
};

// One or two states at one shift: the samples of each quantity and, in pairs, of its differences.
struct Samples {
    std::vector<Sample> a{};
    std::vector<Sample> b{};
    std::vector<Sample> differences{};
    Texts pairs{};  // ascending
};

// What one block of lines is about: a state, or the difference of two.
struct Subject {
    Texts cells{};
    std::string name{};
    const State* a = nullptr;
    const State* b = nullptr;
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

bool same_number(const std::string& a, const std::string& b) {
    const auto number = value_of(a);
    return number && number == value_of(b);
}

void include(Extent& extent, double value) {
    extent.least = std::min(extent.least, value);
    extent.most = std::max(extent.most, value);
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

std::optional<std::size_t> column(const Study& study, std::string_view heading) {
    const auto headings = study.results.headings;
    const auto found = std::ranges::find(headings, heading);
    if (found == headings.end()) return {};
    return static_cast<std::size_t>(found - headings.begin());
}

std::size_t needed(const Study& study, std::string_view heading) {
    if (const auto found = column(study, heading)) return *found;
    throw WrongCall("the table has no column " + std::string(heading));
}

std::vector<std::size_t> needed(const Study& study, const Texts& headings) {
    std::vector<std::size_t> columns;
    for (const std::string& heading : headings) columns.push_back(needed(study, heading));
    return columns;
}

Texts quantities_of(const Study& study) {
    Texts all(always.begin(), always.end());
    for (const std::string_view heading : if_there) {
        if (!study.question.of.empty() || column(study, heading)) all.emplace_back(heading);
    }
    if (study.question.of.empty()) return all;
    for (const std::string& asked : study.question.of) {
        if (!holds(all, asked)) {
            throw WrongCall("no quantity is " + asked + "; there are " + joined(all));
        }
    }
    return study.question.of;
}

// Replicas of one state are the same peak of the same sample, weighted and cut in the same way,
// unless the user has named the column in which they differ.
std::vector<std::size_t> alike_columns(const Study& study) {
    const Question& question = study.question;
    const std::string_view partial = column(study, "label") ? "label" : "pdf";
    std::vector<std::size_t> columns;
    for (const std::string_view heading :
         {partial, std::string_view("sample"), std::string_view("weight"), std::string_view("peak"),
          std::string_view("shift"), std::string_view("shift_min")}) {
        const bool named = question.by == heading || holds(question.each, heading) ||
                           holds(question.window, heading);
        if (const auto found = column(study, heading); found && !named) columns.push_back(*found);
    }
    return columns;
}

Columns columns_of(const Study& study) {
    const Question& question = study.question;
    return {.by = needed(study, question.by),
            .pair = needed(study, question.pair.empty() ? question.by : question.pair),
            .rmin = needed(study, "rmin"),
            .rmax = needed(study, "rmax"),
            .pdf = column(study, "pdf"),
            .status = column(study, "status"),
            .message = column(study, "message"),
            .file = column(study, "file"),
            .each = needed(study, question.each),
            .window = needed(study, question.window),
            .alike = alike_columns(study),
            .quantities = needed(study, study.quantities)};
}

// Two rows, or two states, that differ in a column are not for one mean, or for one difference.
[[noreturn]] void refuse(const Study& study, const std::string& name, std::size_t column,
                         const std::string& cell, const std::string& other) {
    const std::string& heading = study.results.headings[column];
    std::string option = "--each " + heading;
    if (heading.starts_with("shift")) {
        Texts window = study.question.window;
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
State& state_of(Study& study, const Texts& row) {
    const Question& question = study.question;
    const Columns& at = study.columns;
    Texts cells = cells_of(row, at.each);
    const auto [combination, is_new] = study.numbers.try_emplace(cells, study.combinations.size());
    if (is_new) {
        std::string name = named(question.each, cells);
        study.combinations.push_back({.cells = std::move(cells), .name = std::move(name)});
    }
    auto& [each, prefix, states, numbers] = study.combinations[combination->second];
    const auto [state, is_new_state] = numbers.try_emplace(row[at.by], states.size());
    if (is_new_state) {
        const std::string name = named({question.by}, {row[at.by]});
        states.push_back({.cell = row[at.by],
                          .name = prefix.empty() ? name : prefix + ", " + name,
                          .alike = cells_of(row, at.alike)});
    }
    return states[state->second];
}

// Adds a row of the table to its state.
void take(Study& study, const Texts& row, std::size_t number) {
    const Columns& at = study.columns;
    const auto number_in = [&](std::size_t column) {
        if (const auto value = value_of(row[column])) return *value;
        throw Failure("row " + std::to_string(number) + ": " + study.results.headings[column] +
                      " is no number: \"" + row[column] + '"');
    };
    State& state = state_of(study, row);
    for (std::size_t i = 0; i < at.alike.size(); ++i) {
        const std::string& cell = row[at.alike[i]];
        if (cell != state.alike[i] && !same_number(cell, state.alike[i])) {
            refuse(study, state.name, at.alike[i], state.alike[i], cell);
        }
    }
    std::vector<double> shift;
    for (const std::size_t column : at.window) shift.push_back(number_in(column));
    std::string window = row[at.rmin] + " to " + row[at.rmax];
    if (at.pdf) window += " of pdf " + row[*at.pdf];
    const auto [place, is_new] = state.moved.try_emplace(std::move(shift));
    Moved& moved = place->second;
    if (is_new) {
        moved.name = named(study.question.window, cells_of(row, at.window));
        moved.window = window;
    }
    if (state.other_windows.empty() && window != moved.window) {
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
    Replica replica{.pair = row[at.pair]};
    for (std::size_t q = 0; q < study.quantities.size(); ++q) {
        const std::size_t column = at.quantities[q];
        const bool is_empty = holds(if_there, study.quantities[q]) && row[column].empty();
        const double value = is_empty ? nan : number_in(column);
        replica.values.push_back(is_narrow && holds(of_shape, study.quantities[q]) ? nan : value);
    }
    moved.replicas.push_back(std::move(replica));
}

// Takes all rows that did not fail.
void take_all(Study& study) {
    const Columns& at = study.columns;
    const auto& [headings, next, tell, complain] = study.results;
    std::size_t failed = 0;
    std::size_t messages = 0;
    std::string first;
    Texts row;
    for (std::size_t number = 1; next(row); ++number) {
        const std::string name = "row " + std::to_string(number);
        if (row.size() > headings.size()) throw Failure(name + ": more fields than headings");
        if (at.status && row[*at.status] != "ok") {
            ++failed;
            continue;
        }
        if (at.message && !row[*at.message].empty() && messages++ == 0) {
            first = name + ": " + row[*at.message];
        }
        take(study, row, number);
    }
    if (failed > 0) tell("rows that failed, left out: " + std::to_string(failed));
    if (messages > 0) {
        tell("rows with a message: " + std::to_string(messages) + ", the first is " + first);
    }
    if (study.combinations.empty()) throw Failure("no results in the table");
}

// The state that the user names: by the text of its cell or, if none has it, by the number in it.
// None if the combination lacks it, which `all` then shows.
const State* state_named(const std::string& name, const Study& study, const Combination& among,
                         std::string& all) {
    const State* found = nullptr;
    std::vector<const State*> alike;
    all = "; there are ";
    for (const State& state : among.states) {
        if (state.cell == name) {
            found = &state;
        } else if (same_number(state.cell, name)) {
            alike.push_back(&state);
        }
        if (all.size() < 200) all += (&state == among.states.data() ? "" : ", ") + state.cell;
    }
    if (found == nullptr && alike.size() > 1) {
        throw Failure("more than one " + study.question.by + " is " + name + all);
    }
    if (found == nullptr) return alike.empty() ? nullptr : alike[0];
    for (const State* other : alike) {
        study.results.tell(found->name + " does not include " + other->name);
    }
    return found;
}

const Moved* moved_of(const State& state, const std::vector<double>& shift) {
    const auto found = state.moved.find(shift);
    return found == state.moved.end() ? nullptr : &found->second;
}

// The two states of a difference must not differ in more than what the user names.
void require_comparable(const Study& study, const Subject& subject) {
    for (std::size_t i = 0; i < study.columns.alike.size(); ++i) {
        const std::size_t column = study.columns.alike[i];
        const std::string& heading = study.results.headings[column];
        const std::string& a = subject.a->alike[i];
        const std::string& b = subject.b->alike[i];
        const bool may_differ = heading == "sample" || heading == "pdf";
        if (!may_differ && a != b && !same_number(a, b)) {
            refuse(study, subject.name, column, a, b);
        }
    }
    for (const auto& [shift, moved] : subject.a->moved) {
        const Moved* const other = moved_of(*subject.b, shift);
        if (other == nullptr) continue;
        Extent rmin = moved.rmin;
        Extent rmax = moved.rmax;
        include(rmin, other->rmin);
        include(rmax, other->rmax);
        require_overlap(subject.name, rmin, rmax);
    }
}

// The replicas of a state by their pair.
std::unordered_map<std::string_view, const Replica*> partners_in(const State& state,
                                                                 const Moved& moved) {
    std::unordered_map<std::string_view, const Replica*> partners;
    for (const Replica& replica : moved.replicas) {
        if (!replica.pair.empty() && !partners.emplace(replica.pair, &replica).second) {
            throw Failure(state.name + ": more than one row of the pair " + replica.pair);
        }
    }
    return partners;
}

void add(std::vector<Sample>& samples, const std::vector<double>& values) {
    samples.resize(values.size());
    for (std::size_t q = 0; q < values.size(); ++q) add(samples[q], values[q]);
}

// The subject at one shift of its windows, if it has replicas, or pairs, there.
std::optional<Samples> samples_of(const Study& study, const Subject& subject,
                                  const std::vector<double>& shift) {
    const Moved* const a = moved_of(*subject.a, shift);
    const Moved* const b = subject.b == nullptr ? nullptr : moved_of(*subject.b, shift);
    if (a == nullptr || (b == nullptr && subject.b != nullptr)) return {};
    Samples samples;
    if (b == nullptr || study.question.pair.empty()) {
        for (const Replica& replica : a->replicas) add(samples.a, replica.values);
        if (b == nullptr) return samples;
        for (const Replica& replica : b->replicas) add(samples.b, replica.values);
        return samples;
    }
    const auto of_a = partners_in(*subject.a, *a);
    const auto of_b = partners_in(*subject.b, *b);
    for (const Replica& replica : a->replicas) {
        const auto partner = of_b.find(replica.pair);
        if (partner == of_b.end()) continue;
        std::vector<double> differences = partner->second->values;
        for (std::size_t q = 0; q < differences.size(); ++q) differences[q] -= replica.values[q];
        add(samples.a, replica.values);
        add(samples.b, partner->second->values);
        add(samples.differences, differences);
        samples.pairs.push_back(replica.pair);
    }
    if (samples.pairs.empty()) return {};
    std::ranges::sort(samples.pairs);
    return samples;
}

Estimate estimate_of(const Samples& samples, std::size_t q) {
    if (!samples.differences.empty()) return mean_of(samples.differences[q]);
    return samples.b.empty() ? mean_of(samples.a[q]) : difference_of(samples.a[q], samples.b[q]);
}

// Whether two shifts have as many replicas, or the same pairs.
bool correspond(const Samples& one, const Samples& other) {
    const auto n = [](const std::vector<Sample>& samples) {
        return samples.empty() ? 0 : samples[0].n;
    };
    return n(one.a) == n(other.a) && n(one.b) == n(other.b) && one.pairs == other.pairs;
}

// The headings of those quantities for which `is_meant` holds, for messages.
template <typename IsMeant>
std::string those(const Study& study, IsMeant is_meant) {
    std::string all;
    for (std::size_t q = 0; q < study.quantities.size(); ++q) {
        if (is_meant(q)) all += ' ' + study.quantities[q];
    }
    return all;
}

// Says what the reader of the numbers has to know of a state.
void tell_doubts(const Study& study, const State& state, const std::vector<Sample>& samples) {
    const auto& tell = study.results.tell;
    if (!state.other_windows.empty()) tell(state.name + ": windows differ: " + state.other_windows);
    if (!state.twice.empty()) tell(state.name + ": more than one row of " + state.twice);
    if (samples[0].n < 2) tell(state.name + ": fewer than two replicas, no standard errors");
    const std::string bad =
        those(study, [&](std::size_t q) { return std::isnan(samples[q].mean); });
    if (!bad.empty()) tell(state.name + ": NaN or INF among the values of" + bad);
}

// The values at other shifts than 0, for each quantity; `windows` become those of all shifts.
std::vector<std::vector<double>> values_elsewhere(const Study& study, const Subject& subject,
                                                  const Samples& proposed, std::string& windows) {
    std::map<std::vector<double>, std::string> shifts;
    for (const State* state : {subject.a, subject.b}) {
        if (state == nullptr) continue;
        for (const auto& [shift, moved] : state->moved) shifts.emplace(shift, moved.name);
    }
    std::vector<std::vector<double>> values(study.quantities.size());
    Extent rmin;
    Extent rmax;
    Texts left_out;
    for (const auto& [shift, name] : shifts) {
        const auto samples = samples_of(study, subject, shift);
        if (!samples || !correspond(*samples, proposed)) {
            left_out.push_back(name);
            continue;
        }
        for (std::size_t q = 0; q < values.size(); ++q) {
            values[q].push_back(estimate_of(*samples, q).value);
        }
        for (const State* state : {subject.a, subject.b}) {
            if (state == nullptr) continue;
            include(rmin, state->moved.at(shift).rmin);
            include(rmax, state->moved.at(shift).rmax);
        }
    }
    if (!left_out.empty()) {
        study.results.tell(subject.name + ": shifts of other replicas than shift 0, left out: " +
                           std::to_string(left_out.size()) + ", the first is " + left_out[0]);
    }
    const std::string bad = those(study, [&](std::size_t q) {
        const auto is_nan = [](double value) { return std::isnan(value); };
        return !is_nan(estimate_of(proposed, q).value) && std::ranges::any_of(values[q], is_nan);
    });
    if (!bad.empty()) {
        study.results.tell(subject.name + ": NaN or INF at another shift among the values of" +
                           bad);
    }
    windows = "rmin " + text_of(rmin) + ", rmax " + text_of(rmax);
    return values;
}

Texts headings_of(const Question& question) {
    Texts headings = question.each;
    if (question.compare.empty()) {
        headings.insert(headings.end(), {question.by, "quantity", "n", "mean", "sd", "se"});
    } else {
        headings.insert(headings.end(), {"quantity", "A", "B", "difference", "se"});
    }
    if (!question.window.empty()) {
        headings.insert(headings.end(), {"window", "u", "doff", "U95"});
    } else if (question.compare.empty()) {
        headings.emplace_back("ci95");
    } else {
        headings.insert(headings.end(), {"ci95", "doff", "stud", "sgfc", "holm"});
    }
    return headings;
}

// Adds a line for each quantity, under these headings. Of fewer than two replicas nothing but the
// means is known, and what they move with the window.
void add_lines(const Study& study, const Subject& subject, const Samples& samples,
               const std::vector<std::vector<double>>& elsewhere, Answer& answer) {
    const bool is_difference = subject.b != nullptr;
    const bool has_budget = !study.question.window.empty();
    const bool has_error = samples.a[0].n > 1 && (!is_difference || samples.b[0].n > 1);
    std::vector<double> significances;
    const std::size_t first = answer.lines.size();
    for (std::size_t q = 0; q < study.quantities.size(); ++q) {
        Answer::Line& line = answer.lines.emplace_back();
        line.cells = subject.cells;
        line.cells.push_back(study.quantities[q]);
        const auto put = [&](bool is_known, std::initializer_list<double> more) {
            for (const double number : more) {
                line.numbers.push_back(is_known ? std::optional(number) : std::nullopt);
            }
        };
        const Estimate estimate = estimate_of(samples, q);
        const Sample& of_a = samples.a[q];
        if (is_difference) {
            put(true, {of_a.mean, samples.b[q].mean, estimate.value});
        } else {
            put(true, {of_a.n, of_a.mean});
            put(has_error, {sd_of(of_a)});
        }
        put(has_error, {estimate.se});
        if (has_budget) {
            const auto [window, u, doff, U95] = budget_of(estimate, elsewhere[q]);
            put(true, {window});
            put(has_error && u != 0, {u, doff, U95});
            continue;
        }
        put(has_error, {ci95_of(estimate.se, estimate.doff)});
        if (!is_difference) continue;
        const double t = estimate.value / estimate.se;
        significances.push_back(has_error ? significance_of(t, estimate.doff) : nan);
        put(has_error, {estimate.doff, t, significances.back()});
    }
    const std::vector<double> adjusted = holm(significances);
    for (std::size_t q = 0; q < adjusted.size(); ++q) {
        answer.lines[first + q].numbers.push_back(has_error ? std::optional(adjusted[q])
                                                            : std::nullopt);
    }
}

// Leaves a combination out that cannot be compared; if there is but one, that is all.
void leave_out(const Study& study, const Combination& combination, const std::string& why) {
    if (study.question.each.empty()) throw Failure(why);
    study.results.complain(combination.name + ": " + why + ", left out");
}

// The subjects of a combination: its states, or the difference of two if it has both.
std::vector<Subject> subjects_of(const Study& study, const Combination& combination) {
    const Question& question = study.question;
    std::vector<Subject> subjects;
    if (question.compare.empty()) {
        for (const State& state : combination.states) {
            Texts cells = combination.cells;
            cells.push_back(state.cell);
            subjects.push_back({.cells = std::move(cells), .name = state.name, .a = &state});
        }
        return subjects;
    }
    std::array<const State*, 2> states{};
    for (std::size_t i = 0; i < states.size(); ++i) {
        std::string all;
        states[i] = state_named(question.compare[i], study, combination, all);
        if (states[i] == nullptr) {
            leave_out(study, combination, "no " + question.by + " is " + question.compare[i] + all);
            return {};
        }
    }
    const auto [a, b] = states;
    if (a == b) throw Failure(a->name + " is compared with itself");
    subjects.push_back(
        {.cells = combination.cells, .name = a->name + ", " + b->name, .a = a, .b = b});
    require_comparable(study, subjects[0]);
    return subjects;
}

// Says what there is to say of the replicas at the windows proposed.
void tell_doubts(const Study& study, const Subject& subject, const Samples& samples,
                 const std::vector<double>& proposed) {
    const auto& tell = study.results.tell;
    const Moved& a = subject.a->moved.at(proposed);
    if (subject.b == nullptr) return tell_doubts(study, *subject.a, samples.a);
    const Moved& b = subject.b->moved.at(proposed);
    const std::size_t rows = a.replicas.size() + b.replicas.size();
    if (const std::size_t pairs = samples.pairs.size(); pairs > 0 && rows > 2 * pairs) {
        tell("rows without a partner, left out: " + std::to_string(rows - 2 * pairs));
    }
    tell_doubts(study, *subject.a, samples.a);
    tell_doubts(study, *subject.b, samples.b);
    if (a.window != b.window) {
        tell(subject.name + ": windows differ: " + a.window + ", " + b.window);
    }
}

// Adds what is asked of a combination to the answer.
void answer_for(const Study& study, const Combination& combination, Answer& answer) {
    const std::vector<double> proposed(study.question.window.size());
    std::vector<std::pair<std::string, std::string>> windows;  // of each subject
    for (const Subject& subject : subjects_of(study, combination)) {
        for (const State* state : {subject.a, subject.b}) {
            if (state != nullptr && moved_of(*state, proposed) == nullptr) {
                throw Failure(state->name + ": no rows at shift 0, the windows proposed");
            }
        }
        const auto samples = samples_of(study, subject, proposed);
        if (!samples) {
            leave_out(study, combination,
                      "no pairs of " + subject.a->name + " and " + subject.b->name);
            continue;
        }
        tell_doubts(study, subject, *samples, proposed);
        std::vector<std::vector<double>> elsewhere;
        if (!proposed.empty()) {
            windows.emplace_back(subject.name, "");
            elsewhere = values_elsewhere(study, subject, *samples, windows.back().second);
        }
        add_lines(study, subject, *samples, elsewhere, answer);
    }
    const auto differs = [&](const auto& one) { return one.second != windows[0].second; };
    if (!windows.empty() && std::ranges::none_of(windows, differs)) {
        windows.resize(1);
        windows[0].first = combination.name;
    }
    for (const auto& [name, text] : windows) {
        study.results.tell(std::string(name).append(name.empty() ? "" : ": ") + "windows: " + text);
    }
}

}  // namespace

Answer answer_of(const Question& question, const Results& results) {
    Study study{.question = question, .results = results};
    study.quantities = quantities_of(study);
    study.columns = columns_of(study);
    Answer answer{.headings = headings_of(question)};
    Texts asked = answer.headings;
    asked.insert(asked.end(), question.window.begin(), question.window.end());
    asked.insert(asked.end(), study.quantities.begin(), study.quantities.end());
    std::ranges::sort(asked);
    if (const auto twice = std::ranges::adjacent_find(asked); twice != asked.end()) {
        throw WrongCall(*twice + " is asked for twice");
    }
    take_all(study);
    for (const Combination& combination : study.combinations) {
        answer_for(study, combination, answer);
    }
    if (answer.lines.empty()) throw Failure("nothing is left to compare");
    return answer;
}

}  // namespace dorvek::tools
