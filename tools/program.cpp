#include "program.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <new>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

#include "csv.hpp"
#include "text.hpp"
#include "textio/lines.hpp"
#include "textio/retry.hpp"
#include "textio/terminal.hpp"

namespace dorvek::tools {
namespace {

constexpr std::size_t help_width = 80;
constexpr std::size_t help_column = 26;  // where the descriptions of options begin

std::atomic<bool> complained{false};

// The file being written beside its place, if one is: what ends the program removes it.
std::atomic<const char*> unfinished{nullptr};

int end_with(int status, std::string_view what) noexcept {
    try {
        tell(what);
    } catch (const std::bad_alloc&) {
        std::fputs("not enough memory\n", stderr);
    }
    return status;
}

// The end is that of a program which does not know the signal.
void remove_unfinished(int signal) {
    if (const char* const name = unfinished; name != nullptr) ::unlink(name);
    ::raise(signal);
}

// A signal that is ignored, as under nohup, stays so.
void remove_unfinished_at_signals() {
    static bool done = false;
    if (std::exchange(done, true)) return;
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU, SIGXFSZ}) {
        struct sigaction action {};
        ::sigaction(signal, nullptr, &action);
        if (action.sa_handler != SIG_DFL) continue;
        action.sa_handler = remove_unfinished;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        ::sigaction(signal, &action, nullptr);
    }
}

// Closes `fd`. False, and errno, if it is none, or not all of the text could be written.
bool write_and_close(int fd, std::string_view text) {
    if (fd < 0) return false;
    while (!text.empty()) {
        const ssize_t count = ::write(fd, text.data(), text.size());
        if (count < 0 && !textio::may_retry(fd, POLLOUT)) break;
        text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    const int error = text.empty() ? 0 : errno;
    const bool is_closed = ::close(fd) == 0;
    if (error != 0) errno = error;
    return error == 0 && is_closed;
}

// Where the links lead that a name may be, whether or not there is a file.
std::filesystem::path behind_links(std::filesystem::path place) {
    std::error_code ignored;
    constexpr int most = 40;  // as the system has it
    for (int i = 0; i < most && is_symlink(symlink_status(place, ignored)); ++i) {
        place = place.parent_path() / read_symlink(place, ignored);
    }
    return place;
}

// The file has the owner and the permissions of the one that it replaces, as far as may be. Its
// name while it is written is nobody else's, not even another computer's.
bool replace(const std::string& name, std::string_view text) {
    struct stat before {};
    const bool exists = ::stat(name.c_str(), &before) == 0;
    if (!exists && errno != ENOENT) return false;
    if (exists && !S_ISREG(before.st_mode)) {
        return write_and_close(::open(name.c_str(), O_WRONLY | O_CLOEXEC), text);
    }
    if (exists && ::access(name.c_str(), W_OK) != 0) return false;
    const std::filesystem::path place = behind_links(name);
    const auto now = std::chrono::system_clock::now().time_since_epoch().count();
    const std::string beside =
        place.parent_path() / (".dorvek-" + std::to_string(::getpid()) + '-' + std::to_string(now));
    remove_unfinished_at_signals();
    unfinished = beside.c_str();
    const mode_t mode = exists ? before.st_mode & 0777U : 0666U;
    const int fd = ::open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (exists && fd >= 0 && ::fchown(fd, before.st_uid, before.st_gid) == 0) ::fchmod(fd, mode);
    const bool is_there =
        write_and_close(fd, text) && std::rename(beside.c_str(), place.c_str()) == 0;
    const int error = errno;
    if (!is_there) ::unlink(beside.c_str());
    unfinished = nullptr;
    errno = error;
    return is_there;
}

std::string in_words(double limit) {
    std::array<char, 32> words{};
    return {words.data(), std::to_chars(words.begin(), words.end(), limit).ptr};
}

[[noreturn]] void refuse(std::string_view option, std::string_view text, const char* what,
                         double least, double most) {
    throw WrongCall(std::string(option) + ": " + std::string(text) + " is no " + what +
                    (least == above_zero ? " above 0" : " from " + in_words(least)) +
                    (std::isfinite(most)   ? " to " + in_words(most)
                     : least == above_zero ? ""
                                           : " on"));
}

template <typename Number>
CLI::Option* add_number(CLI::App& app, const std::string& name, Number& value, std::int32_t least,
                        std::int32_t most, const std::string& what) {
    const auto take = [&value, name, least, most](const std::string& text) {
        value = whole_argument(name, text, least, most);
    };
    return app.add_option_function<std::string>(name, take, what);
}

// The text with its words on lines of at most `width` columns.
std::string broken(const std::string& text, std::size_t width) {
    std::istringstream words(text);
    std::string lines;
    std::size_t taken = 0;
    for (std::string word; words >> word;) {
        const std::size_t needed = width_of(word) + 1;
        if (!lines.empty()) lines += taken + needed > width ? '\n' : ' ';
        taken = lines.empty() || lines.back() == '\n' ? needed - 1 : taken + needed;
        lines += word;
    }
    return lines;
}

// What goes with an option, in the words of its help.
std::string terms_of(const CLI::Option& option) {
    std::string terms = option.get_required() && option.nonpositional() ? "; needed" : "";
    const auto add = [&](const char* before, const std::set<CLI::Option*>& others) {
        std::set<std::string> names;
        for (const CLI::Option* other : others) names.insert(other->get_name());
        for (const std::string& name : names) terms += std::exchange(before, ", ") + name;
    };
    add("; with ", option.get_needs());
    add("; not with ", option.get_excludes());
    return terms.empty() ? "" : " (" + terms.substr(2) + ')';
}

}  // namespace

void tell(std::string_view what) {
    const std::string line =
        printable(std::string(program_invocation_short_name) + ": ") + printable(what) + '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

void complain(std::string_view what) {
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
    const bool is_there = replace(name, text);
    if (!is_there) complain(name + ": cannot be written" + system_reason());
    return is_there;
}

std::string content_of(const std::string& name) {
    const int fd = name == "-" ? STDIN_FILENO : ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
    const struct Closer {
        ~Closer() {
            if (fd > STDERR_FILENO) ::close(fd);
        }
        int fd;
    } closer{fd};
    std::string content;
    std::string block(std::size_t{1} << 16U, '\0');
    std::size_t line = 0;  // where the last one begins
    while (fd >= 0) {
        const ssize_t count = ::read(fd, block.data(), block.size());
        if (count < 0 && textio::may_retry(fd, POLLIN)) continue;
        if (count < 0) break;
        if (count == 0) return content;
        const std::string_view read(block.data(), static_cast<std::size_t>(count));
        const std::size_t feed = read.rfind('\n');
        if (feed != std::string_view::npos) line = content.size() + feed + 1;
        content += read;
        if (content.size() - line > textio::longest_line) {
            const auto number = std::count(content.begin(), content.end(), '\n') + 1;
            throw Failure(input_name(name) + ", line " + std::to_string(number) + ": " +
                          std::string(message_of(textio::Status::line_too_long)));
        }
    }
    throw Failure(input_name(name) + ": cannot be read" + system_reason());
}

std::int32_t whole_argument(std::string_view option, std::string_view text, std::int32_t least,
                            std::int32_t most) {
    const std::optional<std::int32_t> number = whole_of(text);
    if (!number || *number < least || *number > most) {
        refuse(option, text, "whole number", least, most);
    }
    return *number;
}

double real_argument(std::string_view option, std::string_view text, double least, double most) {
    std::string_view digits = textio::trimmed(text);
    if (digits.starts_with('+') && !digits.starts_with("+-")) digits.remove_prefix(1);
    double number = NAN;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    const bool is_number = error == std::errc() && end == digits.data() + digits.size();
    if (!is_number || !std::isfinite(number) || number < least || number > most) {
        refuse(option, text, "number", least, most);
    }
    return number;
}

CLI::Option* add_whole(CLI::App& app, const std::string& name, std::int32_t& value,
                       std::int32_t least, std::int32_t most, const std::string& what) {
    return add_number(app, name, value, least, most, what);
}

CLI::Option* add_whole(CLI::App& app, const std::string& name, std::optional<std::int32_t>& value,
                       std::int32_t least, std::int32_t most, const std::string& what) {
    return add_number(app, name, value, least, most, what);
}

CLI::Option* add_real(CLI::App& app, const std::string& name, double& value, double least,
                      double most, const std::string& what) {
    const auto take = [&value, name, least, most](const std::string& text) {
        value = real_argument(name, text, least, most);
    };
    return app.add_option_function<std::string>(name, take, what);
}

CLI::Option* add_range(CLI::App& app, const std::string& name, Range& range,
                       const std::string& what) {
    const auto take = [&range, name](const std::string& text) {
        const std::size_t colon = std::min(text.find(':'), text.size());
        const auto from = real_of(text.substr(0, colon));
        const auto to = real_of(text.substr(std::min(colon + 1, text.size())));
        if (!from || !to || !std::isfinite(*from) || !std::isfinite(*to) || !(*from < *to)) {
            throw WrongCall(name + ": " + text + " is no range A:B");
        }
        range = {.from = *from, .to = *to};
    };
    return app.add_option_function<std::string>(name, take, what)->type_name("A:B");
}

void parse(CLI::App& app, int argc, char** argv, const std::string& example) {
    app.set_help_flag("--help", "show this text");
    app.set_version_flag("--version", DORVEK_VERSION, "show the version");
    app.get_formatter()->column_width(help_column);
    app.description(broken(app.get_description(), help_width));
    for (CLI::Option* option : app.get_options()) {
        const std::string argument = option->nonpositional() ? option->get_type_name() : "";
        option->option_text(argument.empty() ? " " : argument);
        option->description(
            broken(option->get_description() + terms_of(*option), help_width - help_column));
    }
    app.footer("Example:\n  " + example + "\n\nMore help: man " + app.get_name());
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& shown) {
        std::ostringstream out;
        app.exit(shown, out);
        std::string text = out.str();
        for (std::size_t at = 0; (at = text.find("\n\n\n")) != std::string::npos;)
            text.erase(at, 1);
        write(text);
        throw;
    }
}

void require_input(const CLI::Option* file, const std::string& hint) {
    if (file->count() > 0 || ::isatty(STDIN_FILENO) == 0) return;
    throw WrongCall("no " + file->get_name() + " is named, and standard input is a terminal" +
                    hint + " (see --help)");
}

int run(void (*companion)(int argc, char** argv), int argc, char** argv) noexcept {
    textio::open_standard_streams(textio::Closed::is_an_error);
    try {
        companion(argc, argv);
        if (std::fflush(stdout) != 0) throw Failure("cannot write" + system_reason());
    } catch (const CLI::Success&) {  // --help, --version
        return std::fflush(stdout) == 0 ? 0 : end_with(1, "cannot write" + system_reason());
    } catch (const CLI::ParseError& error) {
        return end_with(2, std::string(error.what()) + " (see --help)");
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
