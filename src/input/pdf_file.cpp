#include "input/pdf_file.hpp"

#include <algorithm>
#include <array>
#include <limits>
#include <span>

#include "textio/free_form.hpp"

namespace dorvek::input {

using textio::Status;

namespace {

// What a read that ended so has met: the line taken last, or one that could not be taken.
PdfReading reading_of(Status status, const textio::Input& file) {
    const bool taken = status == Status::illegal_character;
    return {.status = status,
            .line = taken ? file.line_number : file.line_number + 1,
            .error = file.error};
}

}  // namespace

PdfReading count_numbers(textio::Input& file, std::size_t& count) {
    textio::ScanState state;
    while (state.filled == 0) {
        std::string_view line;
        Status status = take_line(file, line);
        if (status == Status::end_of_input) break;
        if (status == Status::ok) {
            const textio::Scan scan = scan_line(line, state, std::span<float>{},
                                                std::numeric_limits<std::int32_t>::max());
            if (scan == textio::Scan::illegal_character) status = Status::illegal_character;
        }
        if (status != Status::ok) return reading_of(status, file);
    }
    if (state.filled > 0) put_back_line(file);
    count = state.filled;
    return {};
}

PdfReading read_pdf(textio::Input& file, std::int32_t npdfs, PdfSet& set) {
    set.npdfs = npdfs;
    set.nbins = 0;
    const std::size_t partials = held_partials(set);
    const std::size_t declared = static_cast<std::size_t>(std::max(npdfs, 0));
    std::array<float, 1 + 2 * maxpdf> row{};  // r, then g and cn of each partial
    const auto numbers = std::span(row).first(1 + 2 * partials);
    PdfReading reading;
    for (;;) {
        std::ranges::fill(numbers, 0.0f);  // a null value leaves 0
        const Status status = textio::read_values(file, numbers, 2 * (declared - partials));
        if (status == Status::end_of_input) return reading;
        if (status != Status::ok) return reading_of(status, file);
        reading.bins_left_out = set.nbins == maxbin;
        if (reading.bins_left_out) return reading;

        reading.bin_continued = reading.bin_continued || file.continued;
        const auto bin = static_cast<std::size_t>(set.nbins++);
        set.r[bin] = row[0];
        for (std::size_t p = 0; p < partials; ++p) {
            set.g[p][bin] = row[1 + 2 * p];
            set.cn[p][bin] = row[2 + 2 * p];
        }
    }
}

}  // namespace dorvek::input
