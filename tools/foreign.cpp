#include "foreign.hpp"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <span>

#include "csv.hpp"
#include "grid.hpp"

namespace dorvek::tools {
namespace {

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
    block.single_blanks = block.single_blanks && row.single_blanks;
    block.numbers.insert(block.numbers.end(), numbers.begin(), numbers.end());
}

void clear(Block& block) {
    block.numbers.clear();
    block.text.clear();
    block.begin.clear();
    block.single_blanks = true;
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
            if (row.numbers.empty()) throw bad_line(file, "a row of no numbers");
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
            rows = row.numbers.size() == 2 ? count_at(row, 1) : 0;
            if (rows == 0) throw bad_line(file, "no step and number of rows");
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

// Is this the first field of a line of numbers, if perhaps of none that can be read, as the
// asterisks are for which a number was too wide? A heading begins otherwise.
bool begins_numbers(std::string_view field) {
    field.remove_prefix(std::min(field.find_first_not_of("+-"), field.size()));
    if (field.empty()) return false;
    std::string word(field);
    for (char& c : word) c = static_cast<char>(c | 0x20);  // in lower case
    return field[0] == '.' || field[0] == '*' || (field[0] >= '0' && field[0] <= '9') ||
           word == "nan" || word == "inf" || word == "infinity";
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

std::string counted_heading(std::int64_t line) {
    return "a heading of numbers 0, 1, 2, ...; take it out (sed " + std::to_string(line) + "d)";
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
    std::string odd_words;        // the first there that is no comment and parts no sets
    std::map<std::size_t, std::string> almost_rows;  // by number of fields: what is wrong with them
};

// A line that does not begin with a number is no row, and must not be one that has lost its r.
void take_words(const ForeignFile& file, Columns& columns, std::string_view line, Fields& row) {
    require_text(file, line);
    const std::size_t fields = row.numbers.size();
    if (fields == 1 && row.numbers[0].length == 0) throw bad_line(file, "a row of empty cells");
    columns.last_words = shown(file.input.line_number, line);
    if (columns.first_words.empty()) columns.first_words = columns.last_words;
    const char first = row.text[row.numbers[0].begin];
    const bool comment = first == '#' || first == '@';
    if (columns.width > 0 && !comment && line != "&" && columns.odd_words.empty()) {
        columns.odd_words = columns.last_words;
    }
    if (comment || fields < 2 || first_bad(row, 1) < fields) return;
    const std::string what = row.numbers[0].length == 0 && are_counted(row, 1)
                                 ? counted_heading(file.input.line_number)
                                 : "column 1 is no number, but all others are; if this is a "
                                   "heading, let it begin with #";
    if (fields == columns.width) throw bad_line(file, what);
    columns.almost_rows.try_emplace(fields, bad_line(file, what).what());
}

void require_r(const ForeignFile& file, const Columns& columns, const Block& block) {
    const char separator = columns.separator;
    if (file.blocks == 1 && begins_counted(block)) {
        throw bad_line(file, columns.first_line, counted_heading(columns.first_line));
    }
    if (!counts_rows(block)) return;
    throw Failure(file.name + ": the first column only counts rows; take it out (" +
                  (separator == ','   ? "cut -d, -f2-"
                   : separator == ';' ? "cut -d';' -f2-"
                                      : "awk '{$1 = \"\"; print}'") +
                  "), so that r is the first");
}

// Is this one row, of whole numbers? So the counts of rows or pairs begin files of other forms.
bool begins_counts(const Block& block) {
    return rows_of(block) == 1 && block.width == 2 && whole_of(text_at(block, 0, 0)) &&
           whole_of(text_at(block, 0, 1));
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
    const bool falls = rows > 0 && row.numbers[0].value < at(block, rows - 1, 0).value;
    if (file.blocks == 0 && begins_counts(block)) {
        const bool other_width = row.numbers.size() != columns.width;
        if (!columns.last_words.empty() && (other_width || falls)) {
            throw bad_line(file, "is the form not columns but dlpoly?");
        }
        if (other_width && row.numbers[0].value == 1) {
            throw bad_line(file, "is the form not columns but lammps?");
        }
    }
    require_width(file, row, columns.width);
    if ((row.separator == ';') != (columns.separator == ';')) {
        throw bad_line(file, "only some of the rows are apart by semicolons");
    }
    if (falls) {
        if (columns.last_words.empty()) {
            columns.last_words =
                shown(columns.last_line, std::string_view(block.text).substr(block.begin.back()));
        }
        columns.rows_before = rows;
        hand_over(file, block, take);
    }
    if (rows_of(block) == 0) {
        block.heading = columns.last_words;
    } else if (file.words.empty()) {
        file.words = columns.odd_words;
    }
    columns.last_words.clear();
    columns.odd_words.clear();
    columns.last_line = file.input.line_number;
    append(block, row);
}

// Does a line that the end of the file cuts begin a new block? Of its r, a part may be missing.
bool begins_block(const Columns& columns, const Fields& row) {
    const std::size_t rows = rows_of(columns.block);
    if (rows == 0) return false;
    if (row.numbers.size() > 1) {
        const std::optional<double> r = number_of(field_at(row, 0));
        return r && *r < at(columns.block, rows - 1, 0).value;
    }
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
        // A line without its end may have lost digits; of a single block, it may be whole.
        const bool is_whole = !file.unterminated ||
                              (columns.rows_before == 0 && row.numbers.size() >= columns.width &&
                               first_bad(row) == row.numbers.size());
        if (!is_whole) {
            file.cut_short = true;
            if (!begins_block(columns, row)) clear(columns.block);
            continue;
        }
        if (row.numbers.size() == 1 && field_at(row, 0).ends_with(':')) {
            throw bad_line(file, "a step of YAML? The form lammps reads it");
        }
        require_numbers(file, row);
        take_numbers(file, columns, row, take_columns);
    }
    if (file.words.empty()) file.words = columns.odd_words;
    hand_over_last(file, columns.block, columns.rows_before, take_columns);
    require_blocks(file, columns.first_words);
}

void read_dlpoly(ForeignFile& file, const TakeBlock& take) {
    Block block;
    Fields row;
    std::size_t bins = 0;
    std::size_t width = 0;
    std::string_view title;
    if (take_line(file, title) && take_row(file, row)) {
        file.announced = row.numbers.size() == 2 ? count_at(row, 0) : 0;
        bins = file.announced > 0 ? count_at(row, 1) : 0;
        if (bins == 0) throw bad_line(file, "no numbers of pairs and of bins");
    }
    while (file.blocks < file.announced && take_pair(file, row, block.heading)) {
        while (rows_of(block) < bins && take_row(file, row)) {
            if (width == 0) width = row.numbers.size() == 2 ? 2 : 3;
            require_width(file, row, width);
            append(block, row);
        }
        if (rows_of(block) < bins) break;
        hand_over(file, block, take);
    }
    file.cut_short = file.blocks < file.announced;
    if (!file.cut_short && take_row(file, row)) {
        throw bad_line(file, "more than its pairs and bins");
    }
    require_blocks(file);
}

}  // namespace dorvek::tools
