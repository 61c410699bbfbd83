// The process: its arguments, signals and standard streams. The dialogue itself is run().

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

#include "driver/run.hpp"

namespace {

namespace textio = dorvek::textio;

constinit dorvek::driver::Run the_run;

// A stream that the caller has closed must not become a file that the run opens.
void open_standard_streams() {
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        if (::fcntl(fd, F_GETFD) == -1) ::open("/dev/null", O_RDWR);  // takes the lowest free one
    }
}

}  // namespace

int main(int argc, char** /*argv*/) {
    open_standard_streams();
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
