// What the companions have in common as programs: how they are called, read and write files, fail
// and end.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "failure.hpp"
#include "grid.hpp"

namespace dorvek::tools {

// Say on standard error, without control characters, for a terminal obeys them: what could not be
// done while the rest goes on, exit status 1; and what is no failure.
void complain(std::string_view what);
void tell(std::string_view what);

// Writes to standard output. What cannot be written throws Failure.
void write(std::string_view text);

// Writes a file beside its place and moves it there when it is whole. A link is followed, and a
// device or a FIFO is written to as it is. A signal ends the program at once and leaves nothing
// behind. Complains, and returns false, if the file cannot be written.
bool write_file(const std::string& name, std::string_view text);

// The whole content of a file, or of standard input, called "-". Throws Failure if it cannot be
// read or a line is longer than textio::longest_line.
[[nodiscard]] std::string content_of(const std::string& name);

// The reason that the system gives in errno, behind a colon and a blank.
[[nodiscard]] std::string system_reason();

// The least that an argument may be if it has to be above 0.
inline constexpr double above_zero = std::numeric_limits<double>::denorm_min();

// The number that `text` is, from `least` to `most`: decimal, with or without blanks around it.
// Another throws WrongCall, which names the option.
[[nodiscard]] std::int32_t whole_argument(std::string_view option, std::string_view text,
                                          std::int32_t least, std::int32_t most);
[[nodiscard]] double real_argument(std::string_view option, std::string_view text, double least,
                                   double most = std::numeric_limits<double>::infinity());

// Add an option with such a number, or with a range A:B.
CLI::Option* add_whole(CLI::App& app, const std::string& name, std::int32_t& value,
                       std::int32_t least, std::int32_t most, const std::string& what);
CLI::Option* add_whole(CLI::App& app, const std::string& name, std::optional<std::int32_t>& value,
                       std::int32_t least, std::int32_t most, const std::string& what);
CLI::Option* add_real(CLI::App& app, const std::string& name, double& value, double least,
                      double most, const std::string& what);
CLI::Option* add_range(CLI::App& app, const std::string& name, Range& range,
                       const std::string& what);

// Reads the call into the options of `app`; the lines of its help are broken here. `example` is a
// call that its help shows. Of a wrong call, and of --help and --version, it throws what `run`
// takes.
void parse(CLI::App& app, int argc, char** argv, const std::string& example);

// Throws WrongCall if this file was not named and standard input is a terminal: nobody is to wait.
// `hint` ends what is said, and begins with a semicolon.
void require_input(const CLI::Option* file, const std::string& hint = "");

// Runs a companion and returns its exit status, whatever it throws: 2 of a wrong call, or else 1.
[[nodiscard]] int run(void (*companion)(int argc, char** argv), int argc, char** argv) noexcept;

}  // namespace dorvek::tools
