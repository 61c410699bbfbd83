// Results of simulations as replicas of states: which of them are averaged, which must not be, and
// the table that comes of it. The same whether they stand in a file or in an array of Python.
#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace dorvek::tools {

// What is asked of the results. All but the quantities and the two states are headings of columns.
struct Question {
    std::string by{};                    // results equal in it are replicas of one state
    std::vector<std::string> each{};     // all is done for each combination of these
    std::vector<std::string> of{};       // quantities, in this order; all if empty
    std::string pair{};                  // replicas equal in it are pairs; empty: no pairs
    std::vector<std::string> compare{};  // none, or two states: the first is taken off the second
    std::vector<std::string> window{};   // shifts of the window; empty: no budget
};

// Where the results come from, and where words about them go.
struct Results {
    std::span<const std::string> headings;
    std::function<bool(std::vector<std::string>&)> next;  // a cell for each heading; false: no more
    std::function<void(const std::string&)> tell;         // what a reader of the means has to know
    std::function<void(const std::string&)> complain;     // what is left out, and asked for
};

// The means, differences or budgets: cells of text come first, then numbers; a number that is not
// known is empty.
struct Answer {
    struct Line {
        std::vector<std::string> cells{};
        std::vector<std::optional<double>> numbers{};
    };
    std::vector<std::string> headings{};
    std::vector<Line> lines{};
};

// Takes all results and answers the question, in the order met. A column that is missing or named
// twice and an unknown quantity throw WrongCall; results that cannot be averaged throw Failure.
[[nodiscard]] Answer answer_of(const Question& question, const Results& results);

}  // namespace dorvek::tools
