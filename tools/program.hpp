// What the companions have in common as programs: how they are called, fail and end.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace dorvek::tools {

// A wrong call; nothing has been done. Exit status 2.
struct WrongCall : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Something that cannot be done, and nothing beyond it. Exit status 1.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Says on standard error what could not be done, while the rest goes on. Exit status 1.
void complain(const std::string& what);

// Says on standard error what is no failure.
void tell(const std::string& what);

// Writes to standard output. What cannot be written throws Failure.
void write(std::string_view text);

// The reason that the system gives in errno, behind a colon and a blank.
[[nodiscard]] std::string system_reason();

// Reads the call into the options of `app`, with --help and --version, does `work` and returns the
// exit status.
[[nodiscard]] int run(CLI::App& app, int argc, char** argv, const std::function<void()>& work);

}  // namespace dorvek::tools
