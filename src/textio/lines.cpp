#include "textio/lines.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

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

// Makes the buffer hold `size` bytes or more; its first `kept` stay. If memory is short it
// fails, and input.error says so.
Status grow(Input& input, Buffer& buffer, std::size_t size, std::size_t kept) {
    if (size <= buffer.size) return Status::ok;
    std::unique_ptr<char[]> larger(new (std::nothrow) char[size]);
    if (larger == nullptr) {
        input.error = ENOMEM;
        return Status::cannot_read;
    }
    std::copy_n(buffer.bytes.get(), kept, larger.get());
    buffer = {.bytes = std::move(larger), .size = size};
    return Status::ok;
}

// The line without carriage returns and with blanks for tabs, in input.plain. Behind the longest
// field, columns only keep numbers apart, and one blank does that: so however wide the tabs are,
// the result is hardly longer than the line.
Status drop_controls(Input& input, std::string_view& line) {
    if (grow(input, input.plain, line.size() + longest_field, 0) != Status::ok) {
        return Status::cannot_read;
    }
    char* const plain = input.plain.bytes.get();
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
    line = {plain, column};
    return Status::ok;
}

bool contains(std::string_view text, char c) {
    return std::memchr(text.data(), c, text.size()) != nullptr;
}

// Reads more bytes behind those not yet taken, which move to the front of the block.
Status refill(Input& input) {
    if (input.begin > 0) {
        char* const bytes = input.block.bytes.get();
        std::copy(bytes + input.begin, bytes + input.end, bytes);
        input.end -= input.begin;
        input.begin = 0;
    }
    if (input.end == input.block.size) {
        const std::size_t size = std::max(2 * input.block.size, first_block);
        if (grow(input, input.block, size, input.end) != Status::ok) return Status::cannot_read;
    }
    char* const free = input.block.bytes.get() + input.end;
    ssize_t count = 0;
    do {
        count = ::read(input.fd, free, input.block.size - input.end);
    } while (count < 0 && may_retry(input.fd, POLLIN));
    if (count < 0) {
        input.error = errno;
        return Status::cannot_read;
    }
    const std::string_view read(free, static_cast<std::size_t>(count));
    input.end += read.size();
    input.has_controls = input.has_controls || contains(read, '\t') || contains(read, '\r');
    return count == 0 ? Status::end_of_input : Status::ok;
}

// Takes as many bytes, which have been read, as a line.
Status take_bytes(Input& input, std::size_t count, std::string_view& line) {
    line = {input.block.bytes.get() + input.begin, count};
    input.previous = input.begin;
    input.begin += count;
    const bool rewrite =
        input.tab != 0 && input.has_controls && (contains(line, '\t') || contains(line, '\r'));
    if (rewrite && drop_controls(input, line) != Status::ok) return Status::cannot_read;
    ++input.line_number;
    return Status::ok;
}

// `scan` takes values from one line.
template <typename ScanOne>
Status read_lines(Input& input, ScanOne scan) {
    ScanState state;
    for (;;) {
        std::string_view line;
        if (const Status status = take_line(input, line); status != Status::ok) return status;
        input.continued = state.filled > 0;
        switch (scan(line, state)) {
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

std::string_view message_of(Status status) {
    constexpr std::array<std::string_view, 7> messages{// in the order of the statuses
                                                       "",
                                                       "Bad file specification",
                                                       "Cannot open file",
                                                       "Cannot read",
                                                       "Illegal character in numeric input",
                                                       "Attempt to read past end of file",
                                                       "Line longer than 16 MiB"};
    static_assert(longest_line == std::size_t{16} << 20U);
    return messages[static_cast<std::size_t>(status)];
}

std::string_view trimmed(std::string_view field) {
    const std::size_t first = field.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return field.substr(first, field.find_last_not_of(' ') - first + 1);
}

void attach(Input& input, int fd) {
    input.fd = fd;
    input.tab = tab_size();
    input.line_number = 0;
    input.continued = false;
    input.error = 0;
    input.begin = input.end = 0;
    input.has_controls = false;
}

Status open_file(Input& input, std::string_view name, int flags) {
    attach(input, -1);
    if (name.empty() || contains(name, '\0')) return Status::bad_name;
    std::array<char, PATH_MAX> path{};  // the system takes no longer ones
    if (name.size() < path.size()) {
        std::ranges::copy(name, path.begin());
        input.fd = ::open(path.data(), flags, 0666);
    } else {
        errno = ENAMETOOLONG;
    }
    if (input.fd >= 0) return Status::ok;
    input.error = errno;
    return Status::cannot_open;
}

Status take_line(Input& input, std::string_view& line) {
    std::size_t searched = 0;  // bytes from begin on that hold no line feed
    for (;;) {
        const char* const start = input.block.bytes.get() + input.begin;
        const std::size_t available = input.end - input.begin;
        const void* const feed = available == searched
                                     ? nullptr
                                     : std::memchr(start + searched, '\n', available - searched);
        const std::size_t length =
            feed == nullptr ? available
                            : static_cast<std::size_t>(static_cast<const char*>(feed) - start);
        if (input.limit != 0 && length > input.limit) return Status::line_too_long;
        if (feed != nullptr) return take_bytes(input, length + 1, line);
        searched = available;
        if (const Status status = refill(input); status != Status::ok) return status;
    }
}

Status take_last_line(Input& input, std::string_view& line) {
    if (input.begin == input.end) return Status::end_of_input;
    return take_bytes(input, input.end - input.begin, line);
}

void put_back_line(Input& input) {
    input.begin = input.previous;
    --input.line_number;
}

Status read_values(Input& input, std::span<float> targets, std::size_t surplus) {
    return read_lines(input, [&](std::string_view line, ScanState& state) {
        return scan_line(line, state, targets, surplus);
    });
}

Status read_values(Input& input, std::span<std::int32_t> targets) {
    return read_lines(input, [&](std::string_view line, ScanState& state) {
        return scan_line(line, state, targets);
    });
}

}  // namespace dorvek::textio
