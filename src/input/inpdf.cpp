#include "input/inpdf.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "input/pdf_file.hpp"
#include "textio/runtime_error.hpp"

namespace dorvek::input {
namespace {

// Opens the file for reading, and creates it empty if it is missing.
textio::Status open_or_create(textio::Input& file, std::string_view name) {
    const textio::Status status = textio::open_file(file, name, O_RDONLY);
    if (file.error != ENOENT) return status;
    return textio::open_file(file, name, O_RDONLY | O_CREAT);
}

}  // namespace

void inpdf(PdfSet& set, const FileName& fname, textio::Terminal& terminal, textio::Input& file) {
    const std::string_view field{fname.data(), fname.size()};
    write_line(terminal.out, {"input pdf data from: ", field});
    write_line(terminal.out, {" "});
    static_assert(maxpdf == 10);
    write_line(terminal.out, {"number of pdfs in file (<= 10): "});
    std::int32_t npdfs = set.npdfs;
    textio::read_integer(terminal, npdfs);
    if (npdfs > maxpdf) {
        write_line(terminal.out, {"only the first", maxpdf, "pdfs of the file are taken"});
    }

    textio::Place place{.statement = "open", .unit = "15", .file = textio::trimmed(field)};
    const textio::Status opened = open_or_create(file, place.file);
    end_unless_ok(terminal.out, place, opened, file.error);
    const PdfReading reading = read_pdf(file, npdfs, set);
    place.statement = "read";
    place.line = reading.line;
    end_unless_ok(terminal.out, place, reading.status, reading.error);
    ::close(file.fd);
    if (reading.bins_left_out) {
        write_line(terminal.out, {"only the first", maxbin, "bins of the file are kept"});
    }
    write_line(terminal.out, {"number of pdfs: ", set.npdfs, " number of bins: ", set.nbins});
}

}  // namespace dorvek::input
