#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "input/conbin.hpp"
#include "input/window.hpp"
#include "support/table.hpp"

namespace dorvek::input {
namespace {

TEST(Grids, AreSearchedAsTheTableSays) {
    std::vector<float> grid;
    std::vector<float> values;
    support::for_each_row("input/grids.txt", [&](std::istringstream& row) {
        std::string name;
        row >> name;
        std::vector<float> typed;
        std::vector<float> expected;
        for (std::string word; row >> word;) {
            if (word == "=") {
                std::swap(typed, expected);
            } else {
                expected.push_back(std::stof(word));
            }
        }
        if (name == "grid") {
            grid = expected;
        } else if (name == "values") {
            values = expected;
        } else if (name == "approx") {
            EXPECT_EQ(approx(grid, values, typed.at(0)), expected.at(0));
        } else if (name == "locate") {
            EXPECT_EQ(static_cast<float>(locate(grid, typed.at(0))), expected.at(0));
        } else {
            ASSERT_EQ(name, "window");
            Window window{.rmin = typed.at(0), .rmax = typed.at(1)};
            const bool data = locate_window(grid, window);
            const auto& [rmin, rmax, ilo, ihi] = window;
            EXPECT_EQ((std::vector{data ? 1.0f : 0.0f, rmin, rmax, static_cast<float>(ilo),
                                   static_cast<float>(ihi)}),
                      expected);
        }
    });
}

}  // namespace
}  // namespace dorvek::input
