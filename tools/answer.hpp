// Means of replicas, their differences and budgets as the table that dorvek-replicas writes and the
// Python module returns.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "states.hpp"

namespace dorvek::tools {

// Cells of text come first in a line, then numbers; a number that is not known is empty.
struct Answer {
    struct Line {
        std::vector<std::string> cells{};
        std::vector<std::optional<double>> numbers{};
    };
    std::vector<std::string> headings{};
    std::vector<Line> lines{};
};

// Takes all results and answers the question, in the order met. A heading that would stand twice,
// and what states.hpp has to say, throw WrongCall or Failure.
[[nodiscard]] Answer answer_of(const Question& question, const Results& results);

}  // namespace dorvek::tools
