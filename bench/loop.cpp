// loop TIMES FILE...: reads the numbers of each file so many times into fixed storage by a bare
// loop of std::from_chars and does nothing else: no lines, no checks, no null values. They are
// floats or, with -DREAL=double, doubles.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdlib>

#ifndef REAL
#define REAL float
#endif

namespace {

std::array<char, 16384> text;
std::array<REAL, 2 * 210000> values;  // of two files: 10000 bins, 1 + 2 * 10 numbers each

// Puts the numbers of a text into `next`. Returns behind the last one.
REAL* take_numbers(const char* at, const char* end, REAL* next) {
    for (;;) {
        while (at != end && (*at == ' ' || *at == '\n')) ++at;
        if (at == end) return next;
        at = std::from_chars(at, end, *next++).ptr;
    }
}

}  // namespace

int main(int argc, char** argv) {
    REAL* next = values.data();
    const int files = argc - 2;
    for (int i = 0; i < files * std::atoi(argv[1]); ++i) {
        const int fd = ::open(argv[2 + i % files], O_RDONLY);
        char* end = text.data();
        for (;;) {
            const auto room = static_cast<std::size_t>(text.data() + text.size() - end);
            const ssize_t count = ::read(fd, end, room);
            if (count <= 0) break;
            end += count;
            char* stop = end;  // behind the last whole line
            while (stop != text.data() && stop[-1] != '\n') --stop;
            if (values.end() - next < 8192) next = values.data();
            next = take_numbers(text.data(), stop, next);
            end = std::copy(stop, end, text.data());
        }
        ::close(fd);
    }
    return next == values.data() ? 1 : 0;
}
