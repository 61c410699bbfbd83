#include "results_file.hpp"

#include <algorithm>
#include <string_view>

#include "program.hpp"
#include "text.hpp"
#include "textio/lines.hpp"

namespace dorvek::tools {
namespace {

// The line that a report begins with.
std::string begin_of_report() {
    return ' ' + std::string(driver::separator) + '\n';
}

// Goes on to the next line that may begin a report.
void skip_damaged(std::string_view& text) {
    const std::size_t found = text.find('\n' + begin_of_report());
    text.remove_prefix(found == std::string_view::npos ? text.size() : found + 1);
}

// Does a comparison stand somewhere in the text? No other line is so short.
bool holds_comparison(std::string_view text) {
    const std::string line(driver::statistics_lines()[1][0].label);
    return text.find('\n' + line + '\n') != std::string_view::npos;
}

}  // namespace

bool is_results_file(std::string_view content) {
    textio::Output written{.fd = -1};  // holds it all, and is not flushed
    driver::write_head(written);
    const std::string_view head(written.buffer.data(), written.used);
    const std::size_t line = std::min(head.find('\n') + 1, content.size());
    return content.substr(0, line) == head.substr(0, line);
}

void for_each_report(const std::string& name, const std::function<void(const FiledReport&)>& use) {
    std::string content;
    try {
        content = content_of(name);
    } catch (const Failure& failure) {
        return complain(failure.what());
    }
    for_each_report_of(content, input_name(name), use);
}

void for_each_report_of(std::string_view text, const std::string& name,
                        const std::function<void(const FiledReport&)>& use) {
    if (!driver::take_head(text)) return complain(name + ": no results file of dorvek");
    FiledReport filed;
    for (std::size_t s = 0; s < input::maxsamp; ++s) {
        if (!take_file_name(text, filed.report, s)) break;
        const input::FileName& file = filed.report.fnames[s];
        filed.files.emplace_back(textio::trimmed({file.data(), file.size()}));
    }
    filed.report.nsamp = static_cast<std::int32_t>(filed.files.size());
    if (text.empty()) return complain(name + ": no report");
    // What of the files' lines is damaged or lacking makes reports of other files, or of fewer.
    const std::string begin = begin_of_report();
    const bool begun = begin.starts_with(text.substr(0, begin.size()));
    if (!begun || filed.files.empty() || (filed.files.size() == 1 && holds_comparison(text))) {
        return complain(name + ": is cut short or damaged before the first report");
    }
    while (!text.empty()) {
        ++filed.number;
        if (take_report(text, filed.report)) {
            use(filed);
            continue;
        }
        complain(name + ": report " + std::to_string(filed.number) + " is cut short or damaged");
        skip_damaged(text);
        while (!text.empty()) {
            driver::Report next{.nsamp = filed.report.nsamp};
            std::string_view rest = text;
            if (take_report(rest, next)) break;
            skip_damaged(text);
        }
    }
}

}  // namespace dorvek::tools
