// Results files (dorvek.res) as the program leaves them.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "driver/report.hpp"

namespace dorvek::tools {

// A report with its number in the file, counted from 1, and the names of its data files, as typed.
struct FiledReport {
    std::size_t number = 0;
    std::vector<std::string> files;
    driver::Report report;
};

// Calls use(report) for each whole report of the file, in order. Complains of a file that cannot be
// read, that is no results file, that is damaged or cut short, or that holds no report.
void for_each_report(const std::string& name, const std::function<void(const FiledReport&)>& use);

// The same for the content of a file that has been read.
void for_each_report_of(std::string_view text, const std::string& name,
                        const std::function<void(const FiledReport&)>& use);

// Does this content begin as that of a results file, which may be cut short there?
[[nodiscard]] bool is_results_file(std::string_view content);

}  // namespace dorvek::tools
