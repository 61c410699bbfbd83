// Reading a PDF file.
#pragma once

#include <span>

#include "input/pdf_set.hpp"
#include "textio/lines.hpp"
#include "textio/terminal.hpp"

namespace dorvek::input {

// The file name as typed, padded with blanks; blanks at either end are not part of the name.
using FileName = std::array<char, textio::longest_field>;

// Asks how many partials the named file holds and reads the file into `set`, which must be clear.
// Each bin is one free-form read of 1 + 2 * npdfs numbers: r, then g and the running coordination
// number of each partial. There is no header; further numbers on the last line of a bin are
// ignored. A bin that the end of the file cuts short is not counted. A file that does not exist is
// created empty. Of more than maxbin bins the first maxbin are kept, of more than maxpdf declared
// partials maxpdf, and the terminal says so.
// A blank name, a file that the system cannot open or read, and text that is no number end the run.
// `file` lends its buffers.
void inpdf(PdfSet& set, const FileName& fname, textio::Terminal& terminal, textio::Input& file);

// Puts zeros over all that loading and resampling have left in `set`, and no bins. The number of
// partials stays: a null answer finds it.
void clear(PdfSet& set);

}  // namespace dorvek::input
