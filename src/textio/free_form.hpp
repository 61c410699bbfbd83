// Free-form input: numbers taken from the text of lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace dorvek::textio {

// How taking numbers from one line ended.
enum class Scan {
    complete,           // every value has been dealt with; the rest of the line does not matter
    wants_more,         // the line is used up and values are due: go on with the next line
    illegal_character,  // a token is not a number of the kind wanted
};

// How far a read has come; it goes from line to line of one read, and starts afresh with the next.
struct ScanState {
    std::size_t filled = 0;      // values dealt with: given to a target, dropped, or null
    bool separator_due = false;  // the last thing taken was a value: a comma now only ends it
};

// Takes values from `line`, which ends in a line feed, for targets[state.filled ..] and then
// `surplus` values more, which are read and dropped. Tokens stand apart by blanks, or by one comma
// with any blanks around it.
//   ,,     a null value: its target keeps the value that it had
//   /      ends the read; the targets left keep their values. It may touch a token: "1.5/"
//   r*v    gives v to r consecutive targets; r is 1 or more, digits only
// A comma at the end of a line is a separator; one that begins a continuation line belongs to the
// token before it.
//
// An integer is an optional sign and digits, within 32 bits. A real is an optional sign, digits
// with at most one decimal point, and an optional exponent: E, D or Q in either case, or a sign
// alone ("1.5-3"), then an optionally signed integer. It becomes the float nearest to its exact
// value, ties to even; beyond the range of a float it becomes infinity or zero.
[[nodiscard]] Scan scan_line(std::string_view line, ScanState& state, std::span<float> targets,
                             std::size_t surplus = 0);
[[nodiscard]] Scan scan_line(std::string_view line, ScanState& state,
                             std::span<std::int32_t> targets);

}  // namespace dorvek::textio
