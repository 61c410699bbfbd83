// The one way in which a run ends before its time.
#pragma once

#include <cstdint>
#include <string_view>

#include "textio/lines.hpp"
#include "textio/output.hpp"

namespace dorvek::textio {

// What could not be done, and on what.
struct Place {
    std::string_view statement;  // "open", "read", "write", "close" or "pause"
    std::string_view unit;       // "*" is the terminal
    std::string_view file = {};  // its name, unless it is the terminal
    std::int64_t line = 0;       // of a file that was being read, counted from 1
};

inline constexpr std::string_view terminal_unit = "*";

// Shows what `terminal` still holds, reports the error in three lines on standard error and ends
// the process with status 255. `system_error` is an errno whose reason goes into the message, or 0.
// The results file is complete without further ado: whoever writes a report to it flushes it.
[[noreturn]] void runtime_error(Output& terminal, const Place& place, std::string_view message,
                                int system_error = 0);

// Ends the run so if reading did not go well. `system_error` is the errno of Status::cannot_open
// and Status::cannot_read, otherwise 0.
inline void end_unless_ok(Output& terminal, const Place& place, Status status, int system_error) {
    if (status != Status::ok) runtime_error(terminal, place, message_of(status), system_error);
}

}  // namespace dorvek::textio
