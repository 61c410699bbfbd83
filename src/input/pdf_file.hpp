// Reading a PDF file.
#pragma once

#include <cstdint>

#include "input/pdf_set.hpp"
#include "textio/lines.hpp"

namespace dorvek::input {

// How reading a PDF file went, besides the bins.
struct PdfReading {
    textio::Status status = textio::Status::ok;
    std::int64_t line = 0;       // that could not be read, counted from 1
    int error = 0;               // errno of Status::cannot_read
    bool bins_left_out = false;  // the file has more than maxbin
    bool bin_continued = false;  // a bin took more than one line
};

// The numbers on the first line of an opened file that holds any; nothing is taken but blank lines.
// A file of r and two numbers for each partial has an odd number of them. 0 at the end of the file.
// The status is that of a read.
[[nodiscard]] PdfReading count_numbers(textio::Input& file, std::size_t& count);

// Reads bins of `npdfs` partials from an opened file into `set`, up to the end of the file.
// Each bin is one free-form read of 1 + 2 * npdfs numbers: r, then g and the running coordination
// number of each partial; a null value is 0. There is no header; further numbers on the last line
// of a bin are ignored. A bin that the end of the file cuts short is not counted. The first maxbin
// bins are kept, and the first maxpdf partials of each. An npdfs below 1 makes bins of r alone.
[[nodiscard]] PdfReading read_pdf(textio::Input& file, std::int32_t npdfs, PdfSet& set);

}  // namespace dorvek::input
