// dorvek-plot: pictures of reports, of the quantities of a table, or of a PDF file to choose a
// window by. gnuplot draws them.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "csv.hpp"
#include "curves.hpp"
#include "gnuplot.hpp"
#include "layout.hpp"
#include "program.hpp"
#include "quantities.hpp"
#include "results.hpp"
#include "results_file.hpp"
#include "text.hpp"
#include "textio/lines.hpp"

namespace {

using namespace dorvek;
using namespace dorvek::tools;

struct Call {
    std::optional<std::string> picture;
    Look look;
    std::string input = "dorvek.res";
    Quantities quantities;
    std::optional<std::string> file;
    std::int32_t partial = 0;
    std::optional<std::int32_t> partials;
};

// Data files are named as seen from the directory of what names them.
std::filesystem::path beside(const std::string& input, const std::string& file) {
    return std::filesystem::path(input).parent_path() / file;
}

std::vector<CurvePicture> results_in(const Call& call, const std::string& content) {
    std::vector<CurvePicture> pictures;
    for_each_report_of(content, input_name(call.input), [&](const FiledReport& filed) {
        const driver::Report& report = filed.report;
        CurvePicture picture{
            .number = filed.number, .windows = {report.found.window}, .samples = {}};
        for (std::size_t s = 0; s < filed.files.size(); ++s) {
            const analysis::WindowStats& stats = report.found.stats[s];
            const std::string name(
                textio::trimmed({report.snames[s].data(), report.snames[s].size()}));
            picture.samples.push_back({.number = static_cast<std::int32_t>(s + 1),
                                       .file = beside(call.input, filed.files[s]),
                                       .partials = call.partials,
                                       .pdf = report.ipdf[s],
                                       .name = name.empty() ? filed.files[s] : name,
                                       .Rmea = stats.Rmea,
                                       .Rmod = stats.Rmod,
                                       .var = stats.var});
        }
        pictures.push_back(std::move(picture));
    });
    return pictures;
}

// A table from dorvek-table has names as seen from its results files, unless it lies beside them.
std::filesystem::path data_file(const std::string& input, const std::string& results,
                                const std::string& file) {
    const std::filesystem::path there = beside(beside(input, results), file);
    std::error_code ignored;
    return exists(there, ignored) ? there : beside(input, file);
}

// The cell under a heading; empty if there is no such column.
std::string cell(const TableReader& table, const Row& row, std::string_view heading) {
    const auto column = table.column(heading);
    return column ? row[*column] : std::string();
}

// What is not finite is not marked.
float number(const TableReader& table, const Row& row, const std::string& heading) {
    const std::string text = cell(table, row, heading);
    if (text == "NaN" || text == "INF" || text == "-INF") return NAN;
    const std::optional<float> value = real_of(text);
    if (!value) throw Failure(heading + " is no number");
    return *value;
}

SampleCurve sample_of(const Call& call, const TableReader& table, const Row& row) {
    const std::string file = cell(table, row, "file");
    const std::string name(textio::trimmed(cell(table, row, "name")));
    SampleCurve sample{.number = whole_of(cell(table, row, "sample")).value_or(0),
                       .file = data_file(call.input, cell(table, row, "results"), file),
                       .partials = call.partials,
                       .pdf = whole_of(cell(table, row, "pdf")).value_or(0),
                       .name = name.empty() ? file : name,
                       .label = cell(table, row, "label"),
                       .is_r2 = cell(table, row, "weight") == "r2",
                       .Rmea = number(table, row, "Rmea"),
                       .Rmod = number(table, row, "Rmod"),
                       .var = number(table, row, "var")};
    if (sample.number != 1 && sample.number != 2) throw Failure("sample is not 1 or 2");
    return sample;
}

input::Window window_of(const TableReader& table, const Row& row) {
    const input::Window window{.rmin = number(table, row, "rmin"),
                               .rmax = number(table, row, "rmax")};
    if (!(window.rmin < window.rmax)) throw Failure("rmin is not below rmax");
    return window;
}

// A row of a table is one sample; those of a report agree in what names it and in the window. The
// label of a row is that of its first partial.
std::vector<CurvePicture> table_in(const Call& call, const std::string& content) {
    TableReader table(content, call.input);
    for (const char* heading :
         {"sample", "file", "name", "pdf", "rmin", "rmax", "Rmea", "Rmod", "var"}) {
        if (table.column(heading)) continue;
        throw WrongCall(input_name(call.input) + ": is no table of results, without column " +
                        heading);
    }
    std::vector<CurvePicture> pictures;
    std::map<Row, std::size_t> latest;  // picture of a report
    Row row;
    for (std::size_t n = 1; table.next(row); ++n) {
        if (cell(table, row, "status") == "failed") continue;
        try {
            if (row.size() > table.headings().size()) throw Failure("more fields than headings");
            const SampleCurve sample = sample_of(call, table, row);
            const input::Window window = window_of(table, row);
            Row key;
            for (const char* heading : {"id", "results", "report", "rmin", "rmax"}) {
                key.push_back(cell(table, row, heading));
            }
            const auto found = latest.find(key);
            if (found != latest.end()) {
                std::vector<SampleCurve>& samples = pictures[found->second].samples;
                if (samples.size() == 1 && samples[0].number != sample.number) {
                    samples.insert(sample.number == 1 ? samples.begin() : samples.end(), sample);
                    if (samples[1].pdf != samples[0].pdf) samples[1].label.clear();
                    continue;
                }
            }
            latest[key] = pictures.size();
            pictures.push_back(
                {.number = pictures.size() + 1, .windows = {window}, .samples = {sample}});
        } catch (const Failure& failure) {
            complain(input_name(call.input) + ", row " + std::to_string(n) + ": " + failure.what());
        }
    }
    if (pictures.empty()) complain(input_name(call.input) + ": no report");
    return pictures;
}

// The name of the picture of a report: with its number if there are several.
std::string numbered(const std::string& name, std::size_t number) {
    const std::size_t suffix = name.size() - 4;
    return name.substr(0, suffix) + '-' + std::to_string(number) + name.substr(suffix);
}

// Draws one picture, which is shown or becomes the file of this name.
void draw(Kind kind, const std::string& name, const Page& page) {
    const std::string picture = drawn(kind, page.height, page.script);
    if (kind == Kind::text) {
        write(page.key + picture);
    } else if (write_file(name, picture)) {
        write(name + '\n');
    }
}

void draw_all(const Call& call, const std::vector<CurvePicture>& pictures) {
    Page pages;  // of a .pdf
    bool is_first = true;
    for (const CurvePicture& picture : pictures) {
        Page page;
        try {
            page = page_of(picture, call.look);
        } catch (const Failure& failure) {
            complain(failure.what());
            continue;
        }
        if (call.look.kind == Kind::pdf) {
            pages = {page.height, pages.script + page.script, ""};
            continue;
        }
        if (call.look.kind == Kind::text && !std::exchange(is_first, false)) write("\n");
        const bool has_number = call.picture && pictures.size() > 1;
        draw(call.look.kind,
             has_number ? numbered(*call.picture, picture.number) : call.picture.value_or(""),
             page);
    }
    if (!pages.script.empty()) draw(Kind::pdf, *call.picture, pages);
}

// Does this content begin with a line of numbers, as no table does?
bool is_pdf_file(const std::string& content) {
    std::istringstream words(content.substr(0, content.find('\n')));
    bool is_number = false;
    for (std::string word; words >> word;) {
        is_number = real_of(word).has_value();
        if (!is_number) break;
    }
    return is_number;
}

void draw_input(const Call& call) {
    const std::string content = content_of(call.input);
    if (is_pdf_file(content)) {
        throw WrongCall(input_name(call.input) + ": is a PDF file; dorvek-plot --file " +
                        call.input + " --partial 1 draws its first partial");
    }
    if (!call.quantities.of.empty()) {
        if (!content.empty() && is_results_file(content)) {
            throw WrongCall(input_name(call.input) +
                            ": --of takes a table; dorvek-table makes one of it");
        }
        draw(call.look.kind, call.picture.value_or(""),
             page_of(graph_of(call.quantities, content, input_name(call.input)), call.look));
    } else {
        draw_all(call,
                 is_results_file(content) ? results_in(call, content) : table_in(call, content));
    }
}

Kind kind_of(const std::string& picture) {
    for (const auto& [suffix, kind] : {std::pair(".png", Kind::png), std::pair(".svg", Kind::svg),
                                       std::pair(".pdf", Kind::pdf)}) {
        if (picture.ends_with(suffix)) return kind;
    }
    throw WrongCall(picture + ": the name of a picture ends in .png, .svg or .pdf");
}

// A picture must not take the place of what it shows.
void require_no_loss(const std::string& picture, const std::string& input) {
    std::error_code neither_is_there;
    if (std::filesystem::equivalent(picture, input, neither_is_there)) {
        throw WrongCall("-o " + picture + ": is the file to draw");
    }
}

void program(int argc, char** argv) {
    CLI::App app(
        "Draws each report of a results file (dorvek.res) or of a table of results; with\n"
        "--of, quantities of a table against one of its columns; with --file, g(r) of a\n"
        "PDF file with the windows that dorvek-peaks proposes.",
        "dorvek-plot");
    Call call;
    app.add_option("-o", call.picture, "a .png, .svg or .pdf; if not said, text is shown")
        ->type_name("PICTURE");
    add_range(app, "--range", call.look.range, "show this part of r, or of the COLUMN");
    CLI::Option* log = app.add_flag("--log", call.look.log, "make g logarithmic");
    app.add_option("--unit", call.look.unit, "the unit of r, for its label")->type_name("TEXT");
    CLI::Option* input = app.add_option(
        "INPUT", call.input,
        "results file or table; - is standard input, dorvek.res is read if none is named");
    const auto list = [&](const char* name, std::vector<std::string>& value, const char* what) {
        return app.add_option(name, value, what)->delimiter(',')->allow_extra_args(false);
    };
    CLI::Option* of = list("--of", call.quantities.of, "draw these quantities of a table")
                          ->type_name("Q,...")
                          ->excludes(log);
    app.add_option("--against", call.quantities.against,
                   "against this column; if not said, rmax, or the state of dorvek-replicas")
        ->type_name("COLUMN")
        ->needs(of);
    list("--each", call.quantities.each,
         "a line for each combination of these; if not said, of file and partial")
        ->type_name("COLUMN,...")
        ->needs(of);
    CLI::Option* file = app.add_option("--file", call.file, "a PDF file")
                            ->type_name("FILE")
                            ->excludes(input)
                            ->excludes(of);
    CLI::Option* partial =
        add_whole(app, "--partial", call.partial, 1, input::maxpdf, "which of it, from 1")
            ->type_name("P")
            ->needs(file);
    file->needs(partial);
    add_whole(app, "--partials", call.partials, 1, std::numeric_limits<std::int32_t>::max(),
              "partials in each file; if not said, those of its first line")
        ->type_name("N");
    parse(app, argc, argv, "dorvek-plot --file silica_300K.dat --partial 2 --range 1:4");
    if (call.picture) {
        call.look.kind = kind_of(*call.picture);
        require_no_loss(*call.picture, call.file.value_or(call.input));
    }
    if (call.file) {
        draw_all(call, {preview({.file = *call.file,
                                 .partials = call.partials,
                                 .pdf = call.partial,
                                 .name = *call.file})});
    } else {
        draw_input(call);
    }
}

}  // namespace

int main(int argc, char** argv) {
    return run(program, argc, argv);
}
