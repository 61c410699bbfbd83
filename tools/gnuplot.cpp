#include "gnuplot.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <vector>

#include "program.hpp"

namespace dorvek::tools {
namespace {

constexpr std::string_view figure_style = R"(
set border 3 linewidth 1.5
set tics nomirror out scale 0.5
set format "%h"
set xtics offset 0, 0.3
set ytics offset 0.5, 0
set mytics 1
set xlabel offset 0, 0.5
set style rectangle behind fillcolor rgb "#e4e4e4" fillstyle solid noborder
)";
constexpr std::string_view text_style = R"(
set border 3
set lmargin 12
set ylabel offset -1
set tics nomirror out
set format "%h"
)";

// Colours that the colour-blind can tell apart too (Okabe and Ito 2008), with dashes for who prints
// in grey. A terminal has letters.
void write_styles(std::ostream& head, Kind kind) {
    constexpr std::array colours{"0072b2", "d55e00", "009e73", "cc79a7",
                                 "e69f00", "56b4e9", "000000"};
    constexpr std::array dashes{"solid", "(8, 4)", "(2, 3)", "(8, 3, 2, 3)"};
    static_assert(colours.size() * dashes.size() == line_styles);  // and no two are alike
    const bool is_text = kind == Kind::text;
    for (std::size_t i = 0; i < line_styles; ++i) {
        std::ostringstream line;
        line << (is_text ? " linetype " : " linecolor rgb \"#");
        if (is_text) {
            line << i % colours.size() + 1;
        } else {
            line << colours[i % colours.size()] << "\" linewidth 1.5";
        }
        const auto style = [&](std::size_t number) -> std::ostream& {
            return head << "set style line " << number << line.str();
        };
        style(i + 1) << (is_text ? "" : " dashtype ") << (is_text ? "" : dashes[i % dashes.size()])
                     << '\n';
        style(i + 1 + dot_styles) << " pointtype " << (is_text ? "\"o\"" : "7") << '\n';
        style(i + 1 + mode_styles) << " pointtype " << (is_text ? "\"v\"" : "11") << '\n';
    }
    head << "set style line " << limit_style
         << (is_text ? " linetype 3\n" : " linecolor rgb \"#a0a0a0\" linewidth 1.5\n");
}

// The commands before those of the first page. A .png has 300 dots per inch, an .svg 96.
std::string head_of(Kind kind, double height) {
    std::ostringstream head;
    head << "set encoding utf8\nset terminal ";
    const auto dots = [&](double per_inch) {
        head << std::floor(figure_width / 72 * per_inch) << ", "
             << std::floor(height / 72 * per_inch);
    };
    switch (kind) {
        case Kind::text:
            head << "dumb nofeed size " << text_columns << ", " << height;
            break;
        case Kind::png:
            head << "pngcairo size ";
            dots(300);
            head << R"( font "Sans, 8" fontscale 3.125 linewidth 4.1667 pointscale 3)";
            break;
        case Kind::svg:
            head << "svg size ";
            dots(96);
            head << R"( font "Helvetica, Arial, sans-serif, 8" fontscale 1.3333)"
                 << R"( linewidth 1.3333 background "white")";
            break;
        case Kind::pdf:
            head << "pdfcairo size 8.5cm, " << std::round(height / 72 * 25.4) / 10
                 << R"(cm font "Sans, 8" fontscale 0.75 linewidth 2 pointscale 0.7)";
            break;
    }
    head << " noenhanced" << (kind == Kind::text ? text_style : figure_style);
    write_styles(head, kind);
    return head.str();
}

// A file in memory, which closes itself.
struct MemoryFile {
    MemoryFile() : fd(::memfd_create("gnuplot", MFD_CLOEXEC)) {
        if (fd < 0) throw Failure("cannot start gnuplot" + system_reason());
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(fd); }
    int fd;
};

std::string left_in(const MemoryFile& file) {
    const off_t size = ::lseek(file.fd, 0, SEEK_END);
    std::string content(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
    if (size < 0 || ::pread(file.fd, content.data(), content.size(), 0) != size) {
        throw Failure("cannot read what gnuplot drew" + system_reason());
    }
    return content;
}

constexpr int not_found = 127;  // as a shell has it
constexpr int not_started = 126;

// Starts gnuplot with these standard streams, without the user's settings. Returns its number; it
// ends with `not_found`, or with `not_started` and a reason among `errors`, if it cannot start. In
// a process group of its own, for it may hang at a Ctrl-C; instead, it does not outlive us.
pid_t start_gnuplot(const MemoryFile& input, const MemoryFile& output, const MemoryFile& errors) {
    std::vector<std::string> words{"gnuplot", "-d", "LC_ALL=C.UTF-8"};
    for (const std::string name : {"PATH", "LD_LIBRARY_PATH"}) {
        const char* value = std::getenv(name.c_str());
        if (value != nullptr) words.push_back(name + "=" + value);
    }
    std::vector<char*> pointers(words.size() + 2, nullptr);  // two words, null, the others, null
    for (std::size_t i = 0; i < words.size(); ++i) pointers[i < 2 ? i : i + 1] = words[i].data();
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid < 0) throw Failure("cannot start gnuplot" + system_reason());
    if (pid > 0) return pid;
    if (::prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && ::getppid() == parent && ::setpgid(0, 0) == 0 &&
        ::dup2(input.fd, STDIN_FILENO) >= 0 && ::dup2(output.fd, STDOUT_FILENO) >= 0 &&
        ::dup2(errors.fd, STDERR_FILENO) >= 0) {
        ::execvpe("gnuplot", pointers.data(), &pointers[3]);
    }
    const int error = errno;
    ::dprintf(errors.fd, "%s", std::strerror(error));
    ::_exit(error == ENOENT ? not_found : not_started);
}

// What gnuplot writes at these commands.
std::string output_of(std::string_view commands) {
    const MemoryFile input, output, errors;
    const auto size = static_cast<ssize_t>(commands.size());
    if (::pwrite(input.fd, commands.data(), commands.size(), 0) != size) {
        throw Failure("cannot start gnuplot" + system_reason());
    }
    const pid_t pid = start_gnuplot(input, output, errors);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) throw Failure("cannot wait for gnuplot" + system_reason());
    }
    std::string picture = left_in(output);
    if (status == 0 && !picture.empty()) return picture;
    const int ended = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
    if (ended == not_found) {
        throw Failure("gnuplot is missing (Debian: apt-get install gnuplot-nox)");
    }
    std::istringstream words(left_in(errors));
    std::string what = ended == not_started ? "cannot start gnuplot" : "gnuplot failed";
    const char* before = ": ";
    for (std::string word; words >> word; before = " ") what += before + word;
    throw Failure(what);
}

void replace_all(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
}

// Without the form feed that it begins with, the blanks at the ends of lines, and the empty lines
// around.
std::string tidy(const std::string& text) {
    std::istringstream lines(text);
    std::string tidied;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('\f')) line.erase(0, 1);
        line.erase(line.find_last_not_of(' ') + 1);
        if (!tidied.empty() || !line.empty()) tidied += line + '\n';
    }
    while (tidied.ends_with("\n\n")) tidied.pop_back();
    return tidied;
}

}  // namespace

// All but letters and blanks are escaped, so that nothing in the text can end the string or be a
// command; digits too, since gnuplot would count them to the escape before them.
std::string gnuplot_string(std::string_view text) {
    std::string string = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalpha(byte) != 0 || c == ' ' || byte >= 0x80) {
            string += c;
        } else {
            string += '\\';
            for (const int shift : {6, 3, 0}) {
                string += static_cast<char>('0' + (byte >> shift & 7));
            }
        }
    }
    return string + '"';
}

std::string drawn(Kind kind, double height, std::string_view script) {
    std::string picture = output_of(head_of(kind, height).append(script));
    if (kind == Kind::text) return tidy(picture);
    if (kind == Kind::svg) replace_all(picture, "]]>", "]]&gt;");
    if (kind == Kind::pdf) {  // without the time of drawing
        const std::size_t date = picture.rfind("/CreationDate (");
        const std::size_t end = picture.find(')', date);
        if (end != std::string::npos) picture.replace(date, end + 1 - date, end + 1 - date, ' ');
    }
    return picture;
}

}  // namespace dorvek::tools
