#include "textio/terminal.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "textio/runtime_error.hpp"

namespace dorvek::textio {
namespace {

void end_unless_read(Terminal& terminal, Status status, std::string_view statement = "read") {
    end_unless_ok(terminal.out, {.statement = statement, .unit = terminal_unit}, status,
                  terminal.in.error);
}

std::string_view next_line(Terminal& terminal, std::string_view statement) {
    flush(terminal.out);
    std::string_view line;
    end_unless_read(terminal, take_line(terminal.in, line), statement);
    return line;
}

}  // namespace

void open_standard_streams(Closed closed) {
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        if (::fcntl(fd, F_GETFD) != -1) continue;
        const int other_way = fd == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        ::open("/dev/null", closed == Closed::is_empty ? O_RDWR : other_way);  // the lowest free fd
    }
}

void read_integer(Terminal& terminal, std::int32_t& value) {
    flush(terminal.out);
    end_unless_read(terminal, read_values(terminal.in, std::span(&value, 1)));
}

void read_reals(Terminal& terminal, std::span<float> values) {
    flush(terminal.out);
    end_unless_read(terminal, read_values(terminal.in, values));
}

void read_text(Terminal& terminal, std::span<char> field) {
    std::string_view line = next_line(terminal, "read");
    line.remove_suffix(1);  // the line feed
    std::ranges::fill(field, ' ');
    std::ranges::copy(line.substr(0, field.size()), field.begin());
}

void pause(Terminal& terminal, std::string_view message) {
    write_line(terminal.out, {message});
    next_line(terminal, "pause");
}

}  // namespace dorvek::textio
