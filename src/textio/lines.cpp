#include "textio/lines.hpp"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "textio/free_form.hpp"
#include "textio/retry.hpp"

namespace dorvek::textio {
namespace {

constexpr std::size_t first_block = 16384;

// Columns between tab stops: the environment's TABSIZE if that is a positive number, else 8.
std::size_t tab_size() {
    const char* text = std::getenv("TABSIZE");
    std::size_t size = 0;
    for (; text != nullptr && *text >= '0' && *text <= '9'; ++text) {
        size = std::min(size * 10 + static_cast<std::size_t>(*text - '0'), longest_field);
    }
    return text != nullptr && *text == '\0' && size > 0 ? size : 8;
}

// The line without carriage returns and with blanks for tabs, in input.plain. Behind the longest
// field, columns only keep numbers apart, and one blank does that: so however wide the tabs are,
// the result is hardly longer than the line.
std::string_view without_controls(Input& input, std::string_view line) {
    input.plain.resize(std::max(input.plain.size(), line.size() + longest_field));
    char* const plain = input.plain.data();
    std::size_t column = 0;
    for (const char c : line) {
        if (c == '\t') {
            const std::size_t stop =
                std::min(column - column % input.tab + input.tab, longest_field);
            do plain[column++] = ' ';
            while (column < stop);
        } else if (c != '\r') {
            plain[column++] = c;
        }
    }
    return {plain, column};
}

bool contains(std::string_view text, char c) {
    return std::memchr(text.data(), c, text.size()) != nullptr;
}

// Reads more bytes behind those not yet taken, which move to the front of the block.
Status refill(Input& input) {
    std::copy(input.block.begin() + static_cast<std::ptrdiff_t>(input.begin),
              input.block.begin() + static_cast<std::ptrdiff_t>(input.end), input.block.begin());
    input.end -= input.begin;
    input.begin = 0;
    if (input.end == input.block.size()) {
        input.block.resize(std::max(2 * input.block.size(), first_block));
    }
    char* const free = input.block.data() + input.end;
    ssize_t count = 0;
    do {
        count = ::read(input.fd, free, input.block.size() - input.end);
    } while (count < 0 && may_retry(input.fd, POLLIN));
    if (count < 0) {
        input.error = errno;
        return Status::failed;
    }
    input.end += static_cast<std::size_t>(count);
    return count == 0 ? Status::end_of_input : Status::ok;
}

template <typename Number>
Status read_all(Input& input, std::span<Number> targets) {
    ScanState state;
    for (;;) {
        std::string_view line;
        if (const Status status = take_line(input, line); status != Status::ok) return status;
        switch (scan_line(line, state, targets)) {
            case Scan::complete:
                return Status::ok;
            case Scan::illegal_character:
                return Status::illegal_character;
            case Scan::wants_more:
                break;
        }
    }
}

}  // namespace

void attach(Input& input, int fd) {
    input.fd = fd;
    input.tab = tab_size();
    input.line_number = 0;
    input.error = 0;
    input.begin = input.end = 0;
}

Status take_line(Input& input, std::string_view& line) {
    std::size_t searched = 0;  // bytes from begin on that hold no line feed
    for (;;) {
        const char* const start = input.block.data() + input.begin;
        const std::size_t available = input.end - input.begin;
        const void* const feed = available == searched
                                     ? nullptr
                                     : std::memchr(start + searched, '\n', available - searched);
        if (feed != nullptr) {
            const auto length = static_cast<std::size_t>(static_cast<const char*>(feed) - start);
            line = {start, length};
            input.begin += length + 1;
            ++input.line_number;
            if (contains(line, '\t') || contains(line, '\r')) line = without_controls(input, line);
            return Status::ok;
        }
        searched = available;
        if (const Status status = refill(input); status != Status::ok) return status;
    }
}

Status read_values(Input& input, std::span<float> targets) {
    return read_all(input, targets);
}

Status read_values(Input& input, std::span<std::int32_t> targets) {
    return read_all(input, targets);
}

}  // namespace dorvek::textio
