#include "textio/runtime_error.hpp"

#include <unistd.h>

#include <array>
#include <charconv>
#include <cstdlib>
#include <cstring>

namespace dorvek::textio {

void runtime_error(Output& terminal, const Place& place, std::string_view message,
                   int system_error) {
    flush(terminal);
    Output report{.fd = STDERR_FILENO};
    write_text(report, "? Run-time error");
    put(report, "? ");
    put(report, message);
    if (system_error != 0) {
        put(report, ": ");
        put(report, std::strerror(system_error));
    }
    put(report, "\n? ");
    put(report, place.statement);
    put(report, ", unit ");
    put(report, place.unit);
    if (!place.file.empty()) {
        put(report, ", file \"");
        put(report, place.file);
        put(report, "\"");
    }
    if (place.line > 0) {
        std::array<char, 20> digits{};
        const char* const end =
            std::to_chars(digits.data(), digits.data() + digits.size(), place.line).ptr;
        put(report, ", line ");
        put(report, {digits.data(), static_cast<std::size_t>(end - digits.data())});
    }
    put(report, "\n");
    flush(report);
    std::exit(255);
}

}  // namespace dorvek::textio
