// Rows of results as replicas of states: which of them belong together, and which must not be
// averaged or compared.
#pragma once

#include <functional>
#include <limits>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace dorvek::tools {

using Texts = std::vector<std::string>;

// What is asked of the results. All but the quantities and the two states are headings of columns.
struct Question {
    std::string by{};    // results equal in it are replicas of one state
    Texts each{};        // all is done for each combination of these
    Texts of{};          // quantities, in this order; all if empty
    std::string pair{};  // replicas equal in it are pairs; empty: no pairs
    Texts compare{};     // none, or two states: the first is taken off the second
    Texts window{};      // shifts of the window; empty: no budget
};

// Where the results come from, and where words about them go.
struct Results {
    std::span<const std::string> headings;
    std::function<bool(Texts&)> next;                  // a cell for each heading; false: no more
    std::function<void(const std::string&)> tell;      // what a reader of the means has to know
    std::function<void(const std::string&)> complain;  // what is left out, and asked for
};

// The least and the most of some numbers.
struct Extent {
    double least = std::numeric_limits<double>::infinity();
    double most = -std::numeric_limits<double>::infinity();
};

struct Replica {
    std::string pair{};            // the key of its cell
    std::vector<double> values{};  // of the quantities of the study
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
    std::string cell{};           // what its rows have in common, as the first writes it
    std::string name{};           // with column and combination, for messages
    Texts alike{};                // cells in which its rows must not differ
    std::string other_windows{};  // the first two that differ at one shift, if any do
    std::string twice{};          // the first file and partial that stands twice
    std::map<std::vector<double>, Moved> moved{};  // by their shifts
};

// The states that agree in the --each columns, in the order met.
struct Combination {
    Texts cells{};
    std::string name{};  // with the columns, for messages
    std::vector<State> states{};
};

// All results that did not fail and have a state, in the order met.
struct Study {
    Texts quantities{};  // the headings of what is averaged
    Texts alike{};       // the headings of State::alike
    std::vector<Combination> combinations{};
};

// Takes all results. Of rows of no state, an empty cell among those that tell states and
// combinations apart, it complains. Where the message of a row says that its peak is too narrow for
// the program, what it says of the shape of the peak is not a number. A column that is missing and
// an unknown quantity throw WrongCall. Failure is thrown by rows of one state that are no replicas:
// they differ in what the user has not named, or their windows do not overlap; and by rows that
// cannot be read, or none.
[[nodiscard]] Study study_of(const Question& question, const Results& results);

// What cells are told apart by: blanks around them do no harm, and a number is itself however it is
// written, as 300 and 300.0. More than 15 digits are text, for two of that kind may become one
// number.
[[nodiscard]] std::string key_of(const std::string& cell);

// The state that the user names; nullptr if there is none.
[[nodiscard]] const State* state_named(const std::string& name, const Combination& among);

// The cells of the states, for messages.
[[nodiscard]] std::string cells_of(const Combination& combination);

// Two states differ in nothing but what the user has named, and their windows overlap; or else
// Failure is thrown.
void require_comparable(const State& a, const State& b, const Study& study,
                        const Question& question);

// The replicas at this shift; nullptr if there are none.
[[nodiscard]] const Moved* moved_of(const State& state, const std::vector<double>& shift);

void include(Extent& extent, const Extent& other);

// "2", or "1 to 3".
[[nodiscard]] std::string text_of(const Extent& extent);

}  // namespace dorvek::tools
