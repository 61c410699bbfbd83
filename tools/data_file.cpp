#include "data_file.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "doubts.hpp"
#include "input/pdf_file.hpp"

namespace dorvek::tools {
namespace {

using input::PdfReading;
using textio::Status;

void require(const PdfReading& reading, const std::string& name) {
    if (reading.status == Status::ok) return;
    std::string what(message_of(reading.status));
    if (reading.error != 0) what += std::string(": ") + std::strerror(reading.error);
    throw BadFile(name + ", line " + std::to_string(reading.line) + ": " + what);
}

std::int32_t partials_of(textio::Input& file, const std::string& name) {
    std::size_t count = 0;
    require(input::count_numbers(file, count), name);
    if (count == 0 || (count % 2 == 1 && count > 1)) return static_cast<std::int32_t>(count / 2);
    throw BadFile(name + ": the numbers on the first line are " + std::to_string(count) +
                  ", not r and two for each partial");
}

}  // namespace

std::vector<std::string> load_pdf(const std::string& name, std::optional<std::int32_t> partials,
                                  input::PdfSet& set) {
    thread_local textio::Input file;  // its buffers serve one file after another
    file.limit = textio::longest_line;
    const Status opened = open_file(file, name, O_RDONLY);
    if (opened != Status::ok) {
        std::string what(message_of(opened));
        if (opened == Status::cannot_open) {
            what = file.error == ENOENT ? "no such file" : what + ": " + std::strerror(file.error);
        }
        throw BadFile(what + ": " + name);  // in this order: a zero byte in the name ends the text
    }
    const struct Closer {
        ~Closer() { ::close(fd); }
        int fd;
    } closer{file.fd};
    const PdfReading reading =
        input::read_pdf(file, partials ? *partials : partials_of(file, name), set);
    require(reading, name);
    std::vector<std::string> said;
    const auto only = [&](std::int32_t capacity, const char* what) {
        said.push_back("only the first " + std::to_string(capacity) + what);
    };
    if (set.npdfs > input::maxpdf) only(input::maxpdf, " pdfs of the file are taken");
    if (reading.bins_left_out) only(input::maxbin, " bins of the file are kept");
    if (reading.bin_continued) said.emplace_back("a bin took more than one line of the file");
    add_grid_doubts(input::first_bins(set.r, set.nbins), said);
    return said;
}

Partial partial_of(const input::PdfSet& set, std::int32_t number, const std::string& name) {
    if (!holds_partial(set, number)) {
        throw BadFile(name + ": there is no partial " + std::to_string(number));
    }
    const auto& g = set.g[static_cast<std::size_t>(number - 1)];
    return {.r = input::first_bins(set.r, set.nbins), .g = input::first_bins(g, set.nbins)};
}

}  // namespace dorvek::tools
