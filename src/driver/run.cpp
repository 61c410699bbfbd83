#include "driver/run.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <span>
#include <string_view>

#include "analysis/errana.hpp"
#include "analysis/pdfana.hpp"
#include "driver/report.hpp"
#include "input/conbin.hpp"
#include "input/inpdf.hpp"
#include "input/window.hpp"
#include "stats/compare.hpp"
#include "textio/runtime_error.hpp"

namespace dorvek::driver {
namespace {

using input::maxsamp;
using textio::Terminal;
using textio::write_line;
using textio::write_text;

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

// The samples of this pass, 0 to maxsamp.
std::size_t samples(const Run& run) {
    return static_cast<std::size_t>(std::max(run.nsamp, 0));
}

std::string_view text_of(std::span<const char> field) {
    return {field.data(), field.size()};
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
    run.nsamp = maxsamp;
    open_results(run, terminal);
    write_text(run.results, "analysis of rmc pdfs");
    write_text(run.results, " ");
    save_results(run, terminal);
    write_line(terminal.out, {"analyse rmc results"});
    write_line(terminal.out, {" "});
    write_line(terminal.out, {" "});
    write_line(terminal.out, {"analyse one or two pdfs (<=2): "});
    read_integer(terminal, run.nsamp);
    run.nsamp = std::min(run.nsamp, maxsamp);
    write_line(terminal.out, {" "});
    for (input::PdfSet& set : run.sets) clear(set);
}

void load_samples(Run& run, Terminal& terminal) {
    for (std::size_t s = 0; s < samples(run); ++s) {
        ask(terminal, "pdf file (", s, ") : ");
        read_text(terminal, run.fname);
        put(run.results, "file: ");
        write_text(run.results, text_of(run.fname));
        write_text(run.results, " ");
        save_results(run, terminal);
        inpdf(run.sets[s], run.fname, terminal, run.file);
        ask(terminal, "sample name (", s, ") : ");
        read_text(terminal, run.snames[s]);
    }
}

// The common bin count. Set 2 goes onto the grid of set 1 if theirs differ.
std::int32_t reconcile(Run& run, Terminal& terminal) {
    switch (samples(run)) {
        case 0:
            return 0;
        case 1:
            return run.sets[0].nbins;
        default:
            return common_bins(run.sets[0], run.sets[1], run.work, terminal.out);
    }
}

void write_report(const Run& run, textio::Output& output) {
    for (std::size_t s = 0; s < samples(run); ++s) {
        write_sample_block(output, text_of(run.snames[s]), run.ipdf[s], run.window, run.stats[s]);
    }
    if (run.nsamp == 2) write_statistics_block(output, run.comparison);
}

// The terminal's copy ends the comparison with one line more, and in another form.
void report(Run& run, Terminal& terminal) {
    write_report(run, terminal.out);
    if (run.nsamp == 2) {
        write_line(terminal.out, {separator});
        write_line(terminal.out, {" "});
    }
    write_report(run, run.results);
    if (run.nsamp == 2) write_text(run.results, separator);
    save_results(run, terminal);
}

void analyse_window(Run& run, std::int64_t constraints, Terminal& terminal) {
    const auto& [rmin, rmax, ilo, ihi] = run.window;
    const auto sets = std::span(run.sets).first(samples(run));
    if (analysis::pdfana(sets, run.ipdf, ilo, ihi, run.stats, run.work, terminal.out) ==
        analysis::Norm::zero) {
        return;
    }
    for (std::size_t s = 0; s < samples(run); ++s) complete_errors(ilo, ihi, run.stats[s]);
    if (run.nsamp == 2) {
        const auto& [first, second] = run.stats;
        run.comparison = stats::statana(ilo, ihi, run.ipdf, constraints, {first.Rmea, second.Rmea},
                                        {first.var, second.var}, run.sets, terminal);
    }
    report(run, terminal);
}

void analysis_pass(Run& run, Terminal& terminal) {
    write_line(terminal.out, {" "});
    const std::int32_t nbins = reconcile(run, terminal);
    std::int64_t constraints = 0;  // two 32-bit answers cannot overflow it
    for (std::size_t s = 0; s < samples(run); ++s) {
        ask(terminal, "number of pdf to analyze for sample (", s, ") :");
        read_integer(terminal, run.ipdf[s]);
        write_line(terminal.out, {" "});
        ask(terminal, "number of constraints for sample (", s, "):");
        read_integer(terminal, run.ncons[s]);
        constraints += run.ncons[s];
    }
    write_line(terminal.out, {" "});
    write_line(terminal.out, {"rmin, rmax:"});
    std::array limits{run.window.rmin, run.window.rmax};
    read_reals(terminal, limits);
    run.window.rmin = limits[0];
    run.window.rmax = limits[1];
    if (locate_window(input::first_bins(run.sets[0].r, nbins), run.window)) {
        analyse_window(run, constraints, terminal);
    } else {
        write_line(terminal.out, {"no data in this window"});
    }
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
