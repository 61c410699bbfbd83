// dorvek-convert: PDF files from what other programs write.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foreign.hpp"
#include "input/pdf_set.hpp"
#include "pdf_text.hpp"
#include "program.hpp"
#include "textio/lines.hpp"

namespace {

using namespace dorvek::tools;
namespace textio = dorvek::textio;

// What a file can be.
struct Form {
    std::string_view name;
    void (*read)(ForeignFile& file, const TakeBlock& take);
    std::string_view block;    // what its blocks are called
    std::string_view step;     // what is done with several blocks if --step does not say it
    std::string_view options;  // that go with it
    std::string_view running;  // where the running numbers come from, if that can be chosen
};

constexpr std::array<Form, 3> forms{{
    {"lammps", read_lammps, "block", "last", " --range --step --from -o ", ""},
    {"columns", read_columns, "block", "only",
     " --range --step --from -o --sets --use --running --cn --density --fractions --atoms --volume "
     "--pairs ",
     "from one of --running, --cn, --density, and --atoms with --volume and --pairs"},
    {"dlpoly", read_dlpoly, "pair", "sets", " --range --density --fractions --atoms --volume ",
     "from the file or, where it holds none, from one of --density, and --atoms with --volume"},
}};

// The options, lists as they are typed.
struct Call {
    std::string form, file = "-", step, output, running_file;
    std::vector<std::string> use, fractions, atoms, pairs;
    bool running = false, sets = false;
    std::int32_t from = 1;
    double density = 0, volume = 0;  // 0 if not given
    Range range;
};

// The density of the second kind of atoms of each pair.
std::vector<double> densities_of(const Call& call, std::span<const std::string> pairs) {
    std::vector<std::pair<std::string, double>> kinds;
    for (const std::string& atoms : call.atoms) {
        const std::size_t equals = atoms.find('=');
        if (equals == std::string::npos) throw WrongCall("--atoms: " + atoms + " has no count");
        kinds.emplace_back(atoms.substr(0, equals),
                           real_argument("--atoms", atoms.substr(equals + 1), above_zero));
    }
    std::vector<double> densities;
    for (const std::string& pair : pairs) {
        std::vector<double> meant;
        for (const auto& [first, first_count] : kinds) {
            for (const auto& [second, second_count] : kinds) {
                std::string name = first;
                name.append("-").append(second);
                if (pair == name) meant.push_back(second_count / call.volume);
            }
        }
        if (meant.size() != 1) throw WrongCall(pair + " is not one pair of --atoms");
        densities.push_back(meant[0]);
    }
    return densities;
}

// What the options make of the columns; `running` if the file itself holds the running numbers.
Layout layout_of(const Form& form, const Call& call, bool running,
                 std::span<const std::string> pairs) {
    Layout layout;
    layout.running = running;
    layout.range = call.range;
    for (const std::string& column : call.use) {
        const std::int32_t number =
            whole_argument("--use", column, 2, std::numeric_limits<std::int32_t>::max());
        layout.use.push_back(static_cast<std::size_t>(number));
        if (running && number % 2 == 1) {
            throw WrongCall("--use: with --running, the columns of g are 2, 4, 6, ..., not " +
                            column);
        }
    }
    const int ways = (running ? 1 : 0) + (call.running_file.empty() ? 0 : 1) +
                     (call.density > 0 ? 1 : 0) + (call.atoms.empty() ? 0 : 1);
    if (ways != 1) {
        throw WrongCall("the running numbers come " + std::string(form.running));
    }
    if (!call.atoms.empty()) layout.densities = densities_of(call, pairs);
    layout.counted = call.atoms.empty() ? "--fractions" : "--pairs";
    layout.density = call.density;
    for (const std::string& text : call.fractions) {
        layout.densities.push_back(layout.density *
                                   real_argument("--fractions", text, above_zero, 1));
    }
    return layout;
}

// Calls take(block) for each whole block of the file, and says how many there are.
void read_blocks(const Form& form, const std::string& name, const TakeBlock& take) {
    ForeignFile file{.name = name == "-" ? "standard input" : name, .input = {}};
    file.input.limit = textio::longest_line;
    if (name == "-") {
        attach(file.input, STDIN_FILENO);
    } else if (const auto status = open_file(file.input, name, O_RDONLY);
               status != textio::Status::ok) {
        throw Failure(name + ": " + std::string(message_of(status)) +
                      (file.input.error == 0 ? "" : system_reason()));
    }
    file.input.tab = 0;
    form.read(file, take);
    ::close(file.input.fd);
    if (file.cut_short) {
        tell(file.name + (file.announced > 0
                              ? ": cut short"
                              : ": a block cut short at the end of the file is left out"));
    } else if (file.unterminated) {
        tell(file.name + ": the last line has no line feed; is it whole?");
    }
    if (!file.words.empty()) {
        tell(file.name + ": words among the numbers, left out; is the file whole? " + file.words);
    }
    const std::size_t all = std::max(file.announced, file.blocks);
    tell(file.name + ": " + std::to_string(file.blocks) +
         (file.blocks < all ? " of " + std::to_string(all) : "") + ' ' + std::string(form.block) +
         (all == 1 ? "" : "s"));
}

// The only block of a file.
Block only_block(const Form& form, const std::string& name) {
    constexpr std::size_t shown = 3;
    std::vector<std::string> headings;
    Block only;
    std::size_t count = 0;
    read_blocks(form, name, [&](Block& block) {
        if (++count <= shown) headings.push_back(block.heading);
        std::swap(only, block);
    });
    if (count == 1) return only;
    for (std::size_t i = 0; i < headings.size(); ++i) {
        tell("before block " + std::to_string(i + 1) + ": " +
             (headings[i].empty() ? "nothing" : headings[i]));
    }
    throw Failure(
        "which blocks? --step last, mean or all if they are steps in time, --sets if they are "
        "partials");
}

// The mean of all blocks of the file from this one on, counted from 1.
Block mean_of_blocks(const Form& form, const std::string& name, std::size_t from) {
    Block mean;
    std::size_t count = 0;
    read_blocks(form, name, [&](Block& block) {
        if (++count < from) return;
        if (count == from) {
            std::swap(mean, block);
            mean.single_blanks = false;  // for there are no texts of the means
            return;
        }
        bool same_grid = rows_of(block) == rows_of(mean) && block.width == mean.width;
        for (std::size_t i = 0; same_grid && i < rows_of(mean); ++i) {
            same_grid = at(mean, i, 0).value == at(block, i, 0).value;
        }
        if (!same_grid) throw Failure("block " + std::to_string(count) + " has another grid");
        for (std::size_t i = 0; i < mean.numbers.size(); i += mean.width) {
            for (std::size_t c = i + 1; c < i + mean.width; ++c) {
                mean.numbers[c].value += block.numbers[c].value;
            }
        }
    });
    if (count < from) throw Failure("--from: the number of blocks is " + std::to_string(count));
    for (std::size_t i = 0; i < mean.numbers.size(); i += mean.width) {
        for (std::size_t c = i + 1; c < i + mean.width; ++c) {
            mean.numbers[c] = {.value =
                                   mean.numbers[c].value / static_cast<double>(count - from + 1)};
        }
    }
    return mean;
}

// The blocks of the file that one PDF file is made of: partials, or one that holds them all.
std::vector<Block> sets_of(const Form& form, const std::string& name, const Call& call) {
    std::vector<Block> sets;
    if (call.step == "mean") {
        sets.push_back(mean_of_blocks(form, name, static_cast<std::size_t>(call.from)));
    } else if (call.step == "only") {
        sets.push_back(only_block(form, name));
    } else if (call.step == "last") {
        sets.resize(1);
        read_blocks(form, name, [&](Block& block) { std::swap(sets[0], block); });
    } else {
        read_blocks(form, name, [&](Block& block) { sets.push_back(std::exchange(block, {})); });
    }
    return sets;
}

void tell_remarks(const Remarks& remarks) {
    using namespace dorvek::input;
    const auto only = [](std::size_t count, std::int32_t capacity, const char* what) {
        if (count <= static_cast<std::size_t>(capacity)) return;
        tell(std::to_string(count) + what + ": dorvek takes the first " + std::to_string(capacity));
    };
    only(remarks.bins, maxbin, " bins");
    only(remarks.partials, maxpdf, " partials");
    if (remarks.all_count_all) tell("no --fractions: every partial counts all atoms");
    if (remarks.below_zero > 0) {
        tell("g is below zero in " + std::to_string(remarks.below_zero) +
             (remarks.below_zero == 1 ? " bin" : " bins") + ": is it g - 1, or another function?");
    }
}

// Each block as a file.
void write_all(const Form& form, const Call& call, const Layout& layout, Remarks& remarks) {
    std::size_t count = 0;
    read_blocks(form, call.file, [&](const Block& block) {
        const std::string name = call.output + "-" + std::to_string(++count) + ".dat";
        write_file(name, pdf_text(std::span(&block, 1), {}, layout, remarks));
    });
}

void require_options_of(const Form& form, const CLI::App& app) {
    for (const CLI::Option* option : app.get_options()) {
        const std::string name = option->get_name();
        if (option->count() == 0 || !name.starts_with('-')) continue;
        if (form.options.find(" " + name + " ") != std::string_view::npos) continue;
        throw WrongCall(name + " does not go with " + std::string(form.name));
    }
}

void convert(const Form& form, Call& call) {
    if ((call.step == "all") == call.output.empty()) {
        throw WrongCall("--step all and -o NAME go together");
    }
    if (call.from > 1 && call.step != "mean") throw WrongCall("--from goes with --step mean");
    if (call.sets && !call.step.empty()) throw WrongCall("--step does not go with --sets");
    if (call.step == "all" && !call.running_file.empty()) {
        throw WrongCall("--cn does not go with --step all");
    }
    if (call.step.empty()) call.step = call.sets ? "sets" : form.step;

    Remarks remarks;
    if (form.read == read_dlpoly) {
        const std::vector<Block> sets = sets_of(form, call.file, call);
        std::vector<std::string> pairs;
        std::string names;
        for (const Block& set : sets) {
            names += (pairs.empty() ? "" : ", ") + set.heading;
            pairs.push_back(set.heading);
        }
        tell("partials: " + names);
        write(pdf_text(sets, {}, layout_of(form, call, sets[0].width == 3, pairs), remarks));
    } else {
        const Layout layout =
            layout_of(form, call, call.running || form.read == read_lammps, call.pairs);
        if (call.step == "all") {
            write_all(form, call, layout, remarks);
        } else {
            const std::vector<Block> sets = sets_of(form, call.file, call);
            std::vector<Block> running;
            if (!call.running_file.empty()) running = sets_of(form, call.running_file, call);
            write(pdf_text(sets, running, layout, remarks));
        }
    }
    tell_remarks(remarks);
}

void program(int argc, char** argv) {
    CLI::App app("Makes PDF files of what other programs write.", "dorvek-convert");
    Call call;
    app.add_option("FORM", call.form, "what FILE is: lammps, columns, dlpoly")->required();
    const CLI::Option* file = app.add_option("FILE", call.file, "standard input if - or none");
    add_range(app, "--range", call.range, "write these r only");
    app.add_option("--step", call.step, "the blocks to take; of lammps the last if not said")
        ->check(CLI::IsMember({"last", "mean", "all"}).description(""))
        ->type_name("last|mean|all");
    constexpr std::int32_t many = std::numeric_limits<std::int32_t>::max();
    constexpr double large = std::numeric_limits<double>::infinity();
    add_whole(app, "--from", call.from, 1, many, "the mean is of all blocks from this one on")
        ->type_name("N");
    app.add_option("-o", call.output, "all go to NAME-1.dat, NAME-2.dat, ...")->type_name("NAME");

    const char* group = "Options of columns";
    const auto describe = [&](CLI::Option* option, const char* type) {
        return option->group(group)->type_name(type);
    };
    const auto add_list = [&](const char* name, auto& list, const char* type, const char* what) {
        CLI::Option* option = app.add_option(name, list, what);
        return describe(option, type)->delimiter(',')->allow_extra_args(false);
    };
    app.add_flag("--sets", call.sets, "the blocks are partials of the same r")->group(group);
    add_list("--use", call.use, "3,4", "the columns of g; r is column 1");
    app.add_flag("--running", call.running, "the columns are r, g, n, g, n, ...")->group(group);
    describe(app.add_option("--cn", call.running_file, "n of each partial, in the column of its g"),
             "FILE");
    CLI::Option* pairs =
        add_list("--pairs", call.pairs, "Si-Si,Si-O,O-O",
                 "the kinds of each partial: the second is counted around the first");
    group = "Options of columns and dlpoly";
    CLI::Option* density = describe(
        add_real(app, "--density", call.density, above_zero, large, "atoms in a unit of volume"),
        "RHO");
    add_list("--fractions", call.fractions, "C,C", "the part of RHO that each partial counts")
        ->needs(density);
    CLI::Option* atoms =
        add_list("--atoms", call.atoms, "Si=512,O=1024", "how many of each kind are in VOLUME");
    CLI::Option* volume = describe(
        add_real(app, "--volume", call.volume, above_zero, large, "in the unit of r, cubed"),
        "VOLUME");
    atoms->needs(volume);
    volume->needs(atoms);
    pairs->needs(atoms);
    parse(app, argc, argv, "dorvek-convert columns --density 33.4 rdf.xvg > water.dat");
    require_input(file);

    const auto* const form = std::ranges::find(forms, call.form, &Form::name);
    if (form == forms.end()) throw WrongCall(call.form + " is no FORM: lammps, columns, dlpoly");
    require_options_of(*form, app);
    if (form->read == read_columns && !call.atoms.empty() && call.pairs.empty()) {
        throw WrongCall("--atoms needs --pairs");
    }
    convert(*form, call);
}

}  // namespace

int main(int argc, char** argv) {
    return run(program, argc, argv);
}
