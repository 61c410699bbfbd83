#include "csv.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <utility>

#include "text.hpp"
#include "textio/free_form.hpp"
#include "textio/lines.hpp"

namespace dorvek::tools {
namespace {

constexpr std::string_view blanks = " \t\r";

template <typename Number>
std::optional<Number> number_of(std::string_view token) {
    if (token.empty() || token.find_first_of(" ,/*\n") != std::string_view::npos) return {};
    Number number{};
    textio::ScanState state;
    const std::string line = std::string(token) + '\n';
    if (scan_line(line, state, std::span(&number, 1)) != textio::Scan::complete) return {};
    return number;
}

// 3 of 3.0
std::string_view without_decimals(std::string_view cell) {
    cell = textio::trimmed(cell);
    const std::size_t point = cell.find('.');
    const bool is_whole = point != std::string_view::npos && point > 0 &&
                          cell.find_first_not_of('0', point + 1) == std::string_view::npos;
    return is_whole ? cell.substr(0, point) : cell;
}

}  // namespace

TableReader::TableReader(std::string content, const std::string& name)
    : name_(input_name(name)), content_(std::move(content)) {
    if (content_.starts_with("\xEF\xBB\xBF")) taken_ = 3;
    for (;;) {  // up to the first line that is not blank
        const std::size_t end = std::min(content_.find('\n', taken_), content_.size());
        const std::string_view line = std::string_view(content_).substr(taken_, end - taken_);
        const auto holds = [line](char c) { return line.find(c) != std::string_view::npos; };
        if (line.find_first_not_of(blanks) != std::string_view::npos) {
            if (holds('\0')) throw WrongCall(name_ + ": UTF-16, or no text; tables are UTF-8");
            if (holds('\t')) separator_ = '\t';
            if (!holds('\t') && !holds(',') && holds(';')) {
                throw WrongCall(name_ + ": its columns are apart by semicolons, not by commas");
            }
            break;
        }
        if (end == content_.size()) throw WrongCall(name_ + ": no headings");
        taken_ = end + 1;
    }
    try {
        take_row(headings_);
    } catch (const Failure& failure) {
        throw WrongCall(failure.what());
    }
    Row sorted = headings_;
    std::erase(sorted, "");
    std::ranges::sort(sorted);
    const auto twice = std::ranges::adjacent_find(sorted);
    if (twice != sorted.end()) throw WrongCall(name_ + ": two columns are called " + *twice);
}

std::optional<std::size_t> TableReader::column(std::string_view heading) const {
    const auto found = std::ranges::find(headings_, heading);
    if (found == headings_.end()) return {};
    return static_cast<std::size_t>(found - headings_.begin());
}

std::size_t TableReader::needed(std::string_view heading) const {
    if (const auto found = column(heading)) return *found;
    throw WrongCall(name_ + ": has no column " + std::string(heading));
}

bool TableReader::next(Row& row) {
    ++rows_;
    do {
        if (!take_row(row)) return false;
    } while (row.empty());
    row.resize(std::max(row.size(), headings_.size()));
    return true;
}

Failure TableReader::bad_row(const char* what) const {
    const std::string place = rows_ == 0 ? ", headings: " : ", row " + std::to_string(rows_) + ": ";
    return Failure{name_ + place + what};
}

// Takes one line, or several if quotes hold line feeds. A blank line makes an empty row. False at
// the end of the table.
bool TableReader::take_row(Row& row) {
    row.clear();
    if (taken_ == content_.size()) return false;
    const std::size_t begin = taken_;
    for (bool more = true; more;) {
        row.push_back(take_cell());
        more = taken_ < content_.size() && content_[taken_] == separator_;
        if (more) ++taken_;
    }
    const bool is_blank = row.size() == 1 && content_[begin] != '"' &&
                          row[0].find_first_not_of(' ') == std::string::npos;
    if (is_blank) row.clear();
    if (taken_ < content_.size()) ++taken_;  // the line feed
    return true;
}

// Takes a cell, up to the separator, the line feed or the end of the table behind it. Between
// quotes two stand for one.
std::string TableReader::take_cell() {
    const auto ends_row = [&](std::size_t at) {
        return at >= content_.size() || content_[at] == '\n';
    };
    std::string cell;
    if (content_[taken_] != '"') {
        const std::string_view ends = separator_ == ',' ? ",\n" : "\t\n";
        const std::size_t end = std::min(content_.find_first_of(ends, taken_), content_.size());
        cell = content_.substr(taken_, end - taken_);
        taken_ = end;
        if (ends_row(end) && cell.ends_with('\r')) cell.pop_back();
        return cell;
    }
    for (bool is_open = true; is_open;) {
        const std::size_t quote = content_.find('"', ++taken_);
        if (quote == std::string::npos) throw bad_row("a quote is not closed");
        cell.append(content_, taken_, quote - taken_);
        taken_ = quote + 1;
        is_open = taken_ < content_.size() && content_[taken_] == '"';
        if (is_open) cell += '"';
    }
    if (content_[taken_] == '\r' && ends_row(taken_ + 1)) ++taken_;
    if (ends_row(taken_) || content_[taken_] == separator_) return cell;
    throw bad_row("text stands behind a closing quote");
}

std::optional<float> real_of(std::string_view cell) {
    return number_of<float>(textio::trimmed(cell));
}

std::optional<std::int32_t> whole_of(std::string_view cell) {
    return number_of<std::int32_t>(without_decimals(cell));
}

bool is_too_large(std::string_view cell) {
    std::string_view digits = without_decimals(cell);
    if (digits.starts_with('+') || digits.starts_with('-')) digits.remove_prefix(1);
    return !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos &&
           !whole_of(cell);
}

std::string shortest(float number) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.begin(), text.end(), number).ptr};
}

void append_row(std::string& table, const Row& row, char separator) {
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (i > 0) table += separator;
        std::string cell = valid_utf8(row[i]);
        if (separator == '\t') {
            std::ranges::replace_if(
                cell, [](char c) { return c == '\t' || c == '\n' || c == '\r'; }, ' ');
        }
        const bool quote = separator == '\t' ? cell.starts_with('"')
                                             : cell.find_first_of("\",\r\n") != std::string::npos;
        if (!quote) {
            table += cell;
            continue;
        }
        table += '"';
        for (const char c : cell) table.append(c == '"' ? 2 : 1, c);
        table += '"';
    }
    table += '\n';
}

}  // namespace dorvek::tools
