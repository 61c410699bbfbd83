// dorvek-peaks: a window around each peak of PDF files, as a table for dorvek-batch.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <numeric>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "csv.hpp"
#include "data_file.hpp"
#include "file_names.hpp"
#include "find_peaks.hpp"
#include "program.hpp"
#include "results.hpp"

namespace {

using namespace dorvek;
using namespace dorvek::tools;

struct Call {
    std::vector<std::string> files;
    bool suffixes = false;  // stand in the identifiers
    std::optional<std::int32_t> partials;
    std::vector<std::int32_t> chosen;  // partials; none: all
    Row labels;                        // of all partials, or none
    PeakSearch search;
    bool first = false;
    bool common = false;
    std::optional<std::int32_t> scan;
    std::optional<std::int32_t> scan_min;
    Template pattern;
};

// The chosen partials of one file, and what its name holds.
struct Sample {
    std::string file;
    Row cells;
    std::int32_t partials = 0;         // of the file
    std::vector<std::int32_t> chosen;  // their numbers
    std::vector<float> r;
    std::vector<std::vector<float>> g;  // of each chosen one
};

// The numbers, which ascend; of all, none.
std::vector<std::int32_t> read_partials(const Row& words) {
    std::vector<std::int32_t> chosen;
    if (words == Row{"all"}) return chosen;
    for (const std::string& word : words) {
        const std::int32_t number = whole_argument("--partial", word, 1, input::maxpdf);
        if (!chosen.empty() && number <= chosen.back()) {
            throw WrongCall("--partial: " + word + " stands behind " +
                            std::to_string(chosen.back()) + "; they ascend, each once");
        }
        chosen.push_back(number);
    }
    return chosen;
}

void append(Row& row, const Row& more) {
    row.insert(row.end(), more.begin(), more.end());
}

void require_agreement(const Call& call) {
    const std::set<std::string> different(call.labels.begin(), call.labels.end());
    if (different.size() < call.labels.size()) throw WrongCall("--labels: one stands twice");
    if (different.contains("")) throw WrongCall("--labels: one is empty");
    const auto labels = static_cast<std::int32_t>(call.labels.size());
    const std::int32_t last = call.chosen.empty() ? 0 : call.chosen.back();
    if (call.partials && last > *call.partials) {
        throw WrongCall("--partial: there are only " + std::to_string(*call.partials));
    }
    if (labels > 0 && (last > labels || call.partials.value_or(labels) != labels)) {
        throw WrongCall("--labels: as many are wanted as there are partials in a file");
    }
}

// A column from names may not be taken for one of the table, or of what dorvek-batch makes of it;
// the heading `name` is meant for this.
Row headings_of(const Call& call) {
    Row headings{"id",   "file", "partials", "partial", "label", "peak",     "rmin",
                 "rmax", "mode", "height",   "note",    "shift", "shift_min"};
    std::set<std::string> taken{""};
    for (const Row& row : {headings, window_headings(), batch_headings()}) {
        taken.insert(row.begin(), row.end());
    }
    taken.erase("name");
    if (call.labels.empty()) std::erase(headings, "label");
    if (!call.scan) std::erase(headings, "shift");
    if (!call.scan_min) std::erase(headings, "shift_min");
    for (const std::string& name : call.pattern.names) {
        if (!taken.insert(name).second) {
            throw WrongCall("--name: there can be no further column {" + name + "}");
        }
        headings.push_back(name);
    }
    return headings;
}

// Throws BadFile.
Sample load(const Call& call, const std::string& file) {
    static const auto set = std::make_unique<input::PdfSet>();
    const std::string says = file + ": ";
    Sample sample;
    sample.file = file;
    sample.chosen = call.chosen;
    if (!call.pattern.names.empty()) {
        const auto cells = cells_of(call.pattern, file);
        if (!cells) throw BadFile(says + "does not match --name");
        sample.cells = *cells;
    }
    for (const std::string& what : load_pdf(file, call.partials, *set)) tell(says + what);
    sample.partials = set->npdfs;
    if (sample.chosen.empty()) {
        sample.chosen.resize(std::max(held_partials(*set), std::size_t{1}));
        std::iota(sample.chosen.begin(), sample.chosen.end(), 1);
    }
    for (const std::int32_t number : sample.chosen) {
        const Partial partial = partial_of(*set, number, file);
        sample.r.assign(partial.r.begin(), partial.r.end());
        sample.g.emplace_back(partial.g.begin(), partial.g.end());
    }
    if (!call.labels.empty() && std::cmp_not_equal(sample.partials, call.labels.size())) {
        throw BadFile(says + "its partials are " + std::to_string(sample.partials) +
                      ", those of --labels " + std::to_string(call.labels.size()));
    }
    return sample;
}

// Writes the windows of sample.chosen[c], moved in all ways that leave two bins on the grid.
void write_windows(const Call& call, const Sample& sample, std::size_t c,
                   const std::vector<input::Window>& windows) {
    const auto nbins = static_cast<std::int32_t>(sample.r.size());
    const std::int32_t partial = sample.chosen[c];
    const auto place = static_cast<std::size_t>(partial - 1);
    const std::string stem = (call.suffixes ? sample.file : without_suffix(sample.file)) + "-" +
                             std::to_string(partial) + "-";
    for (std::size_t k = 0; k < windows.size(); ++k) {
        const auto [rmin, rmax, ilo, ihi] = windows[k];
        const std::string peak = std::to_string(k + 1);
        Row what{sample.file, std::to_string(sample.partials), std::to_string(partial)};
        if (!call.labels.empty()) what.push_back(call.labels[place]);
        what.push_back(peak);
        const std::int32_t scan = call.scan.value_or(0);
        const std::int32_t scan_min = call.scan_min.value_or(0);
        std::int64_t left_out = (2 * std::int64_t{scan} + 1) * (2 * std::int64_t{scan_min} + 1);
        std::string table;
        for (std::int32_t s = std::max(-scan, 2 - ihi); s <= std::min(scan, nbins - ihi); ++s) {
            const std::int32_t most = std::min(scan_min, ihi + s - 1 - ilo);
            for (std::int32_t m = std::max(-scan_min, 1 - ilo); m <= most; ++m) {
                input::Window moved{.ilo = ilo + m, .ihi = ihi + s};
                set_limits(sample.r, moved);
                Row row{stem + peak};
                if (s != 0 || m != 0) row[0] += ":" + std::to_string(s);
                if (m != 0) row[0] += ":" + std::to_string(m);
                append(row, what);
                const Highest top = highest_of(sample.r, sample.g[c], moved);
                append(row, {shortest(moved.rmin), shortest(moved.rmax), text_of(top.mode),
                             text_of(top.height), top.note});
                if (call.scan) row.push_back(std::to_string(s));
                if (call.scan_min) row.push_back(std::to_string(m));
                append(row, sample.cells);
                append_row(table, row);
                --left_out;
            }
        }
        write(table);
        if (left_out > 0) {
            complain(stem + peak + ": moves off the grid or to fewer than 2 bins, left out: " +
                     std::to_string(left_out));
        }
    }
}

// Complains of a partial without a peak.
std::vector<input::Window> windows_of(const Call& call, const std::string& what,
                                      std::int32_t partial, std::span<const float> r,
                                      std::span<const float> g) {
    std::vector<input::Window> windows = find_peaks(r, g, call.search);
    if (windows.empty()) complain(what + ": no peak in partial " + std::to_string(partial));
    if (call.first && windows.size() > 1) windows.resize(1);
    return windows;
}

// Of sample.chosen[c], which all samples have, over the grid, which they share.
std::vector<float> mean_g(const std::vector<Sample>& samples, std::size_t c) {
    std::vector<double> sums(samples[0].r.size());
    for (const Sample& sample : samples) {
        std::ranges::transform(sums, sample.g[c], sums.begin(), std::plus<>());
    }
    std::vector<float> mean(sums.size());
    std::ranges::transform(sums, mean.begin(), [&](double sum) {
        return static_cast<float>(sum / static_cast<double>(samples.size()));
    });
    return mean;
}

template <typename Use>
void for_each_sample(const Call& call, Use use) {
    for (const std::string& file : call.files) {
        try {
            use(load(call, file));
        } catch (const BadFile& bad) {
            complain(bad.what());
        }
    }
}

void write_windows_of_each(const Call& call, const std::string& headings) {
    write(headings);
    for_each_sample(call, [&](const Sample& sample) {
        for (std::size_t c = 0; c < sample.chosen.size(); ++c) {
            write_windows(call, sample, c,
                          windows_of(call, sample.file, sample.chosen[c], sample.r, sample.g[c]));
        }
    });
}

void write_common_windows(const Call& call, const std::string& headings) {
    std::vector<Sample> samples;
    for_each_sample(call, [&](Sample sample) {
        const Sample& first = samples.empty() ? sample : samples[0];
        if (sample.r != first.r) {
            throw Failure(sample.file + ": its grid is not that of " + first.file);
        }
        if (sample.chosen != first.chosen) {
            throw Failure(sample.file + ": its partials are not those of " + first.file);
        }
        samples.push_back(std::move(sample));
    });
    std::vector<std::vector<input::Window>> windows;
    for (std::size_t c = 0; !samples.empty() && c < samples[0].chosen.size(); ++c) {
        const Sample& first = samples[0];
        const std::vector<float> g = mean_g(samples, c);
        windows.push_back(windows_of(call, "the mean of g", first.chosen[c], first.r, g));
    }
    write(headings);
    for (const Sample& sample : samples) {
        for (std::size_t c = 0; c < windows.size(); ++c) write_windows(call, sample, c, windows[c]);
    }
}

void program(int argc, char** argv) {
    CLI::App app("Finds peaks in PDF files and writes a table of windows around them.",
                 "dorvek-peaks");
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr std::int32_t any = std::numeric_limits<std::int32_t>::max();
    Call call;
    Row partial;
    std::optional<std::string> name;
    app.add_option("FILE", call.files, "PDF files")->required();
    add_whole(app, "--partials", call.partials, 1, any,
              "partials in each file; if not said, those of its first line")
        ->type_name("N");
    app.add_option("--partial", partial, "those to look at, counted from 1: 2, or 1,3, or all")
        ->required()
        ->type_name("P,...")
        ->delimiter(',')
        ->allow_extra_args(false);
    app.add_option("--labels", call.labels, "what each partial is called: Si-Si,Si-O,O-O")
        ->type_name("L,...")
        ->delimiter(',')
        ->allow_extra_args(false);
    add_range(app, "--range", call.search.range, "look at A <= r <= B only");
    add_real(app, "--prominence", call.search.prominence, 0, infinity, "the least of a peak (0.3)")
        ->type_name("G");
    add_real(app, "--smooth", call.search.smooth, 0, 1,
             "seek in a copy smoothed over this part of the r of the largest g (0.02; 0: not at "
             "all)")
        ->type_name("F");
    app.add_flag("--first", call.first, "only the first peak of each partial");
    app.add_flag("--common", call.common, "the windows of the mean g for all files");
    add_whole(app, "--scan", call.scan, 0, input::maxbin,
              "each window 2K + 1 times, rmax moved by -K .. K bins")
        ->type_name("K");
    add_whole(app, "--scan-min", call.scan_min, 0, input::maxbin,
              "rmin moved likewise; each way of both")
        ->type_name("K");
    app.add_option("--name", name, "columns from names: '{glass}_{T}K.dat'")->type_name("TEMPLATE");
    parse(app, argc, argv, "dorvek-peaks --partial all --labels Si-Si,Si-O,O-O --first *.dat");
    call.suffixes = needs_suffixes(call.files);
    call.chosen = read_partials(partial);
    if (name) call.pattern = read_template(*name);
    require_agreement(call);
    std::string headings;
    append_row(headings, headings_of(call));
    (call.common ? write_common_windows : write_windows_of_each)(call, headings);
}

}  // namespace

int main(int argc, char** argv) {
    return run(program, argc, argv);
}
