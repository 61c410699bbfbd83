// dorvek-replicas: means over independent replicas, with errors that can be published.

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "answer.hpp"
#include "csv.hpp"
#include "program.hpp"

namespace {

using namespace dorvek::tools;

// The number in so many significant digits; an empty cell if it is not known.
std::string significant(std::optional<double> number, int digits) {
    if (!number) return "";
    if (std::isnan(*number)) return "NaN";
    if (std::isinf(*number)) return *number > 0 ? "INF" : "-INF";
    std::array<char, 24> text{};
    constexpr auto form = std::chars_format::general;
    return {text.data(), std::to_chars(text.begin(), text.end(), *number, form, digits).ptr};
}

// Means and differences may differ by less than six digits show; no error is known so well.
int digits_of(std::string_view heading) {
    for (const std::string_view exact : {"n", "mean", "A", "B", "difference"}) {
        if (heading == exact) return 10;
    }
    return 6;
}

std::string text_of(const Answer& answer) {
    std::string text;
    append_row(text, answer.headings);
    for (const auto& [cells, numbers] : answer.lines) {
        Row row = cells;
        for (const auto& number : numbers) {
            row.push_back(significant(number, digits_of(answer.headings[row.size()])));
        }
        append_row(text, row);
    }
    return text;
}

// An option that takes names apart by commas.
CLI::Option* add_names(CLI::App& app, const std::string& name, std::vector<std::string>& names,
                       const std::string& what) {
    return app.add_option(name, names, what)->delimiter(',')->allow_extra_args(false);
}

void program(int argc, char** argv) {
    CLI::App app("Averages independent replicas: means with errors that can be published.",
                 "dorvek-replicas");
    Question question;
    std::string table = "-";
    app.add_option("--by", question.by, "rows equal in this column are replicas of one state")
        ->type_name("COLUMN")
        ->required();
    add_names(app, "--each", question.each, "once for each combination of these columns")
        ->type_name("COLUMN,...");
    add_names(app, "--of", question.of, "these quantities only, in this order")->type_name("Q,...");
    auto* compare =
        app.add_option("--compare", question.compare, "the difference of two states instead, B - A")
            ->type_name("A B")
            ->expected(2)
            ->allow_extra_args(false);
    app.add_option("--pair", question.pair, "rows of A and B equal in this column are pairs")
        ->type_name("COLUMN")
        ->needs(compare);
    add_names(app, "--window", question.window,
              "what the choice of a window adds, which these columns of dorvek-peaks --scan shift")
        ->type_name("COLUMN,...");
    const CLI::Option* given =
        app.add_option("TABLE", table,
                       "what dorvek-batch or dorvek-table wrote; standard input if none or - is "
                       "named");
    parse(app, argc, argv, "dorvek-replicas --by T --compare 300 1500 --pair glass peaks.csv");
    require_input(given, question.compare.empty() ? "" : "; --compare takes two states, A and B");
    TableReader reader(content_of(table), table);
    const Results results{.headings = reader.headings(),
                          .next = [&](Row& row) { return reader.next(row); },
                          .tell = tell,
                          .complain = complain};
    write(text_of(answer_of(question, results)));
}

}  // namespace

int main(int argc, char** argv) {
    return run(program, argc, argv);
}
