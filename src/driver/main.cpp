// The process: its arguments, signals and standard streams. The dialogue itself is run().

#include <unistd.h>

#include <csignal>
#include <cstring>
#include <string_view>

#include "driver/run.hpp"

namespace {

namespace textio = dorvek::textio;

constinit dorvek::driver::Run the_run;

// Says what this program is. Returns the exit status: 1 if it cannot be written.
int introduce() {
    textio::open_standard_streams(textio::Closed::is_an_error);
    textio::Output out{.fd = STDOUT_FILENO};
    write_text(out,
               "dorvek " DORVEK_VERSION ": statistics of peaks in pair distribution functions");
    write_text(out, "usage: dorvek    (no arguments; it asks for what it needs; see man dorvek)");
    if (flush(out)) return 0;
    textio::Output error{.fd = STDERR_FILENO};
    put(error, "dorvek: cannot write: ");
    write_text(error, std::strerror(out.error));
    flush(error);
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view argument = argc == 2 ? argv[1] : "";
    if (argument == "--help" || argument == "--version") return introduce();
    textio::open_standard_streams(textio::Closed::is_empty);
    if (argc > 1) {
        textio::Output error{.fd = STDERR_FILENO};
        write_text(error, "usage: dorvek    (no arguments; it asks for what it needs)");
        flush(error);
        return 2;
    }
    // A terminal that has gone, or a file that may not grow, is an error of the write, not of us.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    textio::Terminal terminal;
    attach(terminal.in, STDIN_FILENO);
    terminal.out.fd = STDOUT_FILENO;
    dorvek::driver::run(the_run, terminal);
    flush(terminal.out);
    return 0;
}
