// dorvek-batch: a table of windows in, a table of results out. Rows are taken in blocks, computed
// on all cores and written in their order, so that a table of any length takes the memory of one
// block.

#include <unistd.h>

#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "csv.hpp"
#include "data_file.hpp"
#include "doubts.hpp"
#include "driver/analyse_window.hpp"
#include "driver/report.hpp"
#include "program.hpp"
#include "results.hpp"
#include "text.hpp"
#include "textio/lines.hpp"
#include "weight.hpp"

namespace {

using namespace dorvek::tools;
namespace driver = dorvek::driver;
namespace input = dorvek::input;
using dorvek::textio::trimmed;

constexpr std::size_t rows_per_block = 1024;

using Column = std::optional<std::size_t>;

// Where a row says what is to be done; of what it need not say, there may be no column.
struct SampleColumns {
    Column file, partials, partial, name, constraints;
};
struct Columns {
    Column id, rmin, rmax, weight;
    std::array<SampleColumns, input::maxsamp> samples{};
    std::vector<std::size_t> passed{};  // columns passed through
    std::size_t headings = 0;
    std::size_t written = 0;  // columns of the output,
    std::size_t dCN = 0;      // and which of them this is
};

// A data file, read when a row first needs it, and kept while consecutive rows do.
struct DataFile {
    DataFile(std::string file_path, std::string partials_cell)
        : path(std::move(file_path)), partials(std::move(partials_cell)) {}

    std::string path;
    std::string partials;  // the cell
    std::once_flag read;
    std::vector<float> r;
    std::vector<std::vector<float>> g, cn;  // of each partial
    std::vector<std::string> said;
    std::string failure;
};
using DataFiles = std::array<std::shared_ptr<DataFile>, input::maxsamp>;

// A row of the table, and the rows that it becomes.
struct Task {
    std::size_t number = 0;
    Row row;
    DataFiles files;
    std::string output{};
    bool failed = false;
};

// What a thread computes in.
using Sets = std::array<input::PdfSet, input::maxsamp>;

std::string_view cell_of(const Row& row, Column column) {
    return column ? std::string_view(row[*column]) : std::string_view();
}

std::int32_t whole_cell(const Row& row, Column column, std::string_view heading) {
    const std::string_view cell = cell_of(row, column);
    if (const auto number = whole_of(cell)) return *number;
    throw Failure(std::string(heading) +
                  (cell.empty()         ? " is missing"
                   : is_too_large(cell) ? " is too large: "
                                        : " is no whole number: ") +
                  printable(cell));
}

float real_cell(const Row& row, Column column, std::string_view heading) {
    const std::string_view cell = cell_of(row, column);
    if (const auto number = real_of(cell)) return *number;
    throw Failure(std::string(heading) + (cell.empty() ? " is missing" : " is no number: ") +
                  printable(cell));
}

std::vector<float> bins_of(const input::Column& column, const input::PdfSet& set) {
    const auto bins = input::first_bins(column, set.nbins);
    return {bins.begin(), bins.end()};
}

void read(DataFile& file, input::PdfSet& set) {
    try {
        if (file.path.empty()) throw Failure("file is missing");
        std::optional<std::int32_t> partials;
        if (!file.partials.empty()) partials = whole_cell({file.partials}, 0, "partials");
        file.said = load_pdf(file.path, partials, set);
        file.r = bins_of(set.r, set);
        for (std::size_t p = 0; p < held_partials(set); ++p) {
            file.g.push_back(bins_of(set.g[p], set));
            file.cn.push_back(bins_of(set.cn[p], set));
        }
    } catch (const Failure& failure) {
        file.failure = failure.what();
    }
}

// Makes a set of one partial of the file, counted from 1, weighted.
void fill(input::PdfSet& set, const DataFile& file, std::int32_t partial, bool is_r2) {
    if (partial < 1 || static_cast<std::size_t>(partial) > file.g.size()) {
        throw Failure("there is no partial " + std::to_string(partial));
    }
    const auto p = static_cast<std::size_t>(partial - 1);
    set.nbins = static_cast<std::int32_t>(file.r.size());
    set.npdfs = 1;
    std::ranges::copy(file.r, set.r.begin());
    std::ranges::copy(file.g[p], set.g[0].begin());
    std::ranges::copy(file.cn[p], set.cn[0].begin());
    if (is_r2) weigh_r2(file.r, std::span(set.g[0]).first(file.r.size()));
}

// What the row is weighted with, if that is what all rows are to be, where the call says so.
std::string weight_of(const Columns& columns, const Row& row, const std::string& all) {
    std::string cell(trimmed(cell_of(row, columns.weight)));
    if (cell.empty()) return all.empty() ? "g" : all;
    if (cell != "g" && cell != "r2") throw Failure("weight is neither g nor r2: " + cell);
    if (!all.empty() && cell != all) throw Failure("weight is " + cell + ", not that of --weight");
    return cell;
}

// The report of a row, and what is to be said of it.
struct Outcome {
    driver::Report report;
    std::vector<std::string> said;
    std::array<std::string, input::maxsamp> bins;
    std::string step, weight;
};

void analyse(const Columns& columns, const Task& task, const std::string& weight, Sets& room,
             Outcome& outcome) {
    constexpr std::array<std::string_view, 2> suffixes{"", "2"};
    constexpr std::array<std::string_view, 2> prefixes{"", "file2: "};
    driver::Report& report = outcome.report;
    const std::size_t count = samples(report);
    if (task.row.size() > columns.headings) throw Failure("more fields than headings");
    // Whatever else is wrong with the row, its weight and the bins of its files are known.
    for (std::size_t s = 0; s < count; ++s) {
        DataFile& file = *task.files[s];
        std::call_once(file.read, [&] { read(file, room[s]); });
        if (!file.failure.empty()) continue;
        outcome.bins[s] = std::to_string(file.r.size());
        if (s == 0 && file.r.size() > 1) outcome.step = text_of(file.r[1] - file.r[0]);
    }
    outcome.weight = weight_of(columns, task.row, weight);
    std::int64_t constraints = 0;
    for (std::size_t s = 0; s < count; ++s) {
        const SampleColumns& at = columns.samples[s];
        const auto heading = [&](const char* name) { return name + std::string(suffixes[s]); };
        report.ipdf[s] = whole_cell(task.row, at.partial, heading("partial"));
        if (!cell_of(task.row, at.constraints).empty()) {
            constraints += whole_cell(task.row, at.constraints, heading("constraints"));
        }
    }
    report.found.window.rmin = real_cell(task.row, columns.rmin, "rmin");
    report.found.window.rmax = real_cell(task.row, columns.rmax, "rmax");
    const auto sets = std::span(room).first(count);
    for (std::size_t s = 0; s < count; ++s) {
        const DataFile& file = *task.files[s];
        if (!file.failure.empty()) throw Failure(file.failure);
        for (const std::string& said : file.said) {
            outcome.said.push_back(std::string(prefixes[s]) + said);
        }
    }
    for (std::size_t s = 0; s < count; ++s) {
        try {
            fill(sets[s], *task.files[s], report.ipdf[s], outcome.weight == "r2");
        } catch (const Failure& failure) {
            throw Failure(std::string(prefixes[s]) + failure.what());
        }
    }
    if (count == 2) {
        const std::string_view said = driver::reconcile(sets[0], sets[1]);
        if (!said.empty()) outcome.said.emplace_back(said);
    }
    constexpr std::array<std::int32_t, input::maxsamp> only{1, 1};  // partial of each set
    const driver::Found found =
        analyse_window(sets, std::span(only).first(count), constraints, report.found);
    if (found != driver::Found::peak) throw Failure(std::string(message_of(found)));
    add_doubts(sets, std::span(only).first(count), report.found, outcome.said);
}

// Without control characters, for what is shown reaches a terminal.
std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) all += (all.empty() ? "" : "; ") + printable(text);
    return all;
}

void set_names(const Columns& columns, const Row& row, std::string_view id,
               driver::Report& report) {
    for (std::size_t s = 0; s < samples(report); ++s) {
        const std::string_view cell = cell_of(row, columns.samples[s].name);
        const std::string_view name = (cell.empty() ? id : cell).substr(0, report.snames[s].size());
        report.snames[s].fill(' ');
        std::ranges::copy(name, report.snames[s].begin());
    }
}

// Adds Rmed and Rtop of the weights in the window, empty where there is none.
void append_places(Row& row, const input::PdfSet& set, const input::Window& window) {
    const auto r = input::window_of(set.r, window.ilo, window.ihi);
    const auto g = input::window_of(set.g[0], window.ilo, window.ihi);
    for (const float place : {median_of(r, g, set.r[1] - set.r[0]), top_of(r, g)}) {
        row.push_back(std::isnan(place) ? "" : text_of(place));
    }
}

// Fills task.output, computing in `room`.
void compute(const Columns& columns, Task& task, const std::string& weight, Sets& room) {
    const std::string_view given = cell_of(task.row, columns.id);
    Row head{given.empty() ? std::to_string(task.number) : std::string(given)};
    for (const std::size_t column : columns.passed) head.push_back(task.row[column]);
    Outcome outcome;
    driver::Report& report = outcome.report;
    report.nsamp = task.files[1] == nullptr ? 1 : 2;
    set_names(columns, task.row, head[0], report);
    try {
        analyse(columns, task, weight, room, outcome);
    } catch (const Failure& failure) {
        outcome.said.insert(outcome.said.begin(), failure.what());
        task.failed = true;
    }
    for (std::size_t s = 0; s < (task.failed ? 1 : samples(report)); ++s) {
        Row row = head;
        row.insert(row.end(), {task.failed ? "failed" : "ok", joined(outcome.said), outcome.bins[s],
                               outcome.step, outcome.weight});
        if (task.failed) {
            row.resize(columns.written);
        } else {
            append_result(row, report, s, trimmed(cell_of(task.row, columns.samples[s].file)));
            if (outcome.weight == "r2") row[columns.dCN].clear();  // it is that of g
            append_places(row, room[s], report.found.window);
        }
        append_row(task.output, row);
    }
    task.files = {};
}

Columns columns_of(const TableReader& table, Row& headings) {
    if (!table.column("partial") && table.column("pdf")) {
        throw WrongCall("this is a table of results; the one of its windows is wanted");
    }
    for (const char* heading : {"file", "partial", "rmin", "rmax"})
        std::ignore = table.needed(heading);
    Columns columns{.id = table.column("id"),
                    .rmin = table.column("rmin"),
                    .rmax = table.column("rmax"),
                    .weight = table.column("weight"),
                    .headings = table.headings().size()};
    for (std::size_t s = 0; s < columns.samples.size(); ++s) {
        const auto column = [&](const std::string& name) {
            return table.column(s == 0 ? name : name + std::to_string(s + 1));
        };
        columns.samples[s] = {.file = column("file"),
                              .partials = column("partials"),
                              .partial = column("partial"),
                              .name = column("name"),
                              .constraints = column("constraints")};
    }
    const Row read = window_headings();
    const Row written = batch_headings();
    const auto among = [](const Row& row, const std::string& heading) {
        return std::ranges::find(row, heading) != row.end();
    };
    headings = {"id"};
    std::string dropped;
    for (std::size_t i = 0; i < table.headings().size(); ++i) {
        const std::string& heading = table.headings()[i];
        if (heading.empty() || among(read, heading)) continue;
        if (among(written, heading)) {
            dropped += ' ' + heading;
            continue;
        }
        columns.passed.push_back(i);
        headings.push_back(heading);
    }
    if (!dropped.empty()) tell("not passed through, for the output has such columns:" + dropped);
    headings.insert(headings.end(), written.begin(), written.end());
    columns.written = headings.size();
    columns.dCN = static_cast<std::size_t>(std::ranges::find(headings, "dCN") - headings.begin());
    return columns;
}

// The file of a sample: one of those used just before, if it is the same.
std::shared_ptr<DataFile> file_of(const std::string& folder, const SampleColumns& at,
                                  const Row& row, std::span<const std::shared_ptr<DataFile>> used) {
    const std::string name(trimmed(cell_of(row, at.file)));
    const std::string partials(cell_of(row, at.partials));
    const std::string path = name.empty() || name.starts_with('/') ? name : folder + name;
    for (const auto& file : used) {
        if (file != nullptr && file->path == path && file->partials == partials) return file;
    }
    return std::make_shared<DataFile>(path, partials);
}

void compute_block(const Columns& columns, std::span<Task> block, const std::string& weight,
                   std::size_t jobs) {
    std::atomic<std::size_t> next{0};
    std::atomic<bool> exhausted{false};
    const auto compute_some = [&] {
        const auto room = std::make_unique<Sets>();
        for (std::size_t i = next++; i < block.size(); i = next++) {
            compute(columns, block[i], weight, *room);
        }
    };
    const auto work = [&] {
        try {
            compute_some();
        } catch (const std::bad_alloc&) {
            exhausted = true;
        }
    };
    std::vector<std::jthread> others;
    try {
        while (others.size() + 1 < std::min(jobs, block.size())) others.emplace_back(work);
    } catch (const std::system_error&) {  // the system gives no more: as many as there are
    }
    work();
    others.clear();
    if (exhausted) throw std::bad_alloc();
}

void run_table(const std::string& name, const std::string& weight, std::size_t jobs) {
    TableReader table(content_of(name), name);
    Row headings;
    const Columns columns = columns_of(table, headings);
    std::string output;
    append_row(output, headings);
    write(output);

    const std::size_t slash = name.rfind('/');
    const std::string folder = slash == std::string::npos ? "" : name.substr(0, slash + 1);
    const bool progress = ::isatty(STDERR_FILENO) == 1;
    std::size_t rows = 0;
    std::size_t failed = 0;
    DataFiles before;
    std::string broken;  // why the table cannot be read on
    for (bool more = true; more;) {
        std::vector<Task> block;
        const auto take_row = [&](Row& row) {
            try {
                more = table.next(row);
            } catch (const Failure& failure) {
                broken = failure.what();
                more = false;
            }
            return more;
        };
        for (Row row; block.size() < rows_per_block && take_row(row);) {
            DataFiles files{file_of(folder, columns.samples[0], row, before)};
            if (!trimmed(cell_of(row, columns.samples[1].file)).empty()) {
                const std::array used{files[0], before[0], before[1]};
                files[1] = file_of(folder, columns.samples[1], row, used);
            }
            before = files;
            block.push_back({.number = ++rows, .row = std::move(row), .files = std::move(files)});
        }
        compute_block(columns, block, weight, jobs);
        output.clear();
        for (const Task& task : block) {
            output += task.output;
            failed += task.failed ? 1 : 0;
        }
        write(output);
        if (progress) std::fprintf(stderr, "\r%zu rows\r", rows);
    }
    if (failed > 0) {
        complain("rows that failed: " + std::to_string(failed) + " of " + std::to_string(rows));
    }
    if (!broken.empty()) complain(broken);
}

void program(int argc, char** argv) {
    CLI::App app("Analyses the windows that a table lists and writes a table of results.",
                 "dorvek-batch");
    std::string table = "-";
    std::string weight;
    std::int32_t jobs =
        static_cast<std::int32_t>(std::max(std::thread::hardware_concurrency(), 1U));
    const CLI::Option* given = app.add_option(
        "TABLE", table,
        "columns file, partial, rmin and rmax; if wanted, partials, id, name, weight, constraints "
        "and, for a second sample, file2, partial2, partials2, name2, constraints2; any other is "
        "passed through. Standard input if - or none is named");
    add_whole(app, "-j", jobs, 1, std::numeric_limits<std::int32_t>::max(),
              "rows at a time; as many as there are cores if not said")
        ->type_name("JOBS");
    app.add_option("--weight", weight,
                   "of all moments: g, or r2 for g r^2, the distribution of bond lengths; if not "
                   "said, what the column weight says, or g")
        ->type_name("W")
        ->check(CLI::IsMember({"g", "r2"}));
    parse(app, argc, argv, "dorvek-peaks --partial 2 --first *.dat | dorvek-batch > peaks.csv");
    require_input(given);
    run_table(table, weight, static_cast<std::size_t>(jobs));
}

}  // namespace

int main(int argc, char** argv) {
    return run(program, argc, argv);
}
