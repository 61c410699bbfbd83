// A terminal for tests: typed lines in, shown lines out.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <string_view>

#include "textio/terminal.hpp"

namespace dorvek::support {

// A file without a name that holds `content` and is read from its beginning.
inline int file_holding(std::string_view content) {
    const int fd = ::memfd_create("test", 0);
    if (::write(fd, content.data(), content.size()) < 0) return -1;
    ::lseek(fd, 0, SEEK_SET);
    return fd;
}

inline std::string content_of(int fd) {
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
