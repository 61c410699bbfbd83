#include "layout.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <ostream>
#include <set>
#include <string_view>
#include <utility>

#include "text.hpp"

namespace dorvek::tools {
namespace {

constexpr std::size_t mark_columns = 5;  // with the space behind the entry before
// In columns: names are not shortened below the first, and what tells them apart not below the
// second.
constexpr std::size_t short_name = 8;
constexpr std::size_t legible_name = 20;
constexpr std::size_t most_entries = 100;

// The different names, and what tells each of them from all others.
std::map<std::string, std::string> differences_in(const std::vector<Entry>& entries) {
    std::set<std::string> different;
    for (const Entry& entry : entries) {
        if (!entry.name.empty()) different.insert(entry.name);
    }
    const std::vector<std::string> names(different.begin(), different.end());
    const std::vector<std::string> cut = without_shared_words(names);
    std::map<std::string, std::string> differences;
    for (std::size_t i = 0; i < names.size(); ++i) differences[names[i]] = cut[i];
    return differences;
}

// A name in at most so many columns: what all begin or end with goes first.
std::string short_form(const std::pair<const std::string, std::string>& name, std::size_t columns) {
    return width_of(name.first) <= columns ? name.first : shortened(name.second, columns);
}

// Are there two of these names that are alike if they have so many columns?
bool are_alike(const std::map<std::string, std::string>& names, std::size_t columns) {
    std::set<std::string> different;
    for (const auto& name : names) different.insert(short_form(name, columns));
    return different.size() < names.size();
}

// The rows of the key if they have so many columns, and names at most so many.
std::vector<std::vector<Entry>> rows_of(const std::vector<Entry>& entries,
                                        const std::map<std::string, std::string>& names,
                                        std::size_t columns, std::size_t name_columns,
                                        bool breaks) {
    std::vector<std::vector<Entry>> rows;
    std::size_t taken = 0;
    for (Entry entry : entries) {
        const std::size_t room = columns - mark_columns - width_of(entry.text);
        if (const auto name = names.find(entry.name); name != names.end()) {
            entry.name = short_form(*name, std::min(room, name_columns));
        }
        const std::size_t width = mark_columns + width_of(entry.name) + width_of(entry.text);
        if (rows.empty() || taken + width > columns || (breaks && entry.begins_row)) {
            rows.emplace_back();
            taken = 0;
        }
        entry.column = taken;
        taken += width;
        rows.back().push_back(std::move(entry));
    }
    return rows;
}

// A place on a figure, in points from its upper left corner.
struct Place {
    double x;
    double y;
    double height;  // of the figure
};

std::ostream& operator<<(std::ostream& script, const Place& place) {
    return script << "screen " << place.x / figure_width << ", screen "
                  << 1 - place.y / place.height;
}

}  // namespace

Key key_of(std::vector<Entry> entries, Kind kind, double height) {
    // A character has 0.625 of the height of its letters, about, in the widest fonts.
    const Key usual{.letters = 8, .row_height = 10.5, .column_width = 5};
    const Key small{.letters = 6, .row_height = 7.5, .column_width = 3.75};
    const bool is_text = kind == Kind::text;
    const double width = is_text ? text_columns : figure_width;
    Key key = is_text ? Key{} : usual;
    const std::map<std::string, std::string> names = differences_in(entries);
    const auto fits = [&](std::size_t name_width, bool breaks) {
        const auto columns = static_cast<std::size_t>(width / key.column_width);
        key.rows = rows_of(entries, names, columns, name_width, breaks);
        return static_cast<double>(key.rows.size()) * key.row_height <= height / 5;
    };
    std::size_t left_out = 0;
    const auto leave_out = [&](std::size_t count) {
        left_out += count;
        entries.resize(entries.size() - count);
        entries.back() = {.text = "and " + std::to_string(left_out + 1) + " more"};
    };
    if (entries.size() > most_entries) leave_out(entries.size() - most_entries);
    if (fits(text_columns, true)) return key;
    if (!is_text) key = small;
    if (fits(text_columns, true)) return key;
    std::size_t least = short_name;
    for (const auto& [name, difference] : names) {
        const std::size_t needed = width_of(difference);
        if (needed <= legible_name) least = std::max(least, needed);
    }
    while (least < text_columns && are_alike(names, least)) ++least;
    for (std::size_t name_width = text_columns; name_width >= least; --name_width) {
        if (fits(name_width, false)) return key;
    }
    do leave_out(1);
    while (!fits(least, false) && entries.size() > 1);
    return key;
}

std::string text_of(const Key& key) {
    constexpr std::string_view letters = "*#$%@&=";  // of gnuplot's lines
    std::string text;
    for (const std::vector<Entry>& row : key.rows) {
        std::string line;
        for (const Entry& entry : row) {
            line += line.empty() ? "" : "   ";
            switch (entry.mark) {
                case Mark::none:
                    break;
                case Mark::line:
                    line += letters[(entry.style - 1) % letters.size()];
                    break;
                case Mark::mean:
                case Mark::dot:
                    line += 'o';
                    break;
                case Mark::mode:
                    line += 'v';
                    break;
                case Mark::window:
                    line += '|';
                    break;
            }
            line += (entry.mark == Mark::none ? "" : " ") + entry.name + entry.text;
        }
        text += line + '\n';
    }
    return text;
}

double write_key(std::ostream& script, const Key& key, double height) {
    double y = 1.75 + key.row_height / 2;
    for (const std::vector<Entry>& row : key.rows) {
        for (const Entry& entry : row) {
            const double x = 5 + key.column_width * static_cast<double>(entry.column);
            const Place left{x, y, height}, middle{x + 8, y, height}, right{x + 16, y, height};
            if (entry.mark == Mark::window) {
                script << "set object rectangle from " << Place{x, y + 3.5, height} << " to "
                       << Place{x + 16, y - 3.5, height} << '\n';
            }
            if (entry.mark == Mark::line || entry.mark == Mark::mean) {
                script << "set arrow from " << left << " to " << right << " linestyle "
                       << entry.style
                       << (entry.mark == Mark::line
                               ? " nohead\n"
                               : " dashtype solid heads size screen 0.008, 90\n");
            }
            if (entry.mark == Mark::mean || entry.mark == Mark::dot || entry.mark == Mark::mode) {
                script << "set label \"\" at " << middle << " point linestyle "
                       << entry.style + (entry.mark == Mark::mode ? mode_styles : dot_styles)
                       << '\n';
            }
            script << "set label " << gnuplot_string(entry.name + entry.text) << " at "
                   << Place{x + (entry.mark == Mark::none ? 0 : 20), y, height} << " font \","
                   << key.letters << "\"\n";
        }
        y += key.row_height;
    }
    return 9 + key.row_height * static_cast<double>(key.rows.size());
}

// By printf, which the C locale makes independent of the user's.
std::string in_four_digits(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%#.4g", value);
    const std::string_view digits = text.data();
    return std::string(digits.ends_with('.') ? digits.substr(0, digits.size() - 1) : digits);
}

std::string in_unit(const std::string& what, const Look& look) {
    return look.unit.empty() ? what : what + " (" + printable(look.unit) + ")";
}

}  // namespace dorvek::tools
