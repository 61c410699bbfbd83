// dorvek-convert: PDF files from what other programs write.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <numbers>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "csv.hpp"
#include "grid.hpp"
#include "input/pdf_set.hpp"
#include "program.hpp"
#include "textio/lines.hpp"

namespace {

using namespace dorvek::tools;
namespace textio = dorvek::textio;

struct Number {
    double value = 0;
    std::string text;  // as it was read: what is only passed on keeps its digits
};

using Bin = std::vector<Number>;  // one line: r, then the other columns
using Block = std::vector<Bin>;   // all of one width
using TakeBlock = std::function<void(Block&&)>;

// A file being read. What stands behind its last line feed is a line too, but may be part of one.
struct Lines {
    std::string name;
    textio::Input input;
    bool unterminated = false;  // the line taken last has no line feed
};

// What a block's columns are.
struct Layout {
    std::vector<std::size_t> use;   // those of g, counted from 1; empty for all behind r
    bool running = false;           // each g is followed by its running number
    std::vector<double> densities;  // otherwise, of the atoms that each partial counts,
    double density = 0;             // or that every partial counts
};

// The options as they are typed, and the layout that they make.
struct Call {
    std::string form, file = "-", step = "last", from = "1", output, density, volume;
    std::vector<std::string> use, fractions, atoms, pairs;
    Layout layout;
};

// The number that the program reads from `text`, if it is one, before it is rounded to a float.
std::optional<double> number_of(std::string_view text) {
    const std::optional<float> rounded = real_of(text);
    if (!rounded || !std::isfinite(*rounded)) return {};
    std::string respelled(text);  // for std::from_chars: no plus sign, the exponent behind an e
    const auto other_letter = [](char c) { return (c | 0x20) == 'd' || (c | 0x20) == 'q'; };
    std::ranges::replace_if(respelled, other_letter, 'e');
    const std::size_t sign = respelled.find_last_of("+-");
    if (sign != std::string::npos && sign > 0 && (respelled[sign - 1] | 0x20) != 'e') {
        respelled.insert(sign, 1, 'e');
    }
    double value = 0;  // stays where it is too small for a double
    std::from_chars(respelled.data() + (respelled[0] == '+' ? 1 : 0),
                    respelled.data() + respelled.size(), value);
    return value;
}

// Running numbers and means are written as the floats that the program reads.
std::string written(double value) {
    const auto nearest = static_cast<float>(value);
    if (!std::isfinite(nearest)) throw Failure("a number is too large to be written");
    return shortest(nearest);
}

double positive(const std::string& option, const std::string& text) {
    const double value = number_of(text).value_or(0);
    if (value > 0) return value;
    throw WrongCall(option + ": " + text + " is not a number above 0");
}

std::size_t whole(const std::string& option, const std::string& text, std::int32_t lowest) {
    const std::int32_t value = whole_of(text).value_or(lowest - 1);
    if (value >= lowest) return static_cast<std::size_t>(value);
    throw WrongCall(option + ": " + text + " is not a whole number from " + std::to_string(lowest) +
                    " on");
}

// Something that cannot be read on the line taken last.
Failure bad_line(const Lines& lines, const std::string& what) {
    std::string place = lines.name + ", line " + std::to_string(lines.input.line_number);
    return Failure{place + ": " + what};
}

void require(textio::Status status, const Lines& lines) {
    if (status == textio::Status::ok) return;
    const int error = lines.input.error;
    throw Failure(lines.name + ": " + std::string(message_of(status)) +
                  (error == 0 ? "" : std::string(": ") + std::strerror(error)));
}

bool take_line(Lines& lines, std::string_view& line) {
    textio::Input& input = lines.input;
    textio::Status status = textio::take_line(input, line);
    lines.unterminated = status == textio::Status::end_of_input;
    if (lines.unterminated) status = take_last_line(input, line);
    if (status == textio::Status::end_of_input) return false;
    require(status, lines);
    if (!lines.unterminated) line.remove_suffix(1);
    if (input.line_number == 1 && line.starts_with("\xEF\xBB\xBF")) line.remove_prefix(3);
    return true;
}

// What stands on a line apart by blanks, tabs, or a comma with any of these around it. Between two
// commas stands an empty field; commas at the end separate nothing.
std::vector<std::string_view> fields_of(std::string_view line) {
    constexpr std::string_view blanks = " \t\r";
    const auto skip_blanks = [&] {
        line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    };
    std::vector<std::string_view> fields;
    for (skip_blanks(); !line.empty(); skip_blanks()) {
        const std::size_t length = std::min(line.find_first_of(" \t\r,"), line.size());
        fields.push_back(line.substr(0, length));
        line.remove_prefix(length);
        skip_blanks();
        if (line.starts_with(',')) line.remove_prefix(1);
    }
    while (!fields.empty() && fields.back().empty()) fields.pop_back();
    return fields;
}

bool is_no_comment(std::string_view field) {
    return !field.starts_with('#');
}

// Is this the first field of a line of numbers, if perhaps of none that can be read? A heading
// begins otherwise.
bool begins_numbers(std::string_view field) {
    field.remove_prefix(std::min(field.find_first_not_of("+-"), field.size()));
    if (field.empty()) return false;
    std::string word(field);
    for (char& c : word) c = static_cast<char>(c | 0x20);  // in lower case
    return field[0] == '.' || (field[0] >= '0' && field[0] <= '9') || word == "nan" ||
           word == "inf" || word == "infinity";
}

// Takes the next line whose first field is one that is wanted.
bool take_fields(Lines& lines, bool (*wanted)(std::string_view),
                 std::vector<std::string_view>& fields) {
    for (std::string_view line; take_line(lines, line);) {
        fields = fields_of(line);
        if (!fields.empty() && wanted(fields[0])) return true;
    }
    return false;
}

// The numbers of a line, as many as `width` says or, if that is 0, any.
Bin bin_of(const std::vector<std::string_view>& fields, std::size_t width, const Lines& lines) {
    if (width != 0 && fields.size() != width) {
        throw bad_line(lines, "the number of columns is " + std::to_string(fields.size()) +
                                  ", not " + std::to_string(width));
    }
    Bin bin;
    for (const std::string_view field : fields) {
        const std::optional<double> value = number_of(field);
        if (!value) {
            throw bad_line(lines, "column " + std::to_string(bin.size() + 1) + " is no number");
        }
        bin.push_back({*value, std::string(field)});
    }
    return bin;
}

void tell_cut_short(const Lines& lines) {
    tell(lines.name + ": a block cut short at the end of the file is left out");
}

// Calls take(block) for each whole time step: a line with the step and its number of rows, then the
// rows, each behind its own number.
void read_lammps(Lines& lines, const TakeBlock& take) {
    Block block;
    std::size_t rows = 0;
    std::size_t width = 0;
    for (std::vector<std::string_view> fields; take_fields(lines, is_no_comment, fields);) {
        if (lines.unterminated) return tell_cut_short(lines);
        Bin bin = bin_of(fields, rows == 0 ? 2 : width, lines);
        if (rows == 0) {
            rows = static_cast<std::size_t>(std::max(whole_of(fields[1]).value_or(0), 0));
            if (rows == 0) throw bad_line(lines, "no number of rows");
            continue;
        }
        width = bin.size();
        if (width < 2 || bin[0].value != static_cast<double>(block.size() + 1)) {
            throw bad_line(lines, "not row " + std::to_string(block.size() + 1));
        }
        bin.erase(bin.begin());
        block.push_back(std::move(bin));
        if (block.size() < rows) continue;
        take(std::exchange(block, {}));
        rows = 0;
    }
    if (rows > 0) tell_cut_short(lines);
}

// Calls take(block) for each whole block; a new one begins where r falls back. Cut short is a last
// block of fewer rows than the one before it, or one that ends within a line: with a number or the
// line feed missing. The line feed alone may be missing where there is no other block.
void read_columns(Lines& lines, const TakeBlock& take) {
    Block block;
    std::size_t rows_before = 0;
    std::size_t width = 0;
    for (std::vector<std::string_view> fields; take_fields(lines, begins_numbers, fields);) {
        if (lines.unterminated && (rows_before > 0 || fields.size() < width)) {
            return tell_cut_short(lines);
        }
        Bin bin = bin_of(fields, width, lines);
        width = bin.size();
        if (!block.empty() && bin[0].value < block.back()[0].value) {
            rows_before = block.size();
            take(std::exchange(block, {}));
        }
        block.push_back(std::move(bin));
    }
    if (block.size() < rows_before) return tell_cut_short(lines);
    if (!block.empty()) take(std::move(block));
}

// Do the rows only have their numbers where r should be? The second column then ascends in even
// steps, and over again if the rows are counted through several blocks.
bool counts_rows(const Block& block) {
    const double first = block[0][0].value;
    if (block.size() < 3 || block[0].size() < 2 || (first != 0 && first != 1)) return false;
    for (std::size_t i = 0; i < block.size(); ++i) {
        if (block[i][0].value != first + static_cast<double>(i)) return false;
    }
    std::size_t end = 1;
    while (end < block.size() && block[end][1].value > block[end - 1][1].value) ++end;
    if (end < 3 || (end < block.size() && block[end][1].value != block[0][1].value)) return false;
    return out_of_step(end, [&](std::size_t i) { return block[i][1].value; }) == end;
}

// The columns of g, and those of n behind them if they are in the file, r being 0.
std::vector<std::size_t> columns_of(const Layout& layout, std::size_t width) {
    std::vector<std::size_t> columns;
    for (const std::size_t column : layout.use) {
        columns.push_back(column - 1);
        if (layout.running) columns.push_back(column);
    }
    for (std::size_t column = 1; layout.use.empty() && column < width; ++column) {
        columns.push_back(column);
    }
    if (std::ranges::any_of(columns, [&](std::size_t column) { return column >= width; })) {
        throw WrongCall("--use: there are " + std::to_string(width) + " columns");
    }
    if (columns.empty() || (layout.running && columns.size() % 2 == 1)) {
        throw Failure(std::to_string(width) + " columns are not r, and g" +
                      (layout.running ? " and n" : "") + " of each partial");
    }
    return columns;
}

// The densities of the atoms that `partials` partials count.
std::vector<double> densities_of(const Layout& layout, std::size_t partials) {
    std::vector<double> densities = layout.densities;
    if (densities.empty()) {
        if (partials > 1) tell("no --fractions: every partial counts all atoms");
        densities.resize(partials, layout.density);
    }
    if (densities.size() == partials) return densities;
    throw WrongCall("partials: " + std::to_string(partials) +
                    ", fractions or pairs: " + std::to_string(densities.size()));
}

void tell_limits(std::size_t bins, std::size_t partials) {
    using namespace dorvek::input;
    const auto only = [](std::size_t count, std::int32_t capacity, const char* what) {
        if (count <= static_cast<std::size_t>(capacity)) return;
        tell(std::to_string(count) + what + ": dorvek takes the first " + std::to_string(capacity));
    };
    only(bins, maxbin, " bins");
    only(partials, maxpdf, " partials");
}

// A block as a PDF file. Running numbers that are not in it are n = 4 pi rho c sum(g r^2 dr), rho c
// being the density of the atoms counted; each includes the whole of its bin.
std::string pdf_of(const Block& block, const Layout& layout) {
    if (counts_rows(block)) {
        throw Failure(
            "the first column only counts rows; take it out (cut -d, -f2-), so that r is the "
            "first");
    }
    const std::vector<std::size_t> columns = columns_of(layout, block[0].size());
    if (block.size() < 2) throw Failure("fewer than two bins");
    const auto at = [&](std::size_t i) { return block[i][0].value; };
    const bool ascends = at(block.size() - 1) > at(0);
    if (const std::size_t i = ascends ? out_of_step(block.size(), at) : 1; i < block.size()) {
        throw Failure("r does not ascend in even steps at " + block[i][0].text);
    }
    tell_limits(block.size(), layout.running ? columns.size() / 2 : columns.size());
    std::vector<double> factors;
    if (!layout.running) factors = densities_of(layout, columns.size());
    // Over the whole grid, so that rounded r do not make the steps differ.
    const double span = block.back()[0].value - block[0][0].value;
    for (double& factor : factors) {
        factor *= 4 * std::numbers::pi * span / static_cast<double>(block.size() - 1);
    }
    std::vector<double> sums(factors.size());
    std::string text;
    for (const Bin& bin : block) {
        const double r = bin[0].value;
        text += bin[0].text;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const Number& number = bin[columns[i]];
            text += ' ' + number.text;
            if (layout.running) continue;
            sums[i] += number.value * r * r;
            text += ' ' + written(factors[i] * sums[i]);
        }
        text += '\n';
    }
    return text;
}

// The density of the second kind of atoms of each pair.
std::vector<double> densities_of_pairs(const Call& call) {
    std::vector<std::pair<std::string, double>> kinds;
    const double volume = positive("--volume", call.volume);
    for (const std::string& atoms : call.atoms) {
        const std::size_t equals = atoms.find('=');
        if (equals == std::string::npos) throw WrongCall("--atoms: " + atoms + " has no count");
        kinds.emplace_back(atoms.substr(0, equals), positive("--atoms", atoms.substr(equals + 1)));
    }
    std::vector<double> densities;
    for (const std::string& pair : call.pairs) {
        std::vector<double> meant;
        for (const auto& [first, first_count] : kinds) {
            for (const auto& [second, second_count] : kinds) {
                std::string name = first;
                name.append("-").append(second);
                if (pair == name) meant.push_back(second_count / volume);
            }
        }
        if (meant.size() != 1) throw WrongCall("--pairs: " + pair + " is not one pair of --atoms");
        densities.push_back(meant[0]);
    }
    return densities;
}

// What the options make of the columns.
Layout layout_of(const Call& call) {
    Layout layout = call.layout;
    if (call.form == "lammps") layout.running = true;
    for (const std::string& column : call.use) layout.use.push_back(whole("--use", column, 2));
    const int ways =
        (layout.running ? 1 : 0) + (call.density.empty() ? 0 : 1) + (call.atoms.empty() ? 0 : 1);
    if (ways != 1) {
        throw WrongCall(
            "the running numbers come from one of --running (they are in the file), --density, "
            "and --atoms with --volume and --pairs");
    }
    if (!call.atoms.empty()) layout.densities = densities_of_pairs(call);
    if (!call.density.empty()) layout.density = positive("--density", call.density);
    for (const std::string& text : call.fractions) {
        const double fraction = positive("--fractions", text);
        if (fraction > 1) throw WrongCall("--fractions: " + text + " is above 1");
        layout.densities.push_back(layout.density * fraction);
    }
    return layout;
}

// Calls take(block) for each whole block of the file.
void read_blocks(const Call& call, const TakeBlock& take) {
    Lines lines{call.file == "-" ? "standard input" : call.file, {}, false};
    lines.input.limit = textio::longest_line;
    if (call.file == "-") {
        attach(lines.input, STDIN_FILENO);
    } else {
        require(open_file(lines.input, call.file, O_RDONLY), lines);
    }
    std::size_t count = 0;
    (call.form == "lammps" ? read_lammps : read_columns)(lines, [&](Block&& block) {
        ++count;
        take(std::move(block));
    });
    ::close(lines.input.fd);
    if (count == 0) throw Failure(lines.name + ": no whole block of numbers");
    tell(lines.name + ": " + std::to_string(count) + (count == 1 ? " block" : " blocks"));
}

// The mean of all blocks of the file from this one on, counted from 1.
Block mean_of_blocks(const Call& call, std::size_t from) {
    Block mean;
    std::size_t count = 0;
    read_blocks(call, [&](Block&& block) {
        if (++count < from) return;
        if (mean.empty()) {
            mean = std::move(block);
            return;
        }
        const auto same_place = [](const Bin& a, const Bin& b) {
            return a.size() == b.size() && a[0].value == b[0].value;
        };
        if (!std::ranges::equal(mean, block, same_place)) {
            throw Failure("block " + std::to_string(count) + " has another grid");
        }
        for (std::size_t i = 0; i < mean.size(); ++i) {
            for (std::size_t c = 1; c < mean[i].size(); ++c) mean[i][c].value += block[i][c].value;
        }
    });
    if (count < from) throw Failure("--from: there are " + std::to_string(count) + " blocks");
    for (Bin& bin : mean) {
        for (Number& number : std::span(bin).subspan(1)) {
            number.value /= static_cast<double>(count - from + 1);
            number.text = written(number.value);
        }
    }
    return mean;
}

void convert(const Call& call) {
    const Layout layout = layout_of(call);
    const std::size_t from = whole("--from", call.from, 1);
    if ((call.step == "all") == call.output.empty()) {
        throw WrongCall("--step all and -o NAME go together");
    }
    if (from > 1 && call.step != "mean") throw WrongCall("--from goes with --step mean");
    if (call.step == "last") {
        Block last;
        read_blocks(call, [&](Block&& block) { last = std::move(block); });
        write(pdf_of(last, layout));
    } else if (call.step == "mean") {
        write(pdf_of(mean_of_blocks(call, from), layout));
    } else {
        std::vector<std::string> files;
        read_blocks(call, [&](Block&& block) { files.push_back(pdf_of(block, layout)); });
        for (std::size_t i = 0; i < files.size(); ++i) {
            write_file(call.output + "-" + std::to_string(i + 1) + ".dat", files[i]);
        }
    }
}

void program(int argc, char** argv) {
    CLI::App app("Makes PDF files of what other programs write.", "dorvek-convert");
    Call call;
    app.add_option("FORM", call.form, "what FILE is")
        ->required()
        ->check(CLI::IsMember({"lammps", "columns"}));
    app.add_option("FILE", call.file, "standard input if - or none");
    app.add_option("--step", call.step, "the block to take: last if not said")
        ->check(CLI::IsMember({"last", "mean", "all"}));
    app.add_option("--from", call.from, "the mean is of all blocks from this one on");
    app.add_option("-o", call.output, "all go to NAME-1.dat, NAME-2.dat, ...")->type_name("NAME");
    const char* const columns = "Options of columns";
    const auto add = [&](const char* name, auto& value, const char* type, const char* what) {
        return app.add_option(name, value, what)->type_name(type)->group(columns);
    };
    const auto add_list = [&](const char* name, auto& list, const char* type, const char* what) {
        return add(name, list, type, what)->delimiter(',')->allow_extra_args(false);
    };
    add_list("--use", call.use, "3,4", "the columns of g; r is column 1");
    app.add_flag("--running", call.layout.running, "the columns are r, g, n, g, n, ...")
        ->group(columns);
    CLI::Option* density = add("--density", call.density, "RHO", "atoms in a unit of volume");
    add_list("--fractions", call.fractions, "C,C", "of those counted, for each partial")
        ->needs(density);
    CLI::Option* atoms = add_list("--atoms", call.atoms, "Si=512,O=1024", "the atoms in VOLUME");
    CLI::Option* volume = add("--volume", call.volume, "VOLUME", "in the unit of r")->needs(atoms);
    CLI::Option* pairs =
        add_list("--pairs", call.pairs, "Si-Si,Si-O,O-O", "of each partial")->needs(atoms);
    atoms->needs(volume)->needs(pairs);
    parse(app, argc, argv);
    const auto stray = app.get_options([&](const CLI::Option* option) {
        return option->get_group() == columns && option->count() > 0;
    });
    if (call.form == "lammps" && !stray.empty()) {
        throw WrongCall(stray[0]->get_name() + " goes with columns");
    }
    convert(call);
}

}  // namespace

int main(int argc, char** argv) {
    return run(program, argc, argv);
}
