// gnuplot as a language and a process: what it is told, and what it leaves to be desired.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace dorvek::tools {

enum class Kind { text, png, svg, pdf };

// A figure is 8.5 cm wide, as the columns of a journal; lengths are points, 1/72 inch.
inline constexpr double figure_width = 241;
inline constexpr double figure_height = 198;

// A terminal, less one line for the prompt.
inline constexpr std::size_t text_columns = 79;
inline constexpr std::size_t text_lines = 23;

// Line styles: 1 to line_styles, from there on as from 1. The same numbers plus `dot_styles` have a
// dot for a mean, plus `mode_styles` a triangle for a mode. `limit_style` is for the limits of
// windows.
inline constexpr std::size_t line_styles = 28;
inline constexpr std::size_t dot_styles = 30;
inline constexpr std::size_t mode_styles = 60;
inline constexpr std::size_t limit_style = 90;

// A string of gnuplot that holds this text, in quotes.
[[nodiscard]] std::string gnuplot_string(std::string_view text);

// The picture that the commands of `script` draw, of one page or, if it is a .pdf, of several.
// `height` is that of a page: points or, of text, lines. No setting of the user changes the
// picture, and the same script gives the same bytes. Throws Failure if gnuplot does not draw all of
// it.
[[nodiscard]] std::string drawn(Kind kind, double height, std::string_view script);

}  // namespace dorvek::tools
