// Files without a name, and a terminal made of two of them: typed lines in, shown lines out.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <string_view>

#include "textio/terminal.hpp"

namespace dorvek::support {

// A file that holds `content` and is read from its beginning; -1 if there can be none.
inline int file_holding(std::string_view content) {
    const int fd = ::memfd_create("test", MFD_CLOEXEC);
    const auto size = static_cast<ssize_t>(content.size());
    return ::pwrite(fd, content.data(), content.size(), 0) == size ? fd : -1;
}

inline std::string content_of(int fd) {
    if (fd < 0) return {};
    std::string content(static_cast<std::size_t>(::lseek(fd, 0, SEEK_END)), '\0');
    if (::pread(fd, content.data(), content.size(), 0) < 0) return {};
    return content;
}

// Runs `body` on a terminal where `typed` is typed; returns what the terminal showed.
inline std::string play(std::string_view typed,
                        const std::function<void(textio::Terminal&)>& body) {
    textio::Terminal terminal;
    attach(terminal.in, file_holding(typed));
    terminal.out.fd = file_holding("");
    body(terminal);
    flush(terminal.out);
    std::string shown = content_of(terminal.out.fd);
    ::close(terminal.in.fd);
    ::close(terminal.out.fd);
    return shown;
}

}  // namespace dorvek::support
