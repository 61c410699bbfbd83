// dorvek-batch: a table of windows in, a table of results out. Rows are taken in blocks, computed
// on all cores and written in their order, so that a table of any length takes the memory of one
// block.

#include <unistd.h>

#include <array>
#include <atomic>
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
#include <utility>
#include <vector>

#include "csv.hpp"
#include "data_file.hpp"
#include "doubts.hpp"
#include "driver/analyse_window.hpp"
#include "driver/report.hpp"
#include "program.hpp"
#include "results.hpp"
#include "textio/lines.hpp"

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
    Column id, rmin, rmax;
    std::array<SampleColumns, input::maxsamp> samples{};
    std::vector<std::size_t> passed{};  // columns passed through
    std::size_t headings = 0;
};

// Sets are large, and most of one is never touched: those no longer used serve again.
struct IdleSets {
    std::mutex mutex;
    std::vector<std::unique_ptr<input::PdfSet>> sets;
};
IdleSets idle;

// A data file, read when a row first needs it, and kept while consecutive rows do.
struct DataFile {
    DataFile(std::string file_path, std::string partials_cell)
        : path(std::move(file_path)), partials(std::move(partials_cell)) {}
    DataFile(const DataFile&) = delete;
    DataFile& operator=(const DataFile&) = delete;
    ~DataFile() {
        const std::lock_guard lock(idle.mutex);
        if (set != nullptr) idle.sets.push_back(std::move(set));
    }

    std::string path;
    std::string partials;  // the cell
    std::once_flag read;
    std::unique_ptr<input::PdfSet> set;
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

std::string_view cell_of(const Row& row, Column column) {
    return column ? std::string_view(row[*column]) : std::string_view();
}

std::int32_t whole_cell(const Row& row, Column column, std::string_view heading) {
    const std::string_view cell = cell_of(row, column);
    if (const auto number = whole_of(cell)) return *number;
    throw Failure(std::string(heading) + (cell.empty() ? " is missing" : " is no whole number: ") +
                  std::string(cell));
}

float real_cell(const Row& row, Column column, std::string_view heading) {
    const std::string_view cell = cell_of(row, column);
    if (const auto number = real_of(cell)) return *number;
    throw Failure(std::string(heading) + (cell.empty() ? " is missing" : " is no number: ") +
                  std::string(cell));
}

void read_once(DataFile& file) {
    if (file.path.empty()) throw Failure("file is missing");
    std::call_once(file.read, [&] {
        try {
            std::optional<std::int32_t> partials;
            if (!file.partials.empty()) partials = whole_cell({file.partials}, 0, "partials");
            std::unique_lock lock(idle.mutex);
            if (!idle.sets.empty()) {
                file.set = std::move(idle.sets.back());
                idle.sets.pop_back();
            }
            lock.unlock();
            if (file.set == nullptr) file.set = std::make_unique<input::PdfSet>();
            file.said = load_pdf(file.path, partials, *file.set);
        } catch (const Failure& failure) {
            file.failure = failure.what();
        }
    });
    if (!file.failure.empty()) throw Failure(file.failure);
}

void copy_bins(const input::PdfSet& from, input::PdfSet& to) {
    const auto copy = [&](const input::Column& column, input::Column& copied) {
        std::ranges::copy(input::first_bins(column, from.nbins), copied.begin());
    };
    to.nbins = from.nbins;
    to.npdfs = from.npdfs;
    copy(from.r, to.r);
    for (std::size_t p = 0; p < held_partials(from); ++p) {
        copy(from.g[p], to.g[p]);
        copy(from.cn[p], to.cn[p]);
    }
}

// The report of a row, and what is to be said of it.
struct Outcome {
    driver::Report report;
    std::vector<std::string> said;
};

void analyse(const Columns& columns, const Task& task, std::span<input::PdfSet> pair,
             Outcome& outcome) {
    constexpr std::array<std::string_view, 2> suffixes{"", "2"};
    driver::Report& report = outcome.report;
    std::int64_t constraints = 0;
    for (std::size_t s = 0; s < samples(report); ++s) {
        const SampleColumns& at = columns.samples[s];
        const auto heading = [&](const char* name) { return name + std::string(suffixes[s]); };
        report.ipdf[s] = whole_cell(task.row, at.partial, heading("partial"));
        if (!cell_of(task.row, at.constraints).empty()) {
            constraints += whole_cell(task.row, at.constraints, heading("constraints"));
        }
    }
    report.found.window.rmin = real_cell(task.row, columns.rmin, "rmin");
    report.found.window.rmax = real_cell(task.row, columns.rmax, "rmax");
    for (std::size_t s = 0; s < samples(report); ++s) {
        read_once(*task.files[s]);
        for (const std::string& said : task.files[s]->said) {
            outcome.said.push_back(s == 0 ? said : "file2: " + said);
        }
    }
    std::span<const input::PdfSet> sets(task.files[0]->set.get(), 1);
    if (report.nsamp == 2) {
        for (std::size_t s = 0; s < pair.size(); ++s) copy_bins(*task.files[s]->set, pair[s]);
        const std::string_view said = driver::reconcile(pair[0], pair[1]);
        if (!said.empty()) outcome.said.emplace_back(said);
        sets = pair;
    }
    const driver::Found found = analyse_window(sets, report.ipdf, constraints, report.found);
    if (found != driver::Found::peak) throw Failure(std::string(message_of(found)));
    add_doubts(sets, report.ipdf, report.found, outcome.said);
}

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) all += (all.empty() ? "" : "; ") + text;
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

// Fills task.output; `pair` is room for two samples.
void compute(const Columns& columns, Task& task, std::span<input::PdfSet> pair) {
    const std::string_view given = cell_of(task.row, columns.id);
    Row head{given.empty() ? std::to_string(task.number) : std::string(given)};
    for (const std::size_t column : columns.passed) head.push_back(task.row[column]);
    Outcome outcome;
    outcome.report.nsamp = task.files[1] == nullptr ? 1 : 2;
    set_names(columns, task.row, head[0], outcome.report);
    try {
        if (task.row.size() > columns.headings) throw Failure("more fields than headings");
        analyse(columns, task, pair, outcome);
    } catch (const Failure& failure) {
        outcome.said.insert(outcome.said.begin(), failure.what());
        task.failed = true;
    }
    const auto bins = [&](std::size_t s) {
        const DataFile& file = *task.files[s];
        return file.set != nullptr && file.failure.empty() ? std::to_string(file.set->nbins) : "";
    };
    for (std::size_t s = 0; s < (task.failed ? 1 : samples(outcome.report)); ++s) {
        Row row = head;
        row.emplace_back(task.failed ? "failed" : "ok");
        row.push_back(joined(outcome.said));
        row.push_back(bins(s));
        if (task.failed) {
            row.resize(row.size() + result_headings().size());
        } else {
            append_result(row, outcome.report, s,
                          trimmed(cell_of(task.row, columns.samples[s].file)));
        }
        append_row(task.output, row);
    }
    task.files = {};
}

Columns columns_of(const TableReader& table, Row& headings) {
    Columns columns{.id = table.column("id"),
                    .rmin = table.column("rmin"),
                    .rmax = table.column("rmax"),
                    .headings = table.headings().size()};
    for (std::size_t s = 0; s < columns.samples.size(); ++s) {
        const auto column = [&](std::string name) {
            if (s > 0) name += std::to_string(s + 1);
            return table.column(name);
        };
        columns.samples[s] = {.file = column("file"),
                              .partials = column("partials"),
                              .partial = column("partial"),
                              .name = column("name"),
                              .constraints = column("constraints")};
    }
    // A table of results calls the partial by the report's label.
    Column& partial = columns.samples[0].partial;
    if (!partial) partial = table.column("pdf");
    const auto need = [](Column column, const char* heading) {
        if (!column) throw WrongCall(std::string("the table has no column ") + heading);
    };
    need(columns.samples[0].file, "file");
    need(partial, "partial");
    need(columns.rmin, "rmin");
    need(columns.rmax, "rmax");

    const Row read = window_headings();
    const Row written = batch_headings();
    const auto among = [](const Row& row, const std::string& heading) {
        return std::ranges::find(row, heading) != row.end();
    };
    headings = {"id"};
    for (std::size_t i = 0; i < table.headings().size(); ++i) {
        const std::string& heading = table.headings()[i];
        if (among(read, heading) || among(written, heading)) continue;
        columns.passed.push_back(i);
        headings.push_back(heading);
    }
    headings.insert(headings.end(), written.begin(), written.end());
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

void compute_block(const Columns& columns, std::span<Task> block, std::size_t jobs) {
    std::atomic<std::size_t> next{0};
    std::atomic<bool> exhausted{false};
    const auto compute_some = [&] {
        std::unique_ptr<std::array<input::PdfSet, input::maxsamp>> pair;
        for (std::size_t i = next++; i < block.size(); i = next++) {
            if (pair == nullptr && block[i].files[1] != nullptr) {
                pair = std::make_unique<std::array<input::PdfSet, input::maxsamp>>();
            }
            compute(columns, block[i],
                    pair == nullptr ? std::span<input::PdfSet>() : std::span(*pair));
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

void run_table(const std::string& name, std::size_t jobs) {
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
    for (bool more = true; more;) {
        std::vector<Task> block;
        for (Row row; block.size() < rows_per_block && (more = table.next(row));) {
            DataFiles files{file_of(folder, columns.samples[0], row, before)};
            if (!trimmed(cell_of(row, columns.samples[1].file)).empty()) {
                const std::array used{files[0], before[0], before[1]};
                files[1] = file_of(folder, columns.samples[1], row, used);
            }
            before = files;
            block.push_back({.number = ++rows, .row = std::move(row), .files = std::move(files)});
        }
        compute_block(columns, block, jobs);
        output.clear();
        for (const Task& task : block) {
            output += task.output;
            failed += task.failed ? 1 : 0;
        }
        write(output);
        if (progress) std::fprintf(stderr, "\r%zu rows\r", rows);
    }
    if (failed > 0) complain(std::to_string(rows) + " rows, " + std::to_string(failed) + " failed");
}

void program(int argc, char** argv) {
    CLI::App app("Analyses the windows that a table lists and writes a table of results.",
                 "dorvek-batch");
    std::string table = "-";
    std::int32_t jobs =
        static_cast<std::int32_t>(std::max(std::thread::hardware_concurrency(), 1U));
    const CLI::Option* given = app.add_option(
        "TABLE", table,
        "columns file, partial, rmin and rmax; if wanted, partials, id, name, constraints and, for "
        "a second sample, file2, partial2, partials2, name2, constraints2; any other is passed "
        "through. Standard input if - or none is named");
    add_whole(app, "-j", jobs, 1, std::numeric_limits<std::int32_t>::max(),
              "rows at a time; as many as there are cores if not said")
        ->type_name("JOBS");
    parse(app, argc, argv, "dorvek-peaks --partial 2 --first *.dat | dorvek-batch > peaks.csv");
    require_input(given);
    run_table(table, static_cast<std::size_t>(jobs));
}

}  // namespace

int main(int argc, char** argv) {
    return run(program, argc, argv);
}
