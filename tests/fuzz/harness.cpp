#include "harness.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "input/inpdf.hpp"
#include "textio/runtime_error.hpp"

// Takes the place of the routine in the library, which is then not linked.
void dorvek::textio::runtime_error(Output& terminal, const Place& /*place*/,
                                   std::string_view /*message*/, int /*system_error*/) {
    flush(terminal);
    throw fuzz::RunEnded{};
}

// The linker's --wrap=open leads every call of open here.
extern "C" int __real_open(const char* path, int flags, ...);   // NOLINT
extern "C" int __wrap_open(const char* path, int flags, ...) {  // NOLINT
    using namespace dorvek::fuzz;
    const std::string_view name = path;
    if (name.find('/') != std::string_view::npos) {
        errno = EACCES;
        return -1;
    }
    if (name == "." || name == "..") return __real_open("/", O_RDONLY | O_DIRECTORY);
    if (name == "a") return file_holding(files.a);
    if (name == "b") return file_holding(files.b);
    if (name == "dorvek.res") {
        if ((flags & O_TRUNC) == 0) return file_holding(content_of(files.results));
        if (files.results >= 0) ::close(files.results);
        files.results = file_holding("");
        return ::dup(files.results);
    }
    if ((flags & O_CREAT) != 0) return file_holding("");
    errno = ENOENT;
    return -1;
}

namespace dorvek::fuzz {

Files files;

int file_holding(std::string_view content) {
    const int fd = ::memfd_create("fuzz", MFD_CLOEXEC);
    claim(fd >= 0, "there is a descriptor left");
    if (!content.empty()) {
        const ssize_t written = ::pwrite(fd, content.data(), content.size(), 0);
        claim(written == static_cast<ssize_t>(content.size()), "a file takes its content");
    }
    return fd;
}

std::string content_of(int fd) {
    if (fd < 0) return {};
    std::string content(static_cast<std::size_t>(::lseek(fd, 0, SEEK_END)), '\0');
    const ssize_t read = ::pread(fd, content.data(), content.size(), 0);
    claim(read == static_cast<ssize_t>(content.size()), "a file gives its content back");
    return content;
}

void wipe(input::PdfSet& set) {
    // A bin takes at least one byte of a file, and resampling takes no more than the other has.
    const std::size_t bins = std::max(files.a.size(), files.b.size());
    set.used = static_cast<std::int32_t>(std::min<std::size_t>(bins, input::maxbin));
    set.npdfs = input::maxpdf;
    clear(set);
    set.npdfs = 0;
}

void claim(bool holds, const char* statement) {
    if (holds) return;
    std::fprintf(stderr, "not so: %s\n", statement);
    std::abort();
}

std::string_view take_until(std::string_view& text, std::string_view mark) {
    const std::string_view part = text.substr(0, text.find(mark));
    text.remove_prefix(std::min(text.size(), part.size() + mark.size()));
    return part;
}

}  // namespace dorvek::fuzz
