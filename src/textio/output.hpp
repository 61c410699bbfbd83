// Output: lines of text for the terminal or the results file.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <variant>

namespace dorvek::textio {

// Where lines go, once fd is set; it starts as zeros, like Input. After a write that failed, what
// follows is dropped.
struct Output {
    int fd = 0;
    int error = 0;         // errno of the write that failed
    std::size_t used = 0;  // bytes of the buffer not yet written
    std::array<char, 4096> buffer{};
};

// One item of a free-form line.
using Item = std::variant<std::string_view, std::int32_t, float>;

// Writes one free-form line: a blank, then the items. Nothing stands between them but the sign
// fields of numbers, and one blank before a text that follows a number.
void write_line(Output& output, std::initializer_list<Item> items);

// Writes one line that holds the text exactly, trailing blanks included.
void write_text(Output& output, std::string_view text);

// Add to the line being written: text, or an item, a number with its sign field.
void put(Output& output, std::string_view text);
void put_item(Output& output, const Item& item);

// Hands everything written so far to the system. False if that, or any write before, failed.
bool flush(Output& output);

}  // namespace dorvek::textio
