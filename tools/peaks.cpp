// dorvek-peaks: a window around each peak of PDF files, as a table for dorvek-batch.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "csv.hpp"
#include "data_file.hpp"
#include "find_peaks.hpp"
#include "program.hpp"
#include "results.hpp"

namespace {

using namespace dorvek;
using namespace dorvek::tools;

// {a}_{b}.dat as the names a and b, and the texts before, between and behind them.
struct Template {
    Row names;
    std::vector<std::string> texts;
};

struct Call {
    std::vector<std::string> files;
    bool suffixes = false;  // stand in the identifiers
    std::optional<std::int32_t> partials;
    std::int32_t partial = 0;
    PeakSearch search;
    bool first = false;
    bool common = false;
    std::optional<std::int32_t> scan;
    std::optional<std::string> name;
};

// The partial of one file, and what its name holds.
struct Sample {
    std::string file;
    Row cells;
    std::int32_t partials = 0;
    std::vector<float> r;
    std::vector<float> g;
};

Template read_template(std::string_view text) {
    Template read;
    for (std::size_t open = 0; (open = text.find('{')) != std::string_view::npos;) {
        const std::size_t close = text.find('}', open);
        if (close == std::string_view::npos) throw WrongCall("--name: a brace is not closed");
        read.texts.emplace_back(text.substr(0, open));
        read.names.emplace_back(text.substr(open + 1, close - open - 1));
        text.remove_prefix(close + 1);
    }
    read.texts.emplace_back(text);
    if (read.names.empty()) throw WrongCall("--name: nothing stands in braces");
    return read;
}

// What stands for the names, each the shortest text of at least one byte. With the first place
// that fits the text behind it, most is left for the others; the last one has to reach the end.
std::optional<Row> match(const Template& pattern, std::string_view name) {
    if (!name.starts_with(pattern.texts[0])) return {};
    name.remove_prefix(pattern.texts[0].size());
    Row cells;
    for (std::size_t i = 1; i < pattern.texts.size(); ++i) {
        const std::string& behind = pattern.texts[i];
        constexpr std::size_t none = std::string_view::npos;
        const std::size_t length = i + 1 < pattern.texts.size() ? name.find(behind, 1)
                                   : name.ends_with(behind)     ? name.size() - behind.size()
                                                                : none;
        if (length == none || length == 0) return {};
        cells.emplace_back(name.substr(0, length));
        name.remove_prefix(length + behind.size());
    }
    return cells;
}

Row headings_of(const Call& call, const Template& pattern) {
    Row headings{"id", "file", "partials", "partial", "rmin", "rmax", "mode", "height", "note"};
    if (call.scan) headings.emplace_back("shift");
    for (const std::string& name : pattern.names) {
        if (name.empty() || std::ranges::find(headings, name) != headings.end()) {
            throw WrongCall("--name: there can be no further column {" + name + "}");
        }
        headings.push_back(name);
    }
    return headings;
}

// Throws BadFile.
Sample load(const Call& call, const Template& pattern, const std::string& file) {
    static const auto set = std::make_unique<input::PdfSet>();
    const std::string says = file + ": ";
    Sample sample;
    sample.file = file;
    if (call.name) {
        const auto cells = match(pattern, std::filesystem::path(file).filename().string());
        if (!cells) throw BadFile(says + "does not match --name");
        sample.cells = *cells;
    }
    for (const std::string& what : load_pdf(file, call.partials, *set)) tell(says + what);
    const Partial partial = partial_of(*set, call.partial, file);
    sample.partials = set->npdfs;
    sample.r.assign(partial.r.begin(), partial.r.end());
    sample.g.assign(partial.g.begin(), partial.g.end());
    return sample;
}

void append_window(std::string& table, const Call& call, const Sample& sample,
                   const std::string& id, const input::Window& window, std::int32_t shift) {
    const auto [mode, height, note] = top_of(sample.r, sample.g, window);
    Row row{shift == 0 ? id : id + ":" + std::to_string(shift),
            sample.file,
            std::to_string(sample.partials),
            std::to_string(call.partial),
            shortest(window.rmin),
            shortest(window.rmax),
            text_of(mode),
            text_of(height),
            note};
    if (call.scan) row.push_back(std::to_string(shift));
    row.insert(row.end(), sample.cells.begin(), sample.cells.end());
    append_row(table, row);
}

std::string without_suffix(const std::string& file) {
    return std::filesystem::path(file).replace_extension().string();
}

// Would two files be called alike without their suffixes?
bool needs_suffixes(const std::vector<std::string>& files) {
    const std::set<std::string> names(files.begin(), files.end());
    std::set<std::string> stems;
    for (const std::string& name : names) stems.insert(without_suffix(name));
    return stems.size() < names.size();
}

void write_windows(const Call& call, const Sample& sample,
                   const std::vector<input::Window>& windows) {
    const auto nbins = static_cast<std::int32_t>(sample.r.size());
    const std::int32_t scan = call.scan.value_or(0);
    std::string table;
    for (std::size_t k = 0; k < windows.size(); ++k) {
        std::string id = call.suffixes ? sample.file : without_suffix(sample.file);
        id += "-" + std::to_string(call.partial) + "-" + std::to_string(k + 1);
        const std::int32_t least = std::max(-scan, windows[k].ilo + 1 - windows[k].ihi);
        const std::int32_t most = std::min(scan, nbins - windows[k].ihi);
        for (std::int32_t shift = least; shift <= most; ++shift) {
            input::Window window = windows[k];
            window.ihi += shift;
            set_limits(sample.r, window);
            append_window(table, call, sample, id, window, shift);
        }
        if (least > -scan) {
            complain(id + ": shifts below " + std::to_string(least) + " leave fewer than 2 bins");
        }
        if (most < scan) {
            complain(id + ": shifts above " + std::to_string(most) + " lead beyond the last bin");
        }
    }
    write(table);
}

// Complains of `what` if g has no peak.
std::vector<input::Window> windows_of(const Call& call, const std::string& what,
                                      const std::vector<float>& r, const std::vector<float>& g) {
    std::vector<input::Window> windows = find_peaks(r, g, call.search);
    if (windows.empty()) complain(what + ": no peak");
    if (call.first && windows.size() > 1) windows.resize(1);
    return windows;
}

std::vector<float> mean_g(const std::vector<Sample>& samples) {
    std::vector<double> sums(samples[0].r.size());
    for (const Sample& sample : samples) {
        if (sample.r != samples[0].r) {
            throw Failure(sample.file + ": its grid is not that of " + samples[0].file);
        }
        for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += sample.g[i];
    }
    std::vector<float> mean(sums.size());
    std::ranges::transform(sums, mean.begin(), [&](double sum) {
        return static_cast<float>(sum / static_cast<double>(samples.size()));
    });
    return mean;
}

template <typename Use>
void for_each_sample(const Call& call, const Template& pattern, Use use) {
    for (const std::string& file : call.files) {
        try {
            use(load(call, pattern, file));
        } catch (const BadFile& bad) {
            complain(bad.what());
        }
    }
}

void write_table(const Call& call) {
    if (call.partials && call.partial > *call.partials) {
        throw WrongCall("--partial: there are only " + std::to_string(*call.partials));
    }
    const Template pattern = call.name ? read_template(*call.name) : Template{};
    std::string headings;
    append_row(headings, headings_of(call, pattern));
    if (!call.common) {
        write(headings);
        for_each_sample(call, pattern, [&](const Sample& sample) {
            write_windows(call, sample, windows_of(call, sample.file, sample.r, sample.g));
        });
        return;
    }
    std::vector<Sample> samples;
    for_each_sample(call, pattern, [&](Sample sample) { samples.push_back(std::move(sample)); });
    std::vector<input::Window> windows;
    if (!samples.empty()) {
        windows = windows_of(call, "the mean of g", samples[0].r, mean_g(samples));
    }
    write(headings);
    for (const Sample& sample : samples) write_windows(call, sample, windows);
}

// As CLI::Range, which lets nan through, but for the words.
auto from_to(double least, double most) {
    return [=](const std::string& text) -> std::string {
        double number = 0;
        if (CLI::detail::lexical_cast(text, number) && number >= least && number <= most) return {};
        const auto in_words = [](double limit) { return CLI::detail::to_string(limit); };
        return "'" + text + "' is no number from " + in_words(least) + " to " + in_words(most);
    };
}

void program(int argc, char** argv) {
    CLI::App app("Finds peaks in PDF files and writes a table of windows around them.",
                 "dorvek-peaks");
    constexpr double infinity = std::numeric_limits<double>::infinity();
    Call call;
    app.add_option("FILE", call.files, "PDF files")->required();
    app.add_option("--partials", call.partials,
                   "partials in each file; if not said, those\nof its first line")
        ->type_name("N")
        ->check(from_to(1, infinity));
    app.add_option("--partial", call.partial, "the one to look at, counted from 1")
        ->required()
        ->type_name("P")
        ->check(from_to(1, input::maxpdf));
    app.add_option("--range", call.search.range, "look at A <= r <= B only")
        ->type_name("A:B")
        ->check([](const std::string& text) {
            Range range;
            return lexical_cast(text, range) ? "" : "'" + text + "' is no range A:B";
        });
    app.add_option("--prominence", call.search.prominence, "the least of a peak (0.3)")
        ->type_name("G")
        ->check(from_to(0, infinity));
    app.add_option("--smooth", call.search.smooth,
                   "seek in a copy smoothed over this part of the r\nof the largest g (0.02; 0: "
                   "not at all)")
        ->type_name("F")
        ->check(from_to(0, 1));
    app.add_flag("--first", call.first, "only the first peak of each file");
    app.add_flag("--common", call.common, "the windows of the mean g for all files");
    app.add_option("--scan", call.scan, "each window 2K + 1 times, rmax moved by -K .. K bins")
        ->type_name("K")
        ->check(from_to(0, infinity));
    app.add_option("--name", call.name, "columns from names: '{glass}_{T}K.dat'")
        ->type_name("TEMPLATE");
    parse(app, argc, argv);
    call.suffixes = needs_suffixes(call.files);
    write_table(call);
}

}  // namespace

int main(int argc, char** argv) {
    return run(program, argc, argv);
}
