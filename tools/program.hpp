// What the companions have in common as programs: how they are called, fail and end.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>

#include "failure.hpp"

namespace dorvek::tools {

// Says on standard error what could not be done, while the rest goes on. Exit status 1.
void complain(const std::string& what);

// Says on standard error what is no failure.
void tell(const std::string& what);

// Writes to standard output. What cannot be written throws Failure.
void write(std::string_view text);

// Writes a file, all of it or nothing: Ctrl-C has to wait. Complains, and returns false, if it
// cannot be written.
bool write_file(const std::string& name, std::string_view text);

// The reason that the system gives in errno, behind a colon and a blank.
[[nodiscard]] std::string system_reason();

// Reads the call into the options of `app`. Of a wrong call, and of --help and --version, it throws
// what `run` takes.
void parse(CLI::App& app, int argc, char** argv);

// Runs a companion and returns its exit status, whatever it throws: 2 of a wrong call, or else 1.
[[nodiscard]] int run(void (*companion)(int argc, char** argv), int argc, char** argv) noexcept;

}  // namespace dorvek::tools
