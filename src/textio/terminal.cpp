#include "textio/terminal.hpp"

#include <algorithm>

#include "textio/runtime_error.hpp"

namespace dorvek::textio {
namespace {

void end_unless_ok(Terminal& terminal, Status status, std::string_view statement) {
    const Place place{.statement = statement, .unit = terminal_unit};
    switch (status) {
        case Status::ok:
            return;
        case Status::illegal_character:
            runtime_error(terminal.out, place, "Illegal character in numeric input");
        case Status::end_of_input:
            runtime_error(terminal.out, place, "Attempt to read past end of file");
        case Status::failed:
            runtime_error(terminal.out, place, "Cannot read", terminal.in.error);
    }
}

std::string_view next_line(Terminal& terminal, std::string_view statement) {
    flush(terminal.out);
    std::string_view line;
    end_unless_ok(terminal, take_line(terminal.in, line), statement);
    return line;
}

}  // namespace

void read_integer(Terminal& terminal, std::int32_t& value) {
    flush(terminal.out);
    end_unless_ok(terminal, read_values(terminal.in, std::span(&value, 1)), "read");
}

void read_reals(Terminal& terminal, std::span<float> values) {
    flush(terminal.out);
    end_unless_ok(terminal, read_values(terminal.in, values), "read");
}

void read_text(Terminal& terminal, std::span<char> field) {
    const std::string_view line = next_line(terminal, "read");
    std::ranges::fill(field, ' ');
    std::ranges::copy(line.substr(0, field.size()), field.begin());
}

void pause(Terminal& terminal, std::string_view message) {
    write_line(terminal.out, {message});
    next_line(terminal, "pause");
}

}  // namespace dorvek::textio
