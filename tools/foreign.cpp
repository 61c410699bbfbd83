// Nearly every line is numbers that std::from_chars reads where they stand: taken at once, without
// a copy of any. What it does not read is split into fields first, and looked at with care.

#include "foreign.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <span>
#include <system_error>

#include "csv.hpp"
#include "failure.hpp"
#include "grid.hpp"
#include "text.hpp"

namespace dorvek::tools {

using textio::Status;

namespace {

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}
bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// Takes a decimal of at most 15 digits and no exponent: these and the power of ten are exact as
// doubles, so the quotient is the nearest one. Returns its end, or nullptr if it is no such.
const char* take_decimal(const char* at, const char* end, double& value) {
    static constexpr std::array<double, 16> power{1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                  1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const bool negative = at != end && *at == '-';
    if (negative) ++at;
    std::uint64_t digits = 0;
    const auto take_digits = [&] {
        const char* const first = at;
        for (; at != end && is_digit(*at); ++at) {
            digits = 10 * digits + static_cast<std::uint64_t>(*at - '0');
        }
        return static_cast<std::size_t>(at - first);
    };
    std::size_t count = take_digits();
    std::size_t decimals = 0;
    if (at != end && *at == '.') {
        ++at;
        decimals = take_digits();
        count += decimals;
    }
    if (count < 1 || count > 15 || (at != end && !is_blank(*at) && *at != ',')) return nullptr;
    value = static_cast<double>(digits) / power[decimals];
    if (negative) value = -value;
    return at;
}

// Takes a number as nearly all are spelled, in the range of a float. Returns its end, or nullptr if
// none begins here.
const char* take_number(const char* at, const char* end, double& value) {
    if (const char* const stop = take_decimal(at, end, value); stop != nullptr) return stop;
    const auto [stop, error] = std::from_chars(at, end, value);
    const bool fits_float = std::abs(value) <= std::numeric_limits<float>::max();
    return error == std::errc{} && fits_float ? stop : nullptr;
}

}  // namespace

std::optional<double> number_of(std::string_view text) {
    double value = 0;
    if (take_number(text.data(), text.data() + text.size(), value) == text.data() + text.size()) {
        return value;
    }
    const std::optional<float> rounded = real_of(text);
    if (!rounded || !std::isfinite(*rounded)) return {};
    std::string respelled(text);  // for std::from_chars: no plus sign, the exponent behind an e
    const auto other_letter = [](char c) { return (c | 0x20) == 'd' || (c | 0x20) == 'q'; };
    std::ranges::replace_if(respelled, other_letter, 'e');
    const std::size_t sign = respelled.find_last_of("+-");
    if (sign != std::string::npos && sign > 0 && (respelled[sign - 1] | 0x20) != 'e') {
        respelled.insert(sign, 1, 'e');
    }
    value = 0;  // and stays where it is too small for a double
    std::from_chars(respelled.data() + (respelled[0] == '+' ? 1 : 0),
                    respelled.data() + respelled.size(), value);
    return value;
}

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// A line as fields, which have values where they are known to be numbers.
struct Fields {
    std::string_view text;        // the line, or
    std::string respelled;        // the line with points for decimal commas
    std::vector<Number> numbers;  // the fields
    char separator = ' ';         // semicolon, or comma if there is any, or blank
    bool are_numbers = false;     // as std::from_chars reads them: all have values
    bool decimal_commas = false;  // or so it seems: blanks separate as well
};

std::string_view field_at(const Fields& row, std::size_t i) {
    return row.text.substr(row.numbers[i].begin, row.numbers[i].length);
}

bool contains(std::string_view text, char c) {
    return text.find(c) != std::string_view::npos;
}

Failure bad_line(const ForeignFile& file, std::int64_t line, const std::string& what) {
    return Failure{file.name + ", line " + std::to_string(line) + ": " + what};
}

// Something that cannot be read on the line taken last.
Failure bad_line(const ForeignFile& file, const std::string& what) {
    return bad_line(file, file.input.line_number, what);
}

std::string shown(std::int64_t number, std::string_view line) {
    return "line " + std::to_string(number) + ": " + shortened(printable(line.substr(0, 200)), 60);
}

void require_text(const ForeignFile& file, std::string_view line) {
    const bool marked = file.input.line_number == 1 &&
                        (line.starts_with("\xFF\xFE") || line.starts_with("\xFE\xFF"));
    if (marked || contains(line, '\0'))
        throw bad_line(file, "UTF-16, or no text; dorvek-convert reads UTF-8");
}

bool take_line(ForeignFile& file, std::string_view& line) {
    textio::Input& input = file.input;
    Status status = textio::take_line(input, line);
    const bool is_last = status == Status::end_of_input;
    if (is_last) status = take_last_line(input, line);
    if (status == Status::end_of_input) return false;
    if (status != Status::ok) {
        const std::string reason =
            input.error == 0 ? "" : std::string(": ") + std::strerror(input.error);
        throw Failure(file.name + ": " + std::string(message_of(status)) + reason);
    }
    file.unterminated = is_last;
    if (!is_last) line.remove_suffix(line.ends_with("\r\n") ? 2 : 1);
    if (input.line_number == 1) {
        require_text(file, line.substr(0, 2));
        if (line.starts_with("\xEF\xBB\xBF")) line.remove_prefix(3);
    }
    return true;
}

// Takes a line of numbers as nearly all are. False if it is another, or not certainly one.
bool take_plain(std::string_view line, Fields& row) {
    const char* const begin = line.data();
    const char* const end = begin + line.size();
    const char* at = begin;
    const auto skip_blanks = [&] {
        while (at != end && is_blank(*at)) ++at;
    };
    bool blanks_separate = false;
    bool comma_between_digits = false;
    row.text = line;
    row.numbers.clear();
    row.separator = ' ';
    row.decimal_commas = false;
    for (skip_blanks(); at != end;) {
        double value = 0;
        const char* const stop = take_number(at, end, value);
        if (stop == nullptr) return false;
        row.numbers.push_back({.value = value,
                               .begin = static_cast<std::uint32_t>(at - begin),
                               .length = static_cast<std::uint32_t>(stop - at)});
        at = stop;
        skip_blanks();
        if (at == end) break;
        if (*at == ',') {
            comma_between_digits =
                comma_between_digits || (at == stop && at + 1 != end && is_digit(at[1]));
            row.separator = ',';
            ++at;
            skip_blanks();
        } else if (at == stop) {
            return false;
        } else {
            blanks_separate = true;
        }
    }
    return !row.numbers.empty() && !(comma_between_digits && blanks_separate);
}

// Takes any line as fields that are not yet known to be numbers. A quoted field is one if nothing
// but a separator follows.
void split(std::string_view line, Fields& row) {
    constexpr std::string_view blanks = " \t";
    const bool semicolons = contains(line, ';');
    const char separator = semicolons ? ';' : ',';
    row.respelled = line;
    std::string& text = row.respelled;
    const auto behind_blanks = [&](std::size_t from) {
        return std::min(text.find_first_not_of(blanks, from), text.size());
    };
    const auto ends_field = [&](std::size_t i) {
        return i >= text.size() || text[i] == separator || is_blank(text[i]);
    };
    bool blanks_separate = false;
    bool comma_between_digits = false;
    row.separator = semicolons ? ';' : ' ';
    row.numbers.clear();
    for (std::size_t at = behind_blanks(0); at < text.size();) {
        std::size_t begin = at;
        std::size_t end = std::min(text.find_first_of(semicolons ? ";" : " \t,", at), text.size());
        std::size_t next = end;
        const std::size_t quote = text[at] == '"' ? text.find('"', at + 1) : std::string::npos;
        const bool quoted = quote != std::string::npos && ends_field(quote + 1);
        if (quoted) {
            begin = at + 1;
            end = quote;
            next = quote + 1;
        }
        while (end > begin && is_blank(text[end - 1])) --end;
        const auto field = std::span(text).subspan(begin, end - begin);
        if (quoted || semicolons) std::ranges::replace(field, ',', '.');
        row.numbers.push_back({.begin = static_cast<std::uint32_t>(begin),
                               .length = static_cast<std::uint32_t>(field.size())});
        at = behind_blanks(next);
        if (at == text.size()) break;
        blanks_separate = blanks_separate || text[at] != separator;
        if (text[at] != separator) continue;
        comma_between_digits =
            comma_between_digits || (at == end && !field.empty() && is_digit(field.back()) &&
                                     at + 1 < text.size() && is_digit(text[at + 1]));
        row.separator = separator;
        at = behind_blanks(at + 1);
    }
    while (!row.numbers.empty() && row.numbers.back().length == 0) row.numbers.pop_back();
    row.text = text;
    row.decimal_commas = comma_between_digits && blanks_separate && !semicolons;
}

void take_fields(std::string_view line, Fields& row) {
    row.are_numbers = take_plain(line, row);
    if (!row.are_numbers) split(line, row);
}

// The first field that is no number, from this one on; as many as there are if all are numbers,
// whose values are then known.
std::size_t first_bad(Fields& row, std::size_t from = 0) {
    for (std::size_t i = from; !row.are_numbers && i < row.numbers.size(); ++i) {
        const std::optional<double> value = number_of(field_at(row, i));
        if (!value) return i;
        row.numbers[i].value = *value;
    }
    return row.numbers.size();
}

void require_numbers(const ForeignFile& file, Fields& row) {
    if (row.decimal_commas) {
        throw bad_line(file,
                       "decimal commas? A comma stands between digits, and blanks separate as "
                       "well; make them points, or let semicolons separate");
    }
    const std::size_t bad = first_bad(row);
    if (bad == row.numbers.size()) return;
    require_text(file, row.text);
    throw bad_line(file, "column " + std::to_string(bad + 1) + " is no number");
}

void require_width(const ForeignFile& file, const Fields& row, std::size_t width) {
    if (row.numbers.size() == width) return;
    throw bad_line(file, "the number of columns is " + std::to_string(row.numbers.size()) +
                             ", not " + std::to_string(width));
}

// Takes the next line of an announced row. False at the end of the file, or if that cuts the line.
bool take_row(ForeignFile& file, Fields& row) {
    for (std::string_view line; take_line(file, line);) {
        take_fields(line, row);
        if (row.numbers.empty() || field_at(row, 0).starts_with('#')) continue;
        file.cut_short = file.unterminated;
        if (!file.cut_short) require_numbers(file, row);
        return !file.cut_short;
    }
    return false;
}

void append(Block& block, const Fields& row, std::size_t first_column = 0) {
    const auto numbers = std::span(row.numbers).subspan(first_column);
    block.width = numbers.size();
    block.begin.push_back(block.text.size());
    block.text += row.text;
    block.numbers.insert(block.numbers.end(), numbers.begin(), numbers.end());
}

void clear(Block& block) {
    block.numbers.clear();
    block.text.clear();
    block.begin.clear();
}

void hand_over(ForeignFile& file, Block& block, const TakeBlock& take) {
    ++file.blocks;
    take(block);
    clear(block);
}

// The last block of a file that does not announce the lengths of its blocks.
void hand_over_last(ForeignFile& file, Block& block, std::size_t rows_before,
                    const TakeBlock& take) {
    if (rows_of(block) < rows_before) {
        file.cut_short = true;
    } else if (rows_of(block) > 0) {
        hand_over(file, block, take);
    }
}

void require_blocks(const ForeignFile& file, const std::string& first_words = "") {
    if (file.blocks > 0) return;
    throw Failure(file.name + ": no whole block of numbers" +
                  (file.cut_short        ? ": it is cut short at the end of the file"
                   : first_words.empty() ? ""
                                         : "; taken for a heading is " + first_words));
}

// Steps as YAML: a line with the number of the step, then a line for each row.
void read_yaml(ForeignFile& file, const TakeBlock& take) {
    Block block;
    Fields row;
    std::size_t rows_before = 0;
    std::size_t width = 0;
    for (std::string_view line; take_line(file, line);) {
        std::string_view item = textio::trimmed(line);
        if (item.empty() || item.starts_with('#') || item == "---" || item == "..." ||
            item == "data:" || item.starts_with("keywords:")) {
            continue;
        }
        const bool is_row = item.starts_with('-');
        const bool is_whole = item.ends_with(is_row ? ']' : ':');
        item.remove_suffix(is_whole ? 1 : 0);
        if (!is_whole && file.unterminated) {
            file.cut_short = true;
            if (is_row) clear(block);
        } else if (is_row && is_whole && item.starts_with("- [")) {
            item.remove_prefix(3);
            take_fields(item, row);
            require_numbers(file, row);
            if (width != 0) require_width(file, row, width);
            width = row.numbers.size();
            append(block, row);
        } else if (!is_row && is_whole && number_of(item)) {
            if (rows_of(block) == 0) continue;
            rows_before = rows_of(block);
            hand_over(file, block, take);
        } else {
            throw bad_line(file, "neither a step nor a row");
        }
    }
    hand_over_last(file, block, rows_before, take);
    require_blocks(file);
}

// A number of things as a file announces it; 0 if it is none.
std::size_t count_at(const Fields& row, std::size_t i) {
    return static_cast<std::size_t>(std::max(whole_of(field_at(row, i)).value_or(0), 0));
}

// A line with the step and its number of rows, then the rows.
void read_steps(ForeignFile& file, const TakeBlock& take) {
    Block block;
    Fields row;
    std::size_t rows = 0;
    std::size_t width = 0;
    while (take_row(file, row)) {
        if (rows == 0) {
            require_width(file, row, 2);
            rows = count_at(row, 1);
            if (rows == 0) throw bad_line(file, "no number of rows");
            continue;
        }
        if (width != 0) require_width(file, row, width);
        width = row.numbers.size();
        if (width < 2 || row.numbers[0].value != static_cast<double>(rows_of(block) + 1)) {
            throw bad_line(file, "not row " + std::to_string(rows_of(block) + 1));
        }
        append(block, row, 1);
        if (rows_of(block) < rows) continue;
        hand_over(file, block, take);
        rows = 0;
    }
    file.cut_short = file.cut_short || rows > 0;
    require_blocks(file);
}

// Takes the line with the two kinds of a pair. False if the end of the file cuts it.
bool take_pair(ForeignFile& file, Fields& row, std::string& pair) {
    for (std::string_view line; take_line(file, line) && !file.unterminated;) {
        take_fields(line, row);
        if (row.numbers.empty()) continue;
        if (row.numbers.size() != 2 || first_bad(row) == 2) throw bad_line(file, "no pair");
        pair = std::string(field_at(row, 0)).append("-").append(field_at(row, 1));
        return true;
    }
    return false;
}

// Is this the first field of a line of numbers, if perhaps of none that can be read? A heading
// begins otherwise.
bool begins_numbers(std::string_view field) {
    field.remove_prefix(std::min(field.find_first_not_of("+-"), field.size()));
    if (field.empty()) return false;
    std::string word(field);
    for (char& c : word) c = static_cast<char>(c | 0x20);  // in lower case
    return field[0] == '.' || is_digit(field[0]) || word == "nan" || word == "inf" ||
           word == "infinity";
}

// Are the fields from this one on 0, 1, 2, ..., as pandas heads columns that have no names?
bool are_counted(const Fields& row, std::size_t from) {
    for (std::size_t i = from; i < row.numbers.size(); ++i) {
        if (field_at(row, i) != std::to_string(i - from)) return false;
    }
    return true;
}

// Is the first row such a heading? 0 and 1 may be r and g, where the step to the next r is like the
// one behind it.
bool begins_counted(const Block& block) {
    if (rows_of(block) < 3) return false;
    for (std::size_t i = 0; i < block.width; ++i) {
        if (text_at(block, 0, i) != std::to_string(i)) return false;
    }
    const double next = at(block, 1, 0).value;
    const double step = at(block, 2, 0).value - next;
    return text_at(block, 1, 0).find_first_not_of("0123456789") != std::string_view::npos &&
           (block.width > 2 || std::abs(next - step) > step / 4);
}

Failure counted_heading(const ForeignFile& file, std::int64_t line) {
    return bad_line(
        file, line,
        "a heading of numbers 0, 1, 2, ...; take it out (sed " + std::to_string(line) + "d)");
}

// Do the rows only have their numbers where r should be? The second column then ascends in even
// steps, and over again if the rows are counted through several blocks.
bool counts_rows(const Block& block) {
    const auto value = [&](std::size_t i, std::size_t column) {
        return at(block, i, column).value;
    };
    const std::size_t rows = rows_of(block);
    const double first = value(0, 0);
    if (rows < 3 || block.width < 2 || (first != 0 && first != 1)) return false;
    for (std::size_t i = 0; i < rows; ++i) {
        if (value(i, 0) != first + static_cast<double>(i)) return false;
    }
    std::size_t end = 1;
    while (end < rows && value(end, 1) > value(end - 1, 1)) ++end;
    if (end < 3 || (end < rows && value(end, 1) != value(0, 1))) return false;
    return out_of_step(end, [&](std::size_t i) { return value(i, 1); }) == end;
}

// Columns as they are being read.
struct Columns {
    Block block;
    std::size_t width = 0;
    std::size_t rows_before = 0;  // of the block before
    char separator = ' ';         // of the first row
    std::int64_t first_line = 0;  // that is a row,
    std::int64_t last_line = 0;   // and the last such
    std::string first_words;      // the first line that is none, as messages show it,
    std::string last_words;       // and the last behind the last row
    std::map<std::size_t, std::string> almost_rows;  // by number of fields: what is wrong with them
};

// A line that does not begin with a number is no row, and must not be one that has lost its r.
void take_words(const ForeignFile& file, Columns& columns, std::string_view line, Fields& row) {
    require_text(file, line);
    columns.last_words = shown(file.input.line_number, line);
    if (columns.first_words.empty()) columns.first_words = columns.last_words;
    const bool comment =
        row.text[row.numbers[0].begin] == '#' || row.text[row.numbers[0].begin] == '@';
    const std::size_t fields = row.numbers.size();
    if (comment || fields < 2 || first_bad(row, 1) < fields) return;
    const Failure failure = row.numbers[0].length == 0 && are_counted(row, 1)
                                ? counted_heading(file, file.input.line_number)
                                : bad_line(file,
                                           "column 1 is no number, but all others are; if this is "
                                           "a heading, let it begin with #");
    if (fields == columns.width) throw failure;
    columns.almost_rows.try_emplace(fields, failure.what());
}

void require_r(const ForeignFile& file, const Columns& columns, const Block& block) {
    const char separator = columns.separator;
    if (file.blocks == 1 && begins_counted(block)) throw counted_heading(file, columns.first_line);
    if (!counts_rows(block)) return;
    throw Failure(file.name + ": the first column only counts rows; take it out (" +
                  (separator == ','   ? "cut -d, -f2-"
                   : separator == ';' ? "cut -d';' -f2-"
                                      : "awk '{$1 = \"\"; print}'") +
                  "), so that r is the first");
}

void take_numbers(ForeignFile& file, Columns& columns, const Fields& row, const TakeBlock& take) {
    Block& block = columns.block;
    const std::size_t rows = rows_of(block);
    if (columns.width == 0) {
        columns.width = row.numbers.size();
        columns.separator = row.separator;
        columns.first_line = file.input.line_number;
        const auto found = columns.almost_rows.find(columns.width);
        if (found != columns.almost_rows.end()) throw Failure(found->second);
    }
    require_width(file, row, columns.width);
    if ((row.separator == ';') != (columns.separator == ';')) {
        throw bad_line(file, "only some of the rows are apart by semicolons");
    }
    if (rows > 0 && row.numbers[0].value < at(block, rows - 1, 0).value) {
        if (columns.last_words.empty())
            columns.last_words =
                shown(columns.last_line, std::string_view(block.text).substr(block.begin.back()));
        columns.rows_before = rows;
        hand_over(file, block, take);
    }
    if (rows_of(block) == 0) block.heading = columns.last_words;
    columns.last_words.clear();
    columns.last_line = file.input.line_number;
    append(block, row);
}

// Does a line that the end of the file cuts begin a new block? Of its r, a part may be missing.
bool begins_block(const Columns& columns, const Fields& row) {
    const std::size_t rows = rows_of(columns.block);
    if (rows == 0) return false;
    if (row.numbers.size() > 1)
        return number_of(field_at(row, 0)).value_or(infinity) <
               at(columns.block, rows - 1, 0).value;
    if (columns.rows_before > 0) return rows >= columns.rows_before;
    return text_at(columns.block, 0, 0).starts_with(field_at(row, 0));
}

}  // namespace

void read_lammps(ForeignFile& file, const TakeBlock& take) {
    for (std::string_view line; take_line(file, line);) {
        const std::string_view item = textio::trimmed(line);
        if (item.empty() || item.starts_with('#')) continue;
        file.cut_short = file.unterminated;
        if (file.cut_short) break;
        put_back_line(file.input);
        const bool is_yaml = item.starts_with("---") || item.starts_with("keywords:");
        return is_yaml ? read_yaml(file, take) : read_steps(file, take);
    }
    require_blocks(file);
}

void read_columns(ForeignFile& file, const TakeBlock& take) {
    Columns columns;
    Fields row;
    const TakeBlock take_columns = [&](Block& block) {
        require_r(file, columns, block);
        take(block);
    };
    for (std::string_view line; take_line(file, line);) {
        take_fields(line, row);
        if (row.numbers.empty()) continue;
        if (!row.are_numbers && !begins_numbers(field_at(row, 0))) {
            take_words(file, columns, line, row);
            continue;
        }
        const bool is_whole = !file.unterminated ||
                              (columns.rows_before == 0 && row.numbers.size() >= columns.width &&
                               first_bad(row) == row.numbers.size());
        if (!is_whole) {
            file.cut_short = true;
            if (!begins_block(columns, row)) clear(columns.block);
            continue;
        }
        require_numbers(file, row);
        take_numbers(file, columns, row, take_columns);
    }
    hand_over_last(file, columns.block, columns.rows_before, take_columns);
    require_blocks(file, columns.first_words);
}

void read_dlpoly(ForeignFile& file, const TakeBlock& take) {
    Block block;
    Fields row;
    std::size_t pairs = 0;
    std::size_t bins = 0;
    std::size_t width = 0;
    std::string_view title;
    if (take_line(file, title) && take_row(file, row)) {
        require_width(file, row, 2);
        pairs = count_at(row, 0);
        bins = count_at(row, 1);
        if (pairs == 0 || bins == 0) throw bad_line(file, "no numbers of pairs and of bins");
    }
    while (file.blocks < pairs && take_pair(file, row, block.heading)) {
        while (rows_of(block) < bins && take_row(file, row)) {
            if (width == 0) width = row.numbers.size() == 2 ? 2 : 3;
            require_width(file, row, width);
            append(block, row);
        }
        if (rows_of(block) < bins) break;
        hand_over(file, block, take);
    }
    file.cut_short = file.blocks < pairs;
    if (!file.cut_short && take_row(file, row))
        throw bad_line(file, "more than its pairs and bins");
    require_blocks(file);
}

}  // namespace dorvek::tools
