// Loading a PDF file by a dialogue.
#pragma once

#include <array>

#include "input/pdf_set.hpp"
#include "textio/lines.hpp"
#include "textio/terminal.hpp"

namespace dorvek::input {

// The file name as typed, padded with blanks; blanks at either end are not part of the name.
using FileName = std::array<char, textio::longest_field>;

// Asks how many partials the named file holds, reads the file into `set` and shows what was read. A
// null answer keeps the number of partials that `set` had. A file that does not exist is created
// empty. The terminal says so when bins or partials beyond the capacities are left out.
// A blank name, a file that the system cannot open or read, and text that is no number end the run.
// `file` lends its buffers.
void inpdf(PdfSet& set, const FileName& fname, textio::Terminal& terminal, textio::Input& file);

}  // namespace dorvek::input
