#include "program.hpp"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <new>
#include <system_error>

#include "textio/terminal.hpp"

namespace dorvek::tools {
namespace {

std::atomic<bool> complained{false};

int end_with(int status, const char* what, const char* more = "") {
    std::fprintf(stderr, "%s: %s%s\n", program_invocation_short_name, what, more);
    return status;
}

}  // namespace

void tell(const std::string& what) {
    std::fprintf(stderr, "%s: %s\n", program_invocation_short_name, what.c_str());
}

void complain(const std::string& what) {
    tell(what);
    complained = true;
}

std::string system_reason() {
    return std::string(": ") + std::strerror(errno);
}

void write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
        throw Failure("cannot write" + system_reason());
    }
}

bool write_file(const std::string& name, std::string_view text) {
    sigset_t signals, before;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, signal);
    ::sigprocmask(SIG_BLOCK, &signals, &before);
    std::FILE* const file = std::fopen(name.c_str(), "w");
    bool is_whole = file != nullptr;
    if (is_whole) {
        is_whole = std::fwrite(text.data(), 1, text.size(), file) == text.size();
        is_whole = std::fclose(file) == 0 && is_whole;
    }
    if (!is_whole) {
        complain(name + ": cannot be written" + system_reason());
        std::error_code ignored;
        const auto status = std::filesystem::symlink_status(name, ignored);
        if (file != nullptr && is_regular_file(status)) std::remove(name.c_str());
    }
    ::sigprocmask(SIG_SETMASK, &before, nullptr);
    return is_whole;
}

void parse(CLI::App& app, int argc, char** argv) {
    app.set_help_flag("--help", "show this text");
    app.set_version_flag("--version", DORVEK_VERSION, "show the version");
    app.get_formatter()->column_width(26);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& shown) {
        app.exit(shown);
        throw;
    }
}

int run(void (*companion)(int argc, char** argv), int argc, char** argv) noexcept {
    textio::open_standard_streams(textio::Closed::is_an_error);
    try {
        companion(argc, argv);
        if (std::fflush(stdout) != 0) throw Failure("cannot write" + system_reason());
    } catch (const CLI::Success&) {  // --help, --version
        return std::fflush(stdout) == 0 ? 0 : end_with(1, "cannot write");
    } catch (const CLI::ParseError& error) {
        return end_with(2, error.what(), " (see --help)");
    } catch (const WrongCall& error) {
        return end_with(2, error.what());
    } catch (const std::bad_alloc&) {
        return end_with(1, "not enough memory");
    } catch (const std::exception& error) {
        return end_with(1, error.what());
    }
    return complained ? 1 : 0;
}

}  // namespace dorvek::tools
