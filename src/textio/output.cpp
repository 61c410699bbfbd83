#include "textio/output.hpp"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <variant>

#include "textio/format.hpp"
#include "textio/retry.hpp"

namespace dorvek::textio {

void write_line(Output& output, std::initializer_list<Item> items) {
    bool after_number = false;
    put(output, " ");
    for (const Item& item : items) {
        const bool number = !std::holds_alternative<std::string_view>(item);
        if (after_number && !number) put(output, " ");
        put_item(output, item);
        after_number = number;
    }
    put(output, "\n");
}

void write_text(Output& output, std::string_view text) {
    put(output, text);
    put(output, "\n");
}

void put(Output& output, std::string_view text) {
    while (!text.empty()) {
        if (output.used == output.buffer.size()) flush(output);
        const std::size_t room = output.buffer.size() - output.used;
        const std::string_view part = text.substr(0, room);
        std::copy(part.begin(), part.end(), output.buffer.data() + output.used);
        output.used += part.size();
        text.remove_prefix(part.size());
    }
}

void put_item(Output& output, const Item& item) {
    NumberText text{};
    if (const auto* words = std::get_if<std::string_view>(&item)) {
        put(output, *words);
    } else if (const auto* integer = std::get_if<std::int32_t>(&item)) {
        put(output, format_integer(*integer, text));
    } else {
        put(output, format_real(*std::get_if<float>(&item), text));
    }
}

bool flush(Output& output) {
    std::size_t written = 0;
    while (output.error == 0 && written < output.used) {
        const ssize_t count =
            ::write(output.fd, output.buffer.data() + written, output.used - written);
        if (count >= 0) {
            written += static_cast<std::size_t>(count);
        } else if (!may_retry(output.fd, POLLOUT)) {
            output.error = errno;
        }
    }
    output.used = 0;
    return output.error == 0;
}

}  // namespace dorvek::textio
