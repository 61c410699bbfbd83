#include "answer.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <map>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "failure.hpp"
#include "uncertainty.hpp"

namespace dorvek::tools {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// What every part of an answer looks at.
struct Asked {
    const Question& question;
    const Results& results;
    const Study& study;
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
std::optional<Samples> samples_of(const Asked& asked, const Subject& subject,
                                  const std::vector<double>& shift) {
    const Moved* const a = moved_of(*subject.a, shift);
    const Moved* const b = subject.b == nullptr ? nullptr : moved_of(*subject.b, shift);
    if (a == nullptr || (b == nullptr && subject.b != nullptr)) return {};
    Samples samples;
    if (b == nullptr || asked.question.pair.empty()) {
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
std::string those(const Asked& asked, IsMeant is_meant) {
    std::string all;
    for (std::size_t q = 0; q < asked.study.quantities.size(); ++q) {
        if (is_meant(q)) all += ' ' + asked.study.quantities[q];
    }
    return all;
}

// Says what the reader of the numbers has to know of a state.
void tell_doubts(const Asked& asked, const State& state, const std::vector<Sample>& samples) {
    const auto& tell = asked.results.tell;
    if (!state.other_windows.empty()) tell(state.name + ": windows differ: " + state.other_windows);
    if (!state.twice.empty()) tell(state.name + ": more than one row of " + state.twice);
    if (samples[0].n < 2) tell(state.name + ": fewer than two replicas, no standard errors");
    const std::string bad =
        those(asked, [&](std::size_t q) { return std::isnan(samples[q].mean); });
    if (!bad.empty()) tell(state.name + ": NaN or INF among the values of" + bad);
}

// The values at other shifts than 0, for each quantity; `windows` become those of all shifts.
std::vector<std::vector<double>> values_elsewhere(const Asked& asked, const Subject& subject,
                                                  const Samples& proposed, std::string& windows) {
    std::map<std::vector<double>, std::string> shifts;
    for (const State* state : {subject.a, subject.b}) {
        if (state == nullptr) continue;
        for (const auto& [shift, moved] : state->moved) shifts.emplace(shift, moved.name);
    }
    std::vector<std::vector<double>> values(asked.study.quantities.size());
    Extent rmin;
    Extent rmax;
    Texts left_out;
    for (const auto& [shift, name] : shifts) {
        const auto samples = samples_of(asked, subject, shift);
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
        asked.results.tell(subject.name + ": shifts of other replicas than shift 0, left out: " +
                           std::to_string(left_out.size()) + ", the first is " + left_out[0]);
    }
    const std::string bad = those(asked, [&](std::size_t q) {
        const auto is_nan = [](double value) { return std::isnan(value); };
        return !is_nan(estimate_of(proposed, q).value) && std::ranges::any_of(values[q], is_nan);
    });
    if (!bad.empty()) {
        asked.results.tell(subject.name + ": NaN or INF at another shift among the values of" +
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
void add_lines(const Asked& asked, const Subject& subject, const Samples& samples,
               const std::vector<std::vector<double>>& elsewhere, Answer& answer) {
    const bool is_difference = subject.b != nullptr;
    const bool has_budget = !asked.question.window.empty();
    const bool has_error = samples.a[0].n > 1 && (!is_difference || samples.b[0].n > 1);
    std::vector<double> significances;
    const std::size_t first = answer.lines.size();
    for (std::size_t q = 0; q < asked.study.quantities.size(); ++q) {
        Answer::Line& line = answer.lines.emplace_back();
        line.cells = subject.cells;
        line.cells.push_back(asked.study.quantities[q]);
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
void leave_out(const Asked& asked, const Combination& combination, const std::string& why) {
    if (asked.question.each.empty()) throw Failure(why);
    asked.results.complain(combination.name + ": " + why + ", left out");
}

// The subjects of a combination: its states, or the difference of two if it has both.
std::vector<Subject> subjects_of(const Asked& asked, const Combination& combination) {
    const Question& question = asked.question;
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
        const std::string& name = question.compare[i];
        states[i] = state_named(name, combination);
        if (states[i] == nullptr) {
            leave_out(asked, combination,
                      "no " + question.by + " is " + name + "; there are " + cells_of(combination));
            return {};
        }
    }
    const auto [a, b] = states;
    if (a == b) throw Failure(a->name + " is compared with itself");
    require_comparable(*a, *b, asked.study, question);
    subjects.push_back(
        {.cells = combination.cells, .name = a->name + ", " + b->name, .a = a, .b = b});
    return subjects;
}

// Says what there is to say of the replicas at the windows proposed.
void tell_doubts(const Asked& asked, const Subject& subject, const Samples& samples,
                 const std::vector<double>& proposed) {
    const auto& tell = asked.results.tell;
    const Moved& a = subject.a->moved.at(proposed);
    if (subject.b == nullptr) return tell_doubts(asked, *subject.a, samples.a);
    const Moved& b = subject.b->moved.at(proposed);
    const std::size_t rows = a.replicas.size() + b.replicas.size();
    if (const std::size_t pairs = samples.pairs.size(); pairs > 0 && rows > 2 * pairs) {
        tell("rows without a partner, left out: " + std::to_string(rows - 2 * pairs));
    }
    tell_doubts(asked, *subject.a, samples.a);
    tell_doubts(asked, *subject.b, samples.b);
    if (a.window != b.window) {
        tell(subject.name + ": windows differ: " + a.window + ", " + b.window);
    }
}

// Adds what is asked of a combination to the answer.
void answer_for(const Asked& asked, const Combination& combination, Answer& answer) {
    const std::vector<double> proposed(asked.question.window.size());
    std::vector<std::pair<std::string, std::string>> windows;  // of each subject
    for (const Subject& subject : subjects_of(asked, combination)) {
        for (const State* state : {subject.a, subject.b}) {
            if (state != nullptr && moved_of(*state, proposed) == nullptr) {
                throw Failure(state->name + ": no rows at shift 0, the windows proposed");
            }
        }
        const auto samples = samples_of(asked, subject, proposed);
        if (!samples) {
            leave_out(asked, combination,
                      "no pairs of " + subject.a->name + " and " + subject.b->name);
            continue;
        }
        tell_doubts(asked, subject, *samples, proposed);
        std::vector<std::vector<double>> elsewhere;
        if (!proposed.empty()) {
            windows.emplace_back(subject.name, "");
            elsewhere = values_elsewhere(asked, subject, *samples, windows.back().second);
        }
        add_lines(asked, subject, *samples, elsewhere, answer);
    }
    const auto differs = [&](const auto& one) { return one.second != windows[0].second; };
    if (!windows.empty() && std::ranges::none_of(windows, differs)) {
        windows.resize(1);
        windows[0].first = combination.name;
    }
    for (const auto& [name, text] : windows) {
        asked.results.tell(std::string(name).append(name.empty() ? "" : ": ") + "windows: " + text);
    }
}

}  // namespace

Answer answer_of(const Question& question, const Results& results) {
    Answer answer{.headings = headings_of(question)};
    Texts names = answer.headings;
    names.insert(names.end(), question.window.begin(), question.window.end());
    names.insert(names.end(), question.of.begin(), question.of.end());
    std::ranges::sort(names);
    if (const auto twice = std::ranges::adjacent_find(names); twice != names.end()) {
        throw WrongCall(*twice + " is asked for twice");
    }
    const Study study = study_of(question, results);
    const Asked asked{.question = question, .results = results, .study = study};
    for (const Combination& combination : study.combinations) {
        answer_for(asked, combination, answer);
    }
    if (answer.lines.empty()) throw Failure("nothing is left to compare");
    return answer;
}

}  // namespace dorvek::tools
