// Input: a file or the terminal as a sequence of lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace dorvek::textio {

// Text fields and file names are at most this long.
inline constexpr std::size_t longest_field = 256;

// 16 MiB, a limit for those who set one: what holds a longer line is no text.
inline constexpr std::size_t longest_line = std::size_t{1} << 24U;

// How reading went.
enum class Status {
    ok,
    bad_name,           // blank, or with a zero byte: no file can be called that
    cannot_open,        // Input::error says why
    cannot_read,        // Input::error says why
    illegal_character,  // a token could not be read as a number
    end_of_input,       // no complete line is left
    line_too_long,      // Input::limit says what is
};

// What a user is told of it; for `ok`, nothing.
[[nodiscard]] std::string_view message_of(Status status);

// A field without the blanks at either end.
[[nodiscard]] std::string_view trimmed(std::string_view field);

// Room for `size` bytes, not set to anything; take_line enlarges it.
struct Buffer {
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
};

// One source of lines, once attached to a file. The two buffers grow to the longest line met, and
// nothing else grows. It starts as zeros, so that a run's storage takes no room on disk.
struct Input {
    int fd = 0;
    std::size_t limit = 0;         // bytes that a line may have, as many as memory holds if 0
    std::size_t tab = 0;           // columns between tab stops; lines stay as they are if 0
    std::int64_t line_number = 0;  // of the line taken last, counted from 1
    bool continued = false;        // the values read last stood on more than one line
    int error = 0;                 // errno of what failed

    Buffer block;  // bytes begin .. end have been read from fd and not yet taken
    std::size_t begin = 0;
    std::size_t end = 0;
    std::size_t previous = 0;   // where the line taken last begins
    bool has_controls = false;  // a carriage return or a tab has been read
    Buffer plain;               // the line taken last, if it had to be rewritten
};

// Starts over on another file; limit and buffers stay. Tabs go by the environment's TABSIZE, if
// that is a positive number.
void attach(Input& input, int fd);

// Opens the named file with these flags of the system's open() and attaches it. Whoever opens a
// file closes input.fd.
[[nodiscard]] Status open_file(Input& input, std::string_view name, int flags);

// Takes the next line, its line feed included, carriage returns dropped and tabs expanded to
// blanks. `line` is valid until the next call. A last line without a line feed counts as the end of
// input; a line that memory cannot hold is one that the system could not read.
[[nodiscard]] Status take_line(Input& input, std::string_view& line);

// Takes what stands behind the last line feed, once take_line has met the end of input: as a line,
// but without a line feed. If nothing stands there, that is still the end of input.
[[nodiscard]] Status take_last_line(Input& input, std::string_view& line);

// Takes the line taken last back, to be taken once more.
void put_back_line(Input& input);

// Reads targets.size() values free-form, and `surplus` more that are dropped, from as many lines as
// that takes, starting on a new line. Targets keep their values where null values or a slash say
// so.
[[nodiscard]] Status read_values(Input& input, std::span<float> targets, std::size_t surplus = 0);
[[nodiscard]] Status read_values(Input& input, std::span<std::int32_t> targets);

}  // namespace dorvek::textio
