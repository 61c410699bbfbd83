#include "csv.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <utility>

#include "program.hpp"
#include "text.hpp"
#include "textio/free_form.hpp"

namespace dorvek::tools {
namespace {

template <typename Number>
std::optional<Number> number_of(std::string_view cell) {
    const std::size_t first = std::min(cell.find_first_not_of(' '), cell.size());
    const std::string_view token = cell.substr(first, cell.find_last_not_of(' ') + 1 - first);
    if (token.empty() || token.find_first_of(" ,/*\n") != std::string_view::npos) return {};
    Number number{};
    textio::ScanState state;
    const std::string line = std::string(token) + '\n';
    if (scan_line(line, state, std::span(&number, 1)) != textio::Scan::complete) return {};
    return number;
}

}  // namespace

TableReader::TableReader(const std::string& name)
    : TableReader(name == "-" ? stdin : std::fopen(name.c_str(), "r"),
                  name == "-" ? "standard input" : name) {}

TableReader::TableReader(std::FILE* file, std::string name) : name_(std::move(name)), file_(file) {
    if (file_ == nullptr) throw Failure(name_ + system_reason());
    for (int c = 0; c != '\n' && (c = std::getc(file_)) != EOF;) ahead_ += static_cast<char>(c);
    if (ahead_.starts_with("\xEF\xBB\xBF")) taken_ = 3;
    if (ahead_.find('\t') != std::string::npos) separator_ = '\t';
    while (headings_.empty() && take_row(headings_)) {
    }
    if (headings_.empty()) throw WrongCall(name_ + ": no headings");
}

TableReader::~TableReader() {
    if (file_ != stdin) std::fclose(file_);
}

std::optional<std::size_t> TableReader::column(std::string_view heading) const {
    const auto found = std::ranges::find(headings_, heading);
    if (found == headings_.end()) return {};
    return static_cast<std::size_t>(found - headings_.begin());
}

bool TableReader::next(Row& row) {
    do {
        if (!take_row(row)) return false;
    } while (row.empty());
    row.resize(std::max(row.size(), headings_.size()));
    return true;
}

int TableReader::take() {
    if (taken_ < ahead_.size()) return static_cast<unsigned char>(ahead_[taken_++]);
    const int c = std::getc(file_);
    if (c == EOF && std::ferror(file_) != 0) throw Failure(name_ + system_reason());
    return c;
}

// Takes one line, or several if quotes hold line feeds. A blank line makes an empty row. False at
// the end of the table.
bool TableReader::take_row(Row& row) {
    row.clear();
    std::string cell;
    bool was_quoted = false;
    for (int c = take();; c = take()) {
        if (c == '"' && cell.empty() && !was_quoted) {
            was_quoted = true;
            c = take_quoted(cell);
        }
        if (c == separator_) {
            row.push_back(std::exchange(cell, {}));
            was_quoted = false;
        } else if (c == '\n' || c == EOF) {
            if (c == EOF && row.empty() && cell.empty() && !was_quoted) return false;
            if (cell.ends_with('\r')) cell.pop_back();
            const bool blank = cell.find_first_not_of(' ') == std::string::npos;
            if (!row.empty() || !blank || was_quoted) row.push_back(std::move(cell));
            return true;
        } else {
            cell += static_cast<char>(c);
        }
    }
}

// Takes what stands between quotes, where two stand for one. Returns what follows the last.
int TableReader::take_quoted(std::string& cell) {
    for (int c = take();; c = take()) {
        if (c == '"' && (c = take()) != '"') return c;
        if (c == EOF) throw Failure(name_ + ": a quote is not closed");
        cell += static_cast<char>(c);
    }
}

std::optional<float> real_of(std::string_view cell) {
    return number_of<float>(cell);
}

std::optional<std::int32_t> whole_of(std::string_view cell) {
    const std::size_t point = cell.find('.');
    if (point != std::string_view::npos && point > 0) {
        const std::string_view decimals = cell.substr(point + 1);
        if (decimals.find_first_not_of('0') == std::string_view::npos) cell = cell.substr(0, point);
    }
    return number_of<std::int32_t>(cell);
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
