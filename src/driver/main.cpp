// The process: its arguments, signals and standard streams. The dialogue itself is run().

#include <unistd.h>

#include <csignal>

#include "driver/run.hpp"

namespace {

namespace textio = dorvek::textio;

constinit dorvek::driver::Run the_run;

}  // namespace

int main(int argc, char** /*argv*/) {
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
