// dorvek-plot: pictures of reports, or of a PDF file to choose a window by. gnuplot draws them.

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "csv.hpp"
#include "data_file.hpp"
#include "find_peaks.hpp"
#include "gnuplot.hpp"
#include "program.hpp"
#include "results.hpp"
#include "results_file.hpp"
#include "text.hpp"
#include "textio/lines.hpp"

namespace {

using namespace dorvek;
using namespace dorvek::tools;

struct Call {
    std::optional<std::string> picture;
    Kind kind = Kind::text;
    Range range;
    bool log = false;
    std::string unit;
    std::string input = "dorvek.res";
    std::optional<std::string> file;
    std::int32_t partial = 0;
    std::optional<std::int32_t> partials;
};

// A curve, and what a report says of its peak. What is not finite is not marked.
struct Sample {
    std::int32_t number = 1;  // within the report
    std::filesystem::path file;
    std::string name;
    std::int32_t pdf = 0;
    float Rmea = NAN;
    float Rmod = NAN;
    float var = NAN;
};

struct Picture {
    std::size_t number = 0;              // within the input
    std::vector<input::Window> windows;  // one of a report; those that are proposed for a PDF file
    std::vector<Sample> samples;
    bool is_report = true;
};

struct Curve {
    std::vector<float> r;
    std::vector<float> g;
};

// What of the curves is shown.
struct View {
    double left = 0;
    double right = 0;
    double bottom = 0;
    double top = 0;  // of the curves; there is room above
    bool log = false;
};

// A text of the key and the mark before it: - for a line, o for a mean, v for a mode, | for a
// window.
struct Entry {
    char mark = ' ';
    std::int32_t sample = 1;
    std::string text;
    bool begins_row = false;
    std::size_t column = 0;
};

// A picture as gnuplot is to draw it. That of a text leaves the key to us, and the lines below it.
struct Page {
    std::string key;
    double height = figure_height;
    std::string script;
};

// A figure is 8.5 cm wide, as the columns of a journal; lengths are points, 1/72 inch.
constexpr double row_height = 10.5;
constexpr double column_width = 5;  // that a character has, about, in the widest fonts
constexpr std::size_t figure_columns = 48;

Curve load_curve(const Call& call, const Sample& sample) {
    static const auto set = std::make_unique<input::PdfSet>();
    static std::set<std::string> told;
    const std::string name = sample.file.string();
    for (const std::string& what : load_pdf(name, call.partials, *set)) {
        const auto [text, is_new] = told.insert((name + ": ").append(what));
        if (is_new) tell(*text);
    }
    const Partial partial = partial_of(*set, sample.pdf, name);
    Curve curve;
    for (std::size_t i = 0; i < partial.r.size(); ++i) {
        if (!std::isfinite(partial.r[i]) || !std::isfinite(partial.g[i])) continue;
        curve.r.push_back(partial.r[i]);
        curve.g.push_back(partial.g[i]);
    }
    if (curve.r.empty()) throw Failure(name + ": there are no bins");
    return curve;
}

View view_of(const Call& call, const Picture& picture, const std::vector<Curve>& curves) {
    View view{.log = call.log};
    for (const Curve& curve : curves) {
        view.left = std::min<double>(view.left, curve.r.front());
        view.right = std::max<double>(view.right, curve.r.back());
    }
    if (picture.is_report) {
        const double rmin = picture.windows[0].rmin;
        const double rmax = picture.windows[0].rmax;
        view.left = std::max(view.left, rmin - 0.6 * (rmax - rmin));
        view.right = rmax + 0.6 * (rmax - rmin);
    }
    if (std::isfinite(call.range.from)) view.left = call.range.from;
    if (std::isfinite(call.range.to)) view.right = call.range.to;

    bool holds_any = false;
    double lowest = 0;
    double lowest_positive = HUGE_VAL;
    double highest = 0;
    for (const Curve& curve : curves) {
        for (std::size_t i = 0; i < curve.r.size(); ++i) {
            if (curve.r[i] < view.left || curve.r[i] > view.right) continue;
            lowest = std::min<double>(lowest, curve.g[i]);
            highest = std::max<double>(highest, curve.g[i]);
            if (curve.g[i] > 0) lowest_positive = std::min<double>(lowest_positive, curve.g[i]);
            holds_any = true;
        }
    }
    const std::string where = picture.samples[0].file.string() + ", r from " +
                              shortest(static_cast<float>(view.left)) + " to " +
                              shortest(static_cast<float>(view.right));
    if (!holds_any) throw Failure(where + ": there are no bins");
    // gnuplot would refuse what has no width in the digits that it gets, and the smallest numbers.
    if (view.right - view.left <= 2e-6 * std::max(std::abs(view.left), std::abs(view.right))) {
        throw Failure(where + ": too narrow");
    }
    if (call.log && highest < std::numeric_limits<float>::min()) {
        throw Failure(where + ": g has no logarithm");
    }
    // Of a logarithm, the power of ten below the smallest value, or below a millionth of the
    // largest.
    const double smallest = std::max(lowest_positive, 1e-6 * highest);
    view.bottom = call.log ? std::pow(10, std::ceil(std::log10(smallest / 2)) - 1) : lowest;
    view.top = highest > view.bottom ? highest : view.bottom + 1;
    return view;
}

// The g at a part of the way from the bottom of the view to the highest of the curves.
double level(const View& view, double part) {
    return view.log ? view.bottom * std::pow(view.top / view.bottom, part)
                    : view.bottom + part * (view.top - view.bottom);
}

// Zero has no logarithm and is drawn at the bottom.
double shown(const View& view, double g) {
    return view.log ? std::max(g, view.bottom) : g;
}

bool is_marked(const Sample& sample) {
    return std::isfinite(sample.Rmea) && std::isfinite(sample.Rmod) && std::isfinite(sample.var) &&
           sample.var >= 0;
}

// g of the curve at the mode of a report, which has a bin on either side.
double height_of(const Sample& sample, const Curve& curve) {
    const float r = sample.Rmod;
    const auto i = static_cast<std::size_t>(std::ranges::lower_bound(curve.r, r) - curve.r.begin());
    if (i < curve.r.size() && curve.r[i] == r) return curve.g[i];
    if (i == 0 || i == curve.r.size()) {
        throw Failure(sample.file.string() + ": not the data of the report, whose mode is " +
                      text_of(r));
    }
    const double part = (static_cast<double>(r) - curve.r[i - 1]) /
                        (static_cast<double>(curve.r[i]) - curve.r[i - 1]);
    return curve.g[i - 1] + part * (static_cast<double>(curve.g[i]) - curve.g[i - 1]);
}

// The curve within the view and one bin beyond, the mean with its bar, and the mode, as blocks of
// data.
void write_data(std::ostream& script, const View& view, const Sample& sample, const Curve& curve) {
    const auto is_left = [&](std::size_t i) { return curve.r[i] < view.left; };
    const auto is_right = [&](std::size_t i) { return curve.r[i] > view.right; };
    script << "$curve" << sample.number << " << END\n";
    for (std::size_t i = 0; i < curve.r.size(); ++i) {
        if (is_left(i) && (i + 1 == curve.r.size() || is_left(i + 1))) continue;
        if (is_right(i) && (i == 0 || is_right(i - 1))) continue;
        script << curve.r[i] << ' ' << shown(view, curve.g[i]) << '\n';
    }
    script << "END\n";
    if (!is_marked(sample)) return;
    script << "$mean" << sample.number << " << END\n"
           << sample.Rmea << ' ' << level(view, 1 + 0.09 * sample.number) << ' '
           << std::sqrt(sample.var) << "\nEND\n"
           << "$mode" << sample.number << " << END\n"
           << sample.Rmod << ' ' << shown(view, height_of(sample, curve)) << "\nEND\n";
}

// The standard deviation, to four digits; the report has its square.
std::string sdev_of(const Sample& sample) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.begin(), text.end(), std::sqrt(sample.var),
                                       std::chars_format::general, 4)
                             .ptr};
}

// The key, row after row: an entry begins a row if it has to, or if it does not fit behind another.
using Key = std::vector<std::vector<Entry>>;

Key key_of(const Picture& picture, bool lists_windows, std::size_t columns) {
    constexpr std::size_t mark_columns = 5;  // with the space behind the entry before
    std::vector<Entry> entries;
    const std::vector<Sample>& samples = picture.samples;
    const bool alike = samples.size() == 2 && samples[0].name == samples[1].name;
    for (const Sample& sample : samples) {
        const std::int32_t s = sample.number;
        const std::string name = printable(alike ? sample.file.string() : sample.name);
        const std::string partial = ", partial " + std::to_string(sample.pdf);
        const std::size_t room = columns - mark_columns - partial.size();
        entries.push_back({'-', s, shortened(name, room) + partial, true});
        if (!is_marked(sample)) continue;
        entries.push_back(
            {'o', s, "mean " + text_of(sample.Rmea) + ", sd " + sdev_of(sample), true});
        entries.push_back({'v', s, "mode " + text_of(sample.Rmod)});
    }
    for (std::size_t w = 0; lists_windows && w < picture.windows.size(); ++w) {
        const auto& [rmin, rmax, ilo, ihi] = picture.windows[w];
        entries.push_back({'|', 1,
                           picture.is_report ? "window " + text_of(rmin) + " to " + text_of(rmax)
                                             : std::to_string(w + 1) + ": " + shortest(rmin) +
                                                   " to " + shortest(rmax),
                           w == 0});
    }
    Key key;
    std::size_t taken = 0;
    for (Entry& entry : entries) {
        const std::size_t width = mark_columns + width_of(entry.text);
        if (entry.begins_row || taken + width > columns) {
            key.emplace_back();
            taken = 0;
        }
        entry.column = taken;
        taken += width;
        key.back().push_back(std::move(entry));
    }
    return key;
}

std::string text_key(const Key& key) {
    std::string text;
    for (const std::vector<Entry>& row : key) {
        std::string line;
        for (const Entry& entry : row) {
            line += line.empty() ? "" : "   ";
            line += entry.mark != '-' ? entry.mark : entry.sample == 1 ? '*' : '#';
            line += ' ' + entry.text;
        }
        text += line + '\n';
    }
    return text;
}

// A place on a figure, in points from its upper left corner.
struct Place {
    double x = 0;
    double y = 0;
};

std::ostream& operator<<(std::ostream& script, const Place& place) {
    return script << "screen " << place.x / figure_width << ", screen "
                  << 1 - place.y / figure_height;
}

void write_key(std::ostream& script, const Key& key) {
    double y = 7;
    for (const std::vector<Entry>& row : key) {
        for (const auto& [mark, sample, text, begins_row, column] : row) {
            const double x = 5 + column_width * static_cast<double>(column);
            const Place left{x, y}, middle{x + 8, y}, right{x + 16, y};
            if (mark == '|') {
                script << "set object rectangle from " << Place{x, y + 3.5} << " to "
                       << Place{x + 16, y - 3.5} << '\n';
            }
            if (mark == '-' || mark == 'o') {
                script << "set arrow from " << left << " to " << right << " linestyle " << sample
                       << (mark == '-' ? " nohead\n"
                                       : " dashtype solid heads size screen 0.008, 90\n");
            }
            if (mark == 'o' || mark == 'v') {
                script << "set label \"\" at " << middle << " point linestyle "
                       << sample + (mark == 'o' ? 2 : 4) << '\n';
            }
            script << "set label " << gnuplot_string(text) << " at " << Place{x + 20, y} << '\n';
        }
        y += row_height;
    }
}

// Where the numbers at `limits`, which ascend, stand above the plot without touching each other.
std::vector<double> spread(const std::vector<float>& limits, const View& view) {
    constexpr double height = 9 / (0.825 * figure_width);  // of a line, in parts of the r axis
    const double gap =
        std::min(height, 1 / static_cast<double>(limits.size())) * (view.right - view.left);
    std::vector<double> places(limits.begin(), limits.end());
    for (std::size_t i = 1; i < places.size(); ++i) {
        places[i] = std::max(places[i], places[i - 1] + gap);
    }
    double most = view.right;
    for (std::size_t i = places.size(); i > 0; --i) {
        places[i - 1] = std::min(places[i - 1], most);
        most = places[i - 1] - gap;
    }
    return places;
}

// Returns the height of what stands above the plot of a figure.
double write_windows(std::ostream& script, const View& view, const Picture& picture, Kind kind) {
    std::set<float> limits;
    for (std::size_t w = 0; w < picture.windows.size(); ++w) {
        const auto& [rmin, rmax, ilo, ihi] = picture.windows[w];
        const double left = std::max<double>(rmin, view.left);
        const double right = std::min<double>(rmax, view.right);
        if (!(left < right)) continue;
        if (kind != Kind::text) {
            script << "set object rectangle from " << left << ", graph 0 to " << right
                   << ", graph 1\n";
        } else if (!picture.is_report) {
            script << "set label \"" << w + 1 << "\" at " << (left + right) / 2
                   << ", graph 0.98 center\n";
        }
        if (kind != Kind::text && picture.is_report) continue;
        for (const float limit : {rmin, rmax}) {
            if (limit >= view.left && limit <= view.right) limits.insert(limit);
        }
    }
    const std::vector<float> ascending(limits.begin(), limits.end());
    const std::vector<double> places = spread(ascending, view);
    double height = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const float r = ascending[i];
        script << "set arrow from " << r << ", graph 0 to " << r
               << ", graph 1 nohead linestyle 7\n";
        if (kind == Kind::text) continue;
        const std::string text = shortest(r);
        script << "set arrow from " << r << ", graph 1 to " << places[i]
               << ", graph 1.06 nohead linestyle 7\n"
               << "set label \"" << text << "\" at " << places[i] << ", graph 1.08 rotate left\n";
        height = std::max(height, 14 + column_width * static_cast<double>(text.size()));
    }
    return height;
}

Page page_of(const Call& call, const Picture& picture) {
    std::vector<Curve> curves;
    for (const Sample& sample : picture.samples) curves.push_back(load_curve(call, sample));
    const View view = view_of(call, picture, curves);
    const bool is_text = call.kind == Kind::text;
    const Key key =
        key_of(picture, is_text || picture.is_report, is_text ? text_columns : figure_columns);
    const std::string axis = call.unit.empty() ? "r" : "r (" + printable(call.unit) + ")";

    std::ostringstream script;
    script.precision(7);  // as many as a float has
    script << "unset label; unset arrow; unset object\n"
           << "set xlabel " << gnuplot_string(axis) << "; set ylabel \"g(r)\"\n"
           << "set xrange [" << view.left << ':' << view.right << "]\n"
           << "set yrange [" << view.bottom << ':' << level(view, 1.25) << "]\n"
           << (view.log ? "set logscale y\n" : "");
    const double limits_height = write_windows(script, view, picture, call.kind);
    if (!is_text) {
        const double above = 9 + row_height * static_cast<double>(key.size()) + limits_height;
        script << "set tmargin at screen " << 1 - above / figure_height << '\n';
        write_key(script, key);
    }
    for (std::size_t s = 0; s < curves.size(); ++s) {
        write_data(script, view, picture.samples[s], curves[s]);
    }
    script << "plot";
    for (const Sample& sample : picture.samples) {
        const std::int32_t s = sample.number;
        script << (&sample == picture.samples.data() ? " " : ", ") << "$curve" << s
               << " with lines linestyle " << s << " notitle";
        if (!is_marked(sample)) continue;
        script << ", $mean" << s << " with xerrorbars linestyle " << s + 2 << " notitle, $mode" << s
               << " with points linestyle " << s + 4 << " notitle";
    }
    script << '\n';
    if (!is_text) return {"", figure_height, script.str()};
    const std::size_t lines = text_lines - std::min(text_lines - 15, key.size());
    return {text_key(key), static_cast<double>(lines), script.str()};
}

// The name of the picture of a report: with its number if there are several.
std::string numbered(const std::string& name, std::size_t number) {
    const std::size_t suffix = name.size() - 4;
    return name.substr(0, suffix) + '-' + std::to_string(number) + name.substr(suffix);
}

void draw(const Call& call, const std::vector<Picture>& pictures) {
    const auto write_picture = [&](const std::string& name, const std::string& script) {
        if (write_file(name, drawn(call.kind, figure_height, script))) write(name + '\n');
    };
    std::string pages;
    bool is_first = true;
    for (const Picture& picture : pictures) {
        Page page;
        try {
            page = page_of(call, picture);
        } catch (const Failure& failure) {
            complain(failure.what());
            continue;
        }
        if (call.kind == Kind::pdf) {
            pages += page.script;
        } else if (call.kind == Kind::text) {
            write((is_first ? "" : "\n") + page.key + drawn(call.kind, page.height, page.script));
            is_first = false;
        } else {
            write_picture(
                pictures.size() == 1 ? *call.picture : numbered(*call.picture, picture.number),
                page.script);
        }
    }
    if (!pages.empty()) write_picture(*call.picture, pages);
}

// Data files are named as seen from the directory of what names them.
std::filesystem::path beside(const std::string& input, const std::string& file) {
    return std::filesystem::path(input).parent_path() / file;
}

std::vector<Picture> results_in(const std::string& content, const std::string& input) {
    std::vector<Picture> pictures;
    for_each_report_of(content, input, [&](const FiledReport& filed) {
        const driver::Report& report = filed.report;
        Picture picture{.number = filed.number, .windows = {report.found.window}, .samples = {}};
        for (std::size_t s = 0; s < filed.files.size(); ++s) {
            const analysis::WindowStats& stats = report.found.stats[s];
            const std::string name(
                textio::trimmed({report.snames[s].data(), report.snames[s].size()}));
            picture.samples.push_back({.number = static_cast<std::int32_t>(s + 1),
                                       .file = beside(input, filed.files[s]),
                                       .name = name.empty() ? filed.files[s] : name,
                                       .pdf = report.ipdf[s],
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

Sample sample_of(const TableReader& table, const Row& row, const std::string& input) {
    const std::string file = cell(table, row, "file");
    const std::string name(textio::trimmed(cell(table, row, "name")));
    Sample sample{.number = whole_of(cell(table, row, "sample")).value_or(0),
                  .file = data_file(input, cell(table, row, "results"), file),
                  .name = name.empty() ? file : name,
                  .pdf = whole_of(cell(table, row, "pdf")).value_or(0),
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

// A row of a table is one sample; those of a report agree in what names it and in the window.
std::vector<Picture> table_in(const std::string& content, const std::string& input) {
    TableReader table(content, input);
    for (const char* heading :
         {"sample", "file", "name", "pdf", "rmin", "rmax", "Rmea", "Rmod", "var"}) {
        if (table.column(heading)) continue;
        throw WrongCall(input + ": is no table of results, without column " + heading);
    }
    std::vector<Picture> pictures;
    std::map<Row, std::size_t> latest;  // picture of a report
    Row row;
    for (std::size_t n = 1; table.next(row); ++n) {
        if (cell(table, row, "status") == "failed") continue;
        try {
            const Sample sample = sample_of(table, row, input);
            const input::Window window = window_of(table, row);
            Row key;
            for (const char* heading : {"id", "results", "report", "rmin", "rmax"}) {
                key.push_back(cell(table, row, heading));
            }
            const auto found = latest.find(key);
            if (found != latest.end()) {
                std::vector<Sample>& samples = pictures[found->second].samples;
                if (samples.size() == 1 && samples[0].number != sample.number) {
                    samples.insert(sample.number == 1 ? samples.begin() : samples.end(), sample);
                    continue;
                }
            }
            latest[key] = pictures.size();
            pictures.push_back({pictures.size() + 1, {window}, {sample}});
        } catch (const Failure& failure) {
            complain(input + ", row " + std::to_string(n) + ": " + failure.what());
        }
    }
    if (pictures.empty()) complain(input + ": no report");
    return pictures;
}

Picture preview(const Call& call) {
    Picture picture{.windows = {},
                    .samples = {{.file = *call.file, .name = *call.file, .pdf = call.partial}},
                    .is_report = false};
    const Curve curve = load_curve(call, picture.samples[0]);
    picture.windows = find_peaks(curve.r, curve.g, {});
    return picture;
}

std::vector<Picture> pictures_of(const Call& call) {
    if (call.file) return {preview(call)};
    const std::string content = content_of(call.input);
    return is_results_file(content) ? results_in(content, call.input)
                                    : table_in(content, call.input);
}

Kind kind_of(const std::string& picture) {
    for (const auto& [suffix, kind] : {std::pair(".png", Kind::png), std::pair(".svg", Kind::svg),
                                       std::pair(".pdf", Kind::pdf)}) {
        if (picture.ends_with(suffix)) return kind;
    }
    throw WrongCall(picture + ": the name of a picture ends in .png, .svg or .pdf");
}

void program(int argc, char** argv) {
    CLI::App app(
        "Draws each report of a results file (dorvek.res) or of a table of results; or,\n"
        "with --file, g(r) of a PDF file with the windows that dorvek-peaks proposes.",
        "dorvek-plot");
    Call call;
    app.add_option("-o", call.picture, "a .png, .svg or .pdf; if not said, text is shown")
        ->type_name("PICTURE");
    add_range(app, "--range", call.range, "show this part of r");
    app.add_flag("--log", call.log, "make g logarithmic");
    app.add_option("--unit", call.unit, "the unit of r, for its label");
    CLI::Option* input =
        app.add_option("INPUT", call.input, "results file or table; - is standard input")
            ->capture_default_str();
    CLI::Option* file = app.add_option("--file", call.file, "a PDF file")->excludes(input);
    CLI::Option* partial =
        add_whole(app, "--partial", call.partial, 1, input::maxpdf, "which of it, from 1")
            ->type_name("P")
            ->needs(file);
    file->needs(partial);
    add_whole(app, "--partials", call.partials, 1, std::numeric_limits<std::int32_t>::max(),
              "partials in each file; if not said, those of its first line")
        ->type_name("N");
    parse(app, argc, argv, "dorvek-plot --file silica_300K.dat --partial 2 --range 1:4");
    if (call.picture) call.kind = kind_of(*call.picture);
    draw(call, pictures_of(call));
}

}  // namespace

int main(int argc, char** argv) {
    return run(program, argc, argv);
}
