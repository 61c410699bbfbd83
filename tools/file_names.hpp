// What stands in the names of files: columns of a table, and identifiers.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "csv.hpp"

namespace dorvek::tools {

// {a}_{b}.dat as the names a and b, and the texts before, between and behind them.
struct Template {
    Row names;
    std::vector<std::string> texts;
};

// Throws WrongCall of a brace that is not closed, or if there is none.
[[nodiscard]] Template read_template(std::string_view text);

// What stands for the names in that of `file` without its folder, each the shortest text of at
// least one byte that lets the rest match; nothing if it does not match.
[[nodiscard]] std::optional<Row> cells_of(const Template& pattern, const std::string& file);

// The name without its last suffix, a point and what stands behind it.
[[nodiscard]] std::string without_suffix(const std::string& file);

// Would two different files be called alike without their suffixes?
[[nodiscard]] bool needs_suffixes(const std::vector<std::string>& files);

}  // namespace dorvek::tools
