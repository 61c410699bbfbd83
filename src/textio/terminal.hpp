// The terminal: questions, answers and pauses. Everything written to it is shown before a read
// waits. A read that fails ends the run.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "textio/lines.hpp"
#include "textio/output.hpp"

namespace dorvek::textio {

struct Terminal {
    Input in;
    Output out;
};

// How a standard stream behaves that the caller has closed: as one that is empty and takes what is
// written, or as one that can be neither read nor written.
enum class Closed { is_empty, is_an_error };

// Puts such a stream in the place of each that is closed, so that none becomes a file that is
// opened later.
void open_standard_streams(Closed closed);

// Read numbers free-form. A null answer leaves the value that was there.
void read_integer(Terminal& terminal, std::int32_t& value);
void read_reals(Terminal& terminal, std::span<float> values);

// Reads one line into a text field: its first characters, padded with blanks.
void read_text(Terminal& terminal, std::span<char> field);

// Shows a message, waits for one line, whatever it holds, and lets the computation go on.
void pause(Terminal& terminal, std::string_view message);

}  // namespace dorvek::textio
