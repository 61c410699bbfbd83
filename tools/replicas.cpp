// dorvek-replicas: means over independent replicas, with errors that can be published.
//
// Terms and formulas are those of Grossfield et al., "Best practices for quantification of
// uncertainty and sampling quality in molecular simulations", LiveCoMS 1 (2018) 5067.

#include <algorithm>
#include <array>
#include <boost/math/distributions/students_t.hpp>
#include <charconv>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "csv.hpp"
#include "program.hpp"
#include "results.hpp"
#include "textio/lines.hpp"

namespace {

using namespace dorvek::tools;
using boost::math::students_t;

constexpr std::array<std::string_view, 13> quantities{"CN",   "Rmea", "Rmod", "var",  "varl",
                                                      "varr", "adif", "arat", "pmo3", "skew",
                                                      "pmo4", "kurt", "cum4"};

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// One value for each quantity.
template <typename Value>
using Each = std::array<Value, quantities.size()>;

struct Call {
    std::string by;
    std::string pair;                  // empty: no pairs
    std::vector<std::string> compare;  // none, or two states
    std::string table = "-";
};

// n observations: their mean, and the sum of the squared deviations from it.
struct Sample {
    double n = 0;
    double mean = 0;
    double squares = 0;
};

struct Replica {
    std::string pair{};
    Each<double> values{};
};

struct State {
    std::string name{};               // with the column, for messages
    std::string cell{};               // what its rows have in common
    std::string window{};             // that of the first row
    std::string other_window{};       // the first that differs, if one does
    Each<Sample> samples{};           // of all its replicas, or of those in pairs
    std::vector<Replica> replicas{};  // kept for pairs only
};

// A difference of two means, its standard error and degrees of freedom.
struct Difference {
    double mean;
    double se;
    double doff;
};

// Updates mean and deviations by one observation (Welford 1962). Equal values deviate by exactly
// nothing. Not a number and infinity both make the mean not a number, in whatever order they come.
void add(Sample& sample, double value) {
    if (!std::isfinite(value)) value = nan;
    const double deviation = value - sample.mean;
    sample.n += 1;
    sample.mean += deviation / sample.n;
    sample.squares += deviation * (value - sample.mean);
}

// The experimental standard deviation, with n - 1.
double sd_of(const Sample& sample) {
    return std::sqrt(sample.squares / (sample.n - 1));
}

// The standard error, or experimental standard deviation of the mean.
double se_of(const Sample& sample) {
    return sd_of(sample) / std::sqrt(sample.n);
}

// Half the width of the 95 % confidence interval.
double ci95_of(double se, double doff) {
    return doff > 0 ? se * quantile(complement(students_t(doff), 0.025)) : nan;
}

// The two-tailed significance of Student's t.
double significance(double t, double doff) {
    if (std::isnan(t) || !(doff > 0)) return nan;
    return 2 * cdf(complement(students_t(doff), std::abs(t)));
}

// By Welch's test, for unequal variances (Welch 1947, Satterthwaite 1946).
Difference without_pairs(const Sample& a, const Sample& b) {
    const double u = se_of(a) * se_of(a);
    const double v = se_of(b) * se_of(b);
    return {.mean = b.mean - a.mean,
            .se = std::sqrt(u + v),
            .doff = (u + v) * (u + v) / (u * u / (a.n - 1) + v * v / (b.n - 1))};
}

// By the t-test of the mean of the pairs' differences.
Difference with_pairs(const Sample& differences) {
    return {.mean = differences.mean, .se = se_of(differences), .doff = differences.n - 1};
}

// The number in the cell, if it is one. In double precision, for small differences of six digits
// are wanted.
std::optional<double> value_of(const std::string& cell) {
    const std::string_view text = dorvek::textio::trimmed(cell);
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

std::string text_of(double value) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value > 0 ? "INF" : "-INF";
    std::array<char, 16> text{};
    constexpr auto form = std::chars_format::general;
    return {text.data(), std::to_chars(text.begin(), text.end(), value, form, 6).ptr};
}

std::size_t needed(const TableReader& table, std::string_view heading) {
    if (const auto column = table.column(heading)) return *column;
    throw WrongCall("the table has no column " + std::string(heading));
}

// All states of the table, in the order met.
std::vector<State> states_of(const Call& call) {
    TableReader table(call.table);
    const std::size_t by = needed(table, call.by);
    const std::size_t pair = needed(table, call.pair.empty() ? call.by : call.pair);
    const std::size_t pdf = needed(table, "pdf");
    const std::size_t rmin = needed(table, "rmin");
    const std::size_t rmax = needed(table, "rmax");
    const auto status = table.column("status");
    Each<std::size_t> columns{};
    std::ranges::transform(quantities, columns.begin(),
                           [&](std::string_view heading) { return needed(table, heading); });

    std::vector<State> states;
    std::unordered_map<std::string, std::size_t> numbers;
    std::size_t failed = 0;
    Row row;
    for (std::size_t number = 1; table.next(row); ++number) {
        const auto bad = [&](const std::string& what) {
            return Failure("row " + std::to_string(number) + ": " + what);
        };
        if (row.size() > table.headings().size()) throw bad("more fields than headings");
        if (status && row[*status] != "ok") {
            ++failed;
            continue;
        }
        const std::string window = row[rmin] + " to " + row[rmax] + " of pdf " + row[pdf];
        const auto [known, is_new] = numbers.try_emplace(row[by], states.size());
        if (is_new) {
            states.push_back({.name = call.by + ' ' + row[by], .cell = row[by], .window = window});
        }
        State& state = states[known->second];
        if (state.other_window.empty() && window != state.window) state.other_window = window;
        Replica replica{.pair = row[pair]};
        for (std::size_t q = 0; q < quantities.size(); ++q) {
            const std::string& cell = row[columns[q]];
            const auto value = value_of(cell);
            if (!value) throw bad(std::string(quantities[q]) + " is no number: \"" + cell + '"');
            replica.values[q] = *value;
            add(state.samples[q], *value);
        }
        if (!call.pair.empty()) state.replicas.push_back(std::move(replica));
    }
    if (failed > 0) tell("rows that failed, left out: " + std::to_string(failed));
    if (states.empty()) throw Failure("no results in the table");
    return states;
}

// The state that the user names: by the text of its cell or, if none has it, by the number in it.
State& state_named(const std::string& name, const Call& call, std::vector<State>& states) {
    State* found = nullptr;
    std::vector<State*> alike;
    std::string all;
    for (State& state : states) {
        if (state.cell == name) {
            found = &state;
        } else if (same_number(state.cell, name)) {
            alike.push_back(&state);
        }
        if (all.size() < 200) all += (all.empty() ? "" : ", ") + state.cell;
    }
    if (found == nullptr && alike.size() == 1) return *alike[0];
    if (found == nullptr) {
        const std::string none = alike.empty() ? "no " : "more than one ";
        throw Failure(none + call.by + " is " + name + "; there are " + all);
    }
    for (const State* other : alike) tell(found->name + " does not include " + other->name);
    return *found;
}

// The replicas of a state by their pair.
std::unordered_map<std::string_view, const Replica*> partners_in(const State& state) {
    std::unordered_map<std::string_view, const Replica*> partners;
    for (const Replica& replica : state.replicas) {
        if (!replica.pair.empty() && !partners.emplace(replica.pair, &replica).second) {
            throw Failure(state.name + ": more than one row of the pair " + replica.pair);
        }
    }
    return partners;
}

// The differences of the pairs. The samples of both states become those of the replicas in pairs.
Each<Sample> pair_up(State& a, State& b) {
    const auto of_a = partners_in(a);
    const auto of_b = partners_in(b);
    a.samples = b.samples = {};
    Each<Sample> differences{};
    std::size_t pairs = 0;
    for (const Replica& replica : a.replicas) {
        const auto partner = of_b.find(replica.pair);
        if (partner == of_b.end()) continue;
        ++pairs;
        for (std::size_t q = 0; q < quantities.size(); ++q) {
            const double value = replica.values[q];
            const double other = partner->second->values[q];
            add(a.samples[q], value);
            add(b.samples[q], other);
            add(differences[q], other - value);
        }
    }
    if (pairs == 0) throw Failure("no pairs of " + a.name + " and " + b.name);
    const std::size_t left_out = a.replicas.size() + b.replicas.size() - 2 * pairs;
    if (left_out > 0) tell("rows without a partner, left out: " + std::to_string(left_out));
    return differences;
}

// Says what the reader of the numbers has to know.
void tell_doubts(const State& state) {
    if (!state.other_window.empty()) {
        tell(state.name + ": windows differ: " + state.window + ", " + state.other_window);
    }
    if (state.samples[0].n < 2) tell(state.name + ": fewer than two replicas, no standard errors");
    std::string not_finite;
    for (std::size_t q = 0; q < quantities.size(); ++q) {
        if (std::isnan(state.samples[q].mean)) not_finite += ' ' + std::string(quantities[q]);
    }
    if (!not_finite.empty()) tell(state.name + ": NaN or INF among the values of" + not_finite);
}

// Adds a row: cells, then numbers, which mean nothing of fewer than two replicas and are left
// empty.
void append(std::string& text, Row row, bool enough, std::initializer_list<double> numbers) {
    for (const double number : numbers) row.push_back(enough ? text_of(number) : "");
    append_row(text, row);
}

void write_means(const Call& call, const std::vector<State>& states) {
    std::string text;
    append_row(text, {call.by, "quantity", "n", "mean", "sd", "se", "ci95"});
    for (const State& state : states) {
        tell_doubts(state);
        for (std::size_t q = 0; q < quantities.size(); ++q) {
            const Sample& sample = state.samples[q];
            const std::string n = std::to_string(static_cast<std::size_t>(sample.n));
            const double se = se_of(sample);
            append(text, {state.cell, std::string(quantities[q]), n, text_of(sample.mean)},
                   sample.n > 1, {sd_of(sample), se, ci95_of(se, sample.n - 1)});
        }
        write(text);
        text.clear();
    }
}

void write_comparison(const Call& call, std::vector<State>& states) {
    State& a = state_named(call.compare[0], call, states);
    State& b = state_named(call.compare[1], call, states);
    if (&a == &b) throw Failure(a.name + " is compared with itself");
    const bool in_pairs = !call.pair.empty();
    const Each<Sample> differences = in_pairs ? pair_up(a, b) : Each<Sample>{};
    tell_doubts(a);
    tell_doubts(b);
    if (a.window != b.window) {
        tell(a.name + ", " + b.name + ": windows differ: " + a.window + ", " + b.window);
    }
    std::string text;
    append_row(text, {"quantity", "A", "B", "difference", "se", "ci95", "doff", "stud", "sgfc"});
    for (std::size_t q = 0; q < quantities.size(); ++q) {
        const Sample& of_a = a.samples[q];
        const Sample& of_b = b.samples[q];
        const auto [mean, se, doff] =
            in_pairs ? with_pairs(differences[q]) : without_pairs(of_a, of_b);
        const double t = mean / se;
        append(text,
               {std::string(quantities[q]), text_of(of_a.mean), text_of(of_b.mean), text_of(mean)},
               of_a.n > 1 && of_b.n > 1, {se, ci95_of(se, doff), doff, t, significance(t, doff)});
    }
    write(text);
}

void average(const Call& call) {
    std::vector<State> states = states_of(call);
    if (call.compare.empty()) {
        write_means(call, states);
    } else {
        write_comparison(call, states);
    }
}

void program(int argc, char** argv) {
    CLI::App app("Averages independent replicas: means with errors that can be published.",
                 "dorvek-replicas");
    Call call;
    app.add_option("--by", call.by, "rows equal in this column are replicas\nof one state")
        ->type_name("COLUMN")
        ->required();
    auto* compare =
        app.add_option("--compare", call.compare, "the difference of two states instead, B - A")
            ->type_name("A B")
            ->expected(2)
            ->allow_extra_args(false);
    app.add_option("--pair", call.pair, "rows of A and B equal in this column are pairs")
        ->type_name("COLUMN")
        ->needs(compare);
    app.add_option(
        "TABLE", call.table,
        "what dorvek-batch or dorvek-table wrote;\nstandard input if none or - is named");
    parse(app, argc, argv);
    average(call);
}

}  // namespace

int main(int argc, char** argv) {
    return run(program, argc, argv);
}
