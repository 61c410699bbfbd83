// The dialogue, from the outermost loop at the end of this file inwards: run() holds passes over
// sets of data, each of them passes over windows. What is computed is analyse_window's affair, how
// it looks the report's; here stands what is asked and said in which order, and when the results
// file is safe.

#include "driver/run.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <span>
#include <string_view>

#include "driver/report.hpp"
#include "textio/runtime_error.hpp"

namespace dorvek::driver {
namespace {

using input::maxsamp;
using textio::Terminal;
using textio::write_line;

constexpr const char* results_name = "dorvek.res";

[[noreturn]] void results_error(Terminal& terminal, std::string_view statement,
                                std::string_view message, int system_error) {
    runtime_error(terminal.out, {.statement = statement, .unit = "16", .file = results_name},
                  message, system_error);
}

void open_results(Run& run, Terminal& terminal) {
    const int fd = ::open(results_name, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (fd < 0) results_error(terminal, "open", "Cannot open file", errno);
    run.results.fd = fd;
}

// A report that has been handed to the system is safe whatever happens to the run.
void save_results(Run& run, Terminal& terminal) {
    if (!flush(run.results)) results_error(terminal, "write", "Cannot write", run.results.error);
}

void close_results(Run& run, Terminal& terminal) {
    if (::close(run.results.fd) != 0 && errno != EINTR) {
        results_error(terminal, "close", "Cannot write", errno);
    }
}

// A question about sample `s`, counted from 0 here and from 1 in the prompt.
void ask(Terminal& terminal, std::string_view before, std::size_t s, std::string_view after) {
    write_line(terminal.out, {before, static_cast<std::int32_t>(s + 1), after});
}

bool asked_for_more(Terminal& terminal, std::string_view question) {
    std::array<char, 1> answer{};
    write_line(terminal.out, {" "});
    write_line(terminal.out, {question});
    read_text(terminal, answer);
    return answer[0] != 'n';
}

void start_data_set(Run& run, Terminal& terminal) {
    write_line(terminal.out, {" "});
    run.report.nsamp = maxsamp;
    open_results(run, terminal);
    write_head(run.results);
    save_results(run, terminal);
    write_line(terminal.out, {"analyse rmc results"});
    write_line(terminal.out, {" "});
    write_line(terminal.out, {" "});
    static_assert(maxsamp == 2);
    write_line(terminal.out, {"analyse one or two pdfs (<=2): "});
    read_integer(terminal, run.report.nsamp);
    run.report.nsamp = std::min(run.report.nsamp, maxsamp);
    write_line(terminal.out, {" "});
}

void load_samples(Run& run, Terminal& terminal) {
    for (std::size_t s = 0; s < samples(run.report); ++s) {
        ask(terminal, "pdf file (", s, ") : ");
        read_text(terminal, run.report.fnames[s]);
        write_file_name(run.results, run.report, s);
        save_results(run, terminal);
        inpdf(run.sets[s], run.report.fnames[s], terminal, run.file);
        ask(terminal, "sample name (", s, ") : ");
        read_text(terminal, run.report.snames[s]);
    }
}

// The terminal's copy is handed to the system before the file's.
void show(Run& run, Terminal& terminal) {
    write_terminal(terminal.out, run.report);
    flush(terminal.out);
    write_results(run.results, run.report);
    save_results(run, terminal);
}

void analysis_pass(Run& run, Terminal& terminal) {
    write_line(terminal.out, {" "});
    if (run.report.nsamp == 2) {
        const std::string_view said = reconcile(run.sets[0], run.sets[1]);
        if (!said.empty()) write_line(terminal.out, {said});
    }
    std::int64_t constraints = 0;  // two 32-bit answers cannot overflow it
    for (std::size_t s = 0; s < samples(run.report); ++s) {
        ask(terminal, "number of pdf to analyze for sample (", s, ") :");
        read_integer(terminal, run.report.ipdf[s]);
        write_line(terminal.out, {" "});
        ask(terminal, "number of constraints for sample (", s, "):");
        read_integer(terminal, run.ncons[s]);
        constraints += run.ncons[s];
    }
    write_line(terminal.out, {" "});
    write_line(terminal.out, {"rmin, rmax:"});
    input::Window& window = run.report.found.window;
    std::array limits{window.rmin, window.rmax};
    read_reals(terminal, limits);
    window.rmin = limits[0];
    window.rmax = limits[1];

    const auto sets = std::span(run.sets).first(samples(run.report));
    const Found found = analyse_window(sets, run.report.ipdf, constraints, run.report.found);
    if (found != Found::peak) return write_line(terminal.out, {message_of(found)});
    const stats::Messages& messages = run.report.found.messages;
    for (std::size_t i = 0; i < messages.count; ++i) pause(terminal, messages.text[i]);
    show(run, terminal);
}

}  // namespace

void run(Run& run, Terminal& terminal) {
    do {
        start_data_set(run, terminal);
        load_samples(run, terminal);
        do analysis_pass(run, terminal);
        while (asked_for_more(terminal, "more analysis of the same data set(s) ?"));
        close_results(run, terminal);
    } while (asked_for_more(terminal, "more analysis of the other data set(s) ?"));
}

}  // namespace dorvek::driver
