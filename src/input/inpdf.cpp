#include "input/inpdf.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

#include "textio/runtime_error.hpp"

namespace dorvek::input {
namespace {

using textio::Place;
using textio::runtime_error;
using textio::Status;
using textio::Terminal;
using textio::write_line;

constexpr std::string_view unit = "15";

std::string_view trimmed(std::string_view field) {
    const std::size_t first = field.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return field.substr(first, field.find_last_not_of(' ') - first + 1);
}

// Opens the file for reading, and creates it empty if it is missing.
int open_file(std::string_view name, textio::Output& terminal) {
    const Place place{.statement = "open", .unit = unit, .file = name};
    std::array<char, textio::longest_field + 1> path{};
    if (name.empty() || name.find('\0') != std::string_view::npos) {
        runtime_error(terminal, place, "Bad file specification");
    }
    std::ranges::copy(name, path.begin());
    int fd = ::open(path.data(), O_RDONLY);
    if (fd < 0 && errno == ENOENT) {
        fd = ::open(path.data(), O_RDONLY | O_CREAT, 0666);
    }
    if (fd < 0) runtime_error(terminal, place, "Cannot open file", errno);
    return fd;
}

[[noreturn]] void read_error(Status status, const textio::Input& file, Place place,
                             textio::Output& terminal) {
    place.line = file.line_number;
    if (status == Status::illegal_character) {
        runtime_error(terminal, place, "Illegal character in numeric input");
    }
    ++place.line;  // the one that could not be taken
    runtime_error(terminal, place, "Cannot read", file.error);
}

// Reads bins up to the end of the file, or one more than there is room for. Returns how many.
std::int32_t read_bins(PdfSet& set, textio::Input& file, const Place& place,
                       textio::Output& terminal) {
    const std::size_t partials = held_partials(set);
    std::array<float, 1 + 2 * maxpdf> row{};  // r, then g and cn of each partial
    for (std::int32_t bins = 0;; ++bins) {
        const auto numbers = std::span(row).first(1 + 2 * partials);
        std::ranges::fill(numbers, 0.0f);  // a null value leaves 0
        const Status status = textio::read_values(file, numbers);
        if (status == Status::end_of_input) return bins;
        if (status != Status::ok) read_error(status, file, place, terminal);
        if (bins == maxbin) return bins + 1;

        const auto bin = static_cast<std::size_t>(bins);
        set.r[bin] = row[0];
        for (std::size_t p = 0; p < partials; ++p) {
            set.g[p][bin] = row[1 + 2 * p];
            set.cn[p][bin] = row[2 + 2 * p];
        }
    }
}

}  // namespace

void inpdf(PdfSet& set, const FileName& fname, Terminal& terminal, textio::Input& file) {
    const std::string_view field{fname.data(), fname.size()};
    write_line(terminal.out, {"input pdf data from: ", field});
    write_line(terminal.out, {" "});
    write_line(terminal.out, {"number of pdfs in file (<= 10): "});
    textio::read_integer(terminal, set.npdfs);
    if (set.npdfs > maxpdf) {
        write_line(terminal.out, {"only the first", maxpdf, "pdfs of the file are taken"});
        set.npdfs = maxpdf;
    }

    const Place place{.statement = "read", .unit = unit, .file = trimmed(field)};
    textio::attach(file, open_file(place.file, terminal.out));
    const std::int32_t bins = read_bins(set, file, place, terminal.out);
    ::close(file.fd);
    if (bins > maxbin) {
        write_line(terminal.out, {"only the first", maxbin, "bins of the file are kept"});
    }
    set.nbins = set.used = std::min(bins, maxbin);
    write_line(terminal.out, {"number of pdfs: ", set.npdfs, " number of bins: ", set.nbins});
}

void clear(PdfSet& set) {
    const auto wipe = [&set](Column& column) { std::fill_n(column.begin(), set.used, 0.0f); };
    wipe(set.r);
    for (std::size_t p = 0; p < held_partials(set); ++p) {
        wipe(set.g[p]);
        wipe(set.cn[p]);
    }
    set.nbins = set.used = 0;
}

}  // namespace dorvek::input
