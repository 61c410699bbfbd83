#include "results.hpp"

#include <cmath>

#include "textio/format.hpp"
#include "textio/lines.hpp"

namespace dorvek::tools {

using driver::Field;

std::string text_of(float value) {
    if (std::isnan(value)) return "NaN";
    textio::NumberText text{};
    return std::string(textio::trimmed(textio::format_real(value, text)));
}

Row result_headings() {
    Row row{"sample", "file", "name", "pdf"};
    const auto add = [&](const Field& field) { row.emplace_back(field.heading); };
    for_each_number(driver::sample_lines(), add);
    for_each_number(driver::statistics_lines(), add);
    return row;
}

Row window_headings() {
    return {"id",          "file",   "partials", "partial",   "rmin",     "rmax",  "name",
            "constraints", "weight", "file2",    "partials2", "partial2", "name2", "constraints2"};
}

Row batch_headings() {
    Row row{"status", "message", "bins", "step", "weight"};
    const Row results = result_headings();
    row.insert(row.end(), results.begin(), results.end());
    row.insert(row.end(), {"Rmed", "Rtop"});
    return row;
}

void append_result(Row& row, const driver::Report& report, std::size_t s, std::string_view file) {
    const driver::SampleName& sname = report.snames[s];
    const std::string_view name(sname.data(), sname.size());
    row.push_back(std::to_string(s + 1));
    row.emplace_back(file);
    row.emplace_back(name.substr(0, name.find_last_not_of(' ') + 1));
    row.push_back(std::to_string(report.ipdf[s]));
    const auto add = [&](const Field& field) {
        row.push_back(text_of(number_of(field, report, s)));
    };
    const auto add_empty = [&](const Field& /*field*/) { row.emplace_back(); };
    for_each_number(driver::sample_lines(), add);
    if (report.nsamp == 2) {
        for_each_number(driver::statistics_lines(), add);
    } else {
        for_each_number(driver::statistics_lines(), add_empty);
    }
}

}  // namespace dorvek::tools
