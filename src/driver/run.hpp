// One run of the program: the whole dialogue.
#pragma once

#include <array>
#include <cstdint>

#include "driver/report.hpp"
#include "input/pdf_set.hpp"
#include "textio/lines.hpp"
#include "textio/output.hpp"
#include "textio/terminal.hpp"

namespace dorvek::driver {

// Everything a run holds, one entry per sample where there are several: set aside once, about
// 1.7 MB, most of it never touched. Answers live as long as the run, for a null answer keeps the
// one before; samples live for one set of data, a window and its results for one analysis.
struct Run {
    std::array<input::PdfSet, input::maxsamp> sets;
    std::array<std::int32_t, input::maxsamp> ncons{};  // constraints
    Report report;                                     // names, partials and window as answered
    textio::Output results;                            // "dorvek.res"
    textio::Input file;                                // the PDF file being read
};

// Holds the dialogue on `terminal`, set of data after set of data, window after window, until the
// user wants no more. Reports go to the terminal and into "dorvek.res" in the working directory,
// which each set of data begins anew.
void run(Run& run, textio::Terminal& terminal);

}  // namespace dorvek::driver
