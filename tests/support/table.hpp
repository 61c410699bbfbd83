// Tables of cases: text files beside the tests, a case or a piece of one on each row.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

namespace dorvek::support {

// Calls check(row) for each line of a table below tests/ that is neither blank nor a comment; a
// comment may also follow a row. A row that is not read to its end fails, and so does a table
// without rows.
inline void for_each_row(const std::string& table,
                         const std::function<void(std::istringstream&)>& check) {
    std::ifstream file(SOURCE_DIR "/tests/" + table);
    int rows = 0;
    for (std::string line; std::getline(file, line);) {
        line.resize(line.starts_with('#') ? 0 : std::min(line.find(" #"), line.size()));
        if (line.find_first_not_of(' ') == std::string::npos) continue;
        SCOPED_TRACE(line);
        std::istringstream row(line);
        check(row);
        row.clear();
        std::string unread;
        row >> unread;
        EXPECT_EQ(unread, "") << "is not read";
        ++rows;
    }
    EXPECT_GT(rows, 0) << table;
}

// The text between the next two quotes.
inline std::string quoted(std::istringstream& row) {
    std::string text;
    std::getline(row, text, '"');
    std::getline(row, text, '"');
    return text;
}

// Checks a value against the next two words: what it is, and how far off it may be.
inline void expect_next(std::istringstream& row, float value) {
    std::string expected;
    double tolerance = -1;
    row >> expected >> tolerance;
    if (expected == "nan") {
        EXPECT_TRUE(std::isnan(value)) << value;
    } else {
        EXPECT_NEAR(value, std::strtod(expected.c_str(), nullptr), tolerance);
    }
}

}  // namespace dorvek::support
