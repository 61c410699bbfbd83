#include "results_file.hpp"

#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>

#include "program.hpp"
#include "results.hpp"
#include "textio/lines.hpp"

namespace dorvek::tools {
namespace {

constexpr std::string_view first_line = "analysis of rmc pdfs\n";

bool take(std::string_view& text, std::string_view part) {
    if (!text.starts_with(part)) return false;
    text.remove_prefix(part.size());
    return true;
}

// Takes the line of a data file's name and the blank one below it.
bool take_file_name(std::string_view& text, std::string& name) {
    constexpr std::string_view label = "file: ";
    std::string_view rest = text;
    if (!take(rest, label) || rest.size() < textio::longest_field) return false;
    name = textio::trimmed(rest.substr(0, textio::longest_field));
    rest.remove_prefix(textio::longest_field);
    if (!take(rest, "\n \n")) return false;
    text = rest;
    return true;
}

// Goes on to the next line that may begin a report.
void skip_damaged(std::string_view& text) {
    const std::string begin = "\n " + std::string(driver::separator) + "\n";
    const std::size_t found = text.find(begin);
    text.remove_prefix(found == std::string_view::npos ? text.size() : found + 1);
}

}  // namespace

std::optional<std::string> content_of(const std::string& name) {
    const auto close = [](std::FILE* file) {
        if (file != stdin) std::fclose(file);
    };
    const std::unique_ptr<std::FILE, void (*)(std::FILE*)> file(
        name == "-" ? stdin : std::fopen(name.c_str(), "r"), close);
    std::string content;
    std::string block(1 << 16, '\0');
    while (file != nullptr) {
        const std::size_t count = std::fread(block.data(), 1, block.size(), file.get());
        if (count == 0 && std::ferror(file.get()) == 0) return content;
        if (count == 0) break;
        content.append(block, 0, count);
    }
    complain(name + ": cannot be read" + system_reason());
    return {};
}

bool is_results_file(std::string_view content) {
    return first_line.starts_with(content.substr(0, first_line.size()));
}

void for_each_report(const std::string& name, const std::function<void(const FiledReport&)>& use) {
    if (const std::optional<std::string> content = content_of(name)) {
        for_each_report_of(*content, name, use);
    }
}

void for_each_report_of(std::string_view text, const std::string& name,
                        const std::function<void(const FiledReport&)>& use) {
    if (!take(text, first_line) || !take(text, " \n")) {
        return complain(name + ": no results file of dorvek");
    }
    FiledReport filed;
    for (std::string file; take_file_name(text, file);) filed.files.push_back(file);
    filed.report.nsamp = static_cast<std::int32_t>(filed.files.size());
    if (text.empty()) return complain(name + ": no report");
    if (filed.files.empty() || filed.files.size() > input::maxsamp) {
        return complain(name + ": is damaged");
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
