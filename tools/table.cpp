// dorvek-table: the reports of results files as one table.

#include <string>
#include <string_view>
#include <vector>

#include "program.hpp"
#include "results.hpp"
#include "results_file.hpp"

namespace {

using namespace dorvek::tools;

void write_table(const std::vector<std::string>& files, char separator) {
    Row headings{"results", "report"};
    const Row results = result_headings();
    headings.insert(headings.end(), results.begin(), results.end());
    std::string table;
    append_row(table, headings, separator);
    for (const std::string& file : files) {
        for_each_report(file, [&](const FiledReport& filed) {
            for (std::size_t s = 0; s < filed.files.size(); ++s) {
                Row row{file, std::to_string(filed.number)};
                append_result(row, filed.report, s, filed.files[s]);
                append_row(table, row, separator);
            }
            write(table);
            table.clear();
        });
    }
    write(table);
}

void program(int argc, char** argv) {
    CLI::App app("Writes the reports of results files (dorvek.res) as one table.", "dorvek-table");
    std::vector<std::string> files;
    bool tabs = false;
    app.add_option("FILE", files, "results files; - is standard input")->required();
    app.add_flag("--tsv", tabs, "separate by tabs; quoted is only what begins with a quote");
    parse(app, argc, argv, "dorvek-table run_*/dorvek.res > peaks.csv");
    write_table(files, tabs ? '\t' : ',');
}

}  // namespace

int main(int argc, char** argv) {
    return run(program, argc, argv);
}
