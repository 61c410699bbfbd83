// Text for terminals and pictures: UTF-8, and the columns that it takes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace dorvek::tools {

// What messages call the input that a call names so: "-" is standard input.
[[nodiscard]] std::string input_name(const std::string& named);

// The text without what is not UTF-8: a character that the end cuts is left out, other bytes become
// U+FFFD.
[[nodiscard]] std::string valid_utf8(std::string_view text);

// The text without what no terminal and no picture can hold: bytes that are not UTF-8, control
// characters, separators of lines, changes of direction, and what XML excludes become U+FFFD.
[[nodiscard]] std::string printable(std::string_view text);

// The characters of a text that is valid UTF-8.
[[nodiscard]] std::vector<std::string_view> characters_of(std::string_view valid_text);

// The columns that such a text takes, at most: characters of the East are wide.
[[nodiscard]] std::size_t width_of(std::string_view valid_text);

// Cuts from the middle of such a text what is more than `width` columns, three or more: names tend
// to differ at their ends.
[[nodiscard]] std::string shortened(const std::string& valid_text, std::size_t width);

// Different texts, with three dots in the place of the words that all begin or end with.
[[nodiscard]] std::vector<std::string> without_shared_words(
    const std::vector<std::string>& valid_texts);

}  // namespace dorvek::tools
