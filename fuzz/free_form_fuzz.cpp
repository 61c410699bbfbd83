// Free-form input: the text is scanned, line after line, as one read of 1, 2 or 21 numbers of
// either kind. A number that stands alone on the first line is compared with the C library's.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "harness.hpp"
#include "textio/free_form.hpp"

namespace {

using dorvek::fuzz::claim;
using dorvek::fuzz::take_until;
using namespace dorvek::textio;

template <typename Number>
struct Read {
    Scan result = Scan::wants_more;
    std::vector<Number> values;
};

template <typename Number>
Read<Number> read(std::string_view text, std::size_t count) {
    const Number untouched = 12345;
    // On the heap, so that a store beyond the targets does not pass unseen.
    Read<Number> read{.values = std::vector<Number>(count, untouched)};
    ScanState state;
    while (read.result == Scan::wants_more && !text.empty()) {
        const std::string_view rest = take_until(text, "\n");
        const std::vector<char> line(rest.begin(), rest.end());
        const std::size_t before = state.filled;
        read.result = scan_line({line.data(), line.size()}, state, std::span(read.values));
        claim(state.filled >= before && state.filled <= count, "filled goes up to the last target");
        claim(read.result != Scan::wants_more || state.filled < count,
              "more is wanted for targets");
        claim(std::all_of(read.values.begin() + static_cast<std::ptrdiff_t>(state.filled),
                          read.values.end(), [&](Number value) { return value == untouched; }),
              "targets beyond those filled are untouched");
    }
    return read;
}

// An exponent in the C library's spelling.
std::string with_e(std::string_view token) {
    std::string spelled;
    for (const char c : token) {
        const bool exponent_sign = (c == '+' || c == '-') && !spelled.empty() &&
                                   spelled.back() != 'e' && spelled.back() != 'E';
        if (exponent_sign) spelled += 'e';
        spelled += std::strchr("DdQq", c) != nullptr && c != '\0' ? 'e' : c;
    }
    return spelled;
}

void compare_with_c(std::string_view token) {
    if (token.empty() || token.find_first_of(" ,/*") != std::string_view::npos) return;
    const std::string spelled = with_e(token);
    char* end = nullptr;
    if (const auto real = read<float>(token, 1); real.result == Scan::complete) {
        const float expected = std::strtof(spelled.c_str(), &end);
        claim(end == spelled.data() + spelled.size(), "the C library takes the real as well");
        claim(
            std::bit_cast<std::uint32_t>(real.values[0]) == std::bit_cast<std::uint32_t>(expected),
            "both read the same float");
    }
    if (const auto integer = read<std::int32_t>(token, 1); integer.result == Scan::complete) {
        claim(std::strtoll(spelled.c_str(), &end, 10) == integer.values[0],
              "both read the same integer");
        claim(end == spelled.data() + spelled.size(), "the C library takes the integer as well");
        claim(read<float>(token, 1).result == Scan::complete, "an integer is a real");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text{reinterpret_cast<const char*>(data), size};
    for (const std::size_t count : {1U, 2U, 21U}) {
        const auto reals = read<float>(text, count);
        const auto again = read<float>(text, count);
        claim(reals.result == again.result &&
                  std::memcmp(reals.values.data(), again.values.data(), 4 * count) == 0,
              "a second read gives the same");
        read<std::int32_t>(text, count);
    }
    compare_with_c(take_until(text, "\n"));
    return 0;
}
