// Numbers as text: how an integer and a real look on the terminal and in the results file.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace dorvek::textio {

// Room for any formatted number; the longest is " -9.999995E+05".
using NumberText = std::array<char, 16>;

// Writes `value` with its sign field, two blanks or a blank and a minus sign: "  7", " -12".
// The result lies in `text`.
[[nodiscard]] std::string_view format_integer(std::int32_t value, NumberText& text);

// Writes `value` with its sign field and its magnitude m, rounded half up from its exact value:
//   0 and 0.1 <= m < 1000000   six significant digits, "  3.14159", "  100000.";
//   any other finite m         seven significant digits and an exponent, " -5.000000E-02";
//   not finite                 "  INF", " -INF", "  NaN", or " -NaN" when the sign bit is set.
// The lower end of the first row is 0.1 rounded to seven decimals, its upper end 999999.5, from
// where six digits no longer hold the value. A negative zero has no minus sign.
// The result lies in `text`.
[[nodiscard]] std::string_view format_real(float value, NumberText& text);

}  // namespace dorvek::textio
