// Free-form input: the text is scanned, line after line, as one read of 21 reals of which 1, 2 or
// all are kept, and of as many integers. A number that stands alone on the first line is compared
// with what the C library makes of it.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
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
Read<Number> read(std::string_view text, std::size_t count, std::size_t surplus = 0) {
    const Number untouched = 12345;
    // On the heap, so that a store beyond the targets does not pass unseen.
    Read<Number> read{.values = std::vector<Number>(count, untouched)};
    ScanState state;
    while (read.result == Scan::wants_more && !text.empty()) {
        const std::string_view rest = take_until(text, "\n");
        const std::vector<char> line(rest.begin(), rest.end());
        const std::size_t before = state.filled;
        if constexpr (std::is_same_v<Number, float>) {
            read.result = scan_line({line.data(), line.size()}, state, read.values, surplus);
        } else {
            read.result = scan_line({line.data(), line.size()}, state, read.values);
        }
        const std::size_t wanted = count + surplus;
        claim(state.filled >= before && state.filled <= wanted, "filled goes up to the last");
        claim(read.result != Scan::wants_more || state.filled < wanted, "more is wanted if due");
        const auto filled = static_cast<std::ptrdiff_t>(std::min(state.filled, count));
        claim(std::all_of(read.values.begin() + filled, read.values.end(),
                          [&](Number value) { return value == untouched; }),
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
    const bool spelled_right =
        token.find_first_not_of("0123456789+-.eEdDqQ") == std::string_view::npos;
    const std::string spelled = with_e(token);
    const char* const all = spelled.data() + spelled.size();
    char* end = nullptr;

    const float real = std::strtof(spelled.c_str(), &end);
    const bool is_real = spelled_right && end == all;
    const auto real_read = read<float>(token, 1);
    claim((real_read.result == Scan::complete) == is_real, "both take it for a real or not");
    claim(!is_real || std::bit_cast<std::uint32_t>(real_read.values[0]) ==
                          std::bit_cast<std::uint32_t>(real),
          "both read the same float");

    const long long integer = std::strtoll(spelled.c_str(), &end, 10);
    const bool is_integer =
        spelled_right && end == all && integer == static_cast<std::int32_t>(integer);
    const auto integer_read = read<std::int32_t>(token, 1);
    claim((integer_read.result == Scan::complete) == is_integer, "and for an integer or not");
    claim(!is_integer || integer_read.values[0] == integer, "both read the same integer");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text{reinterpret_cast<const char*>(data), size};
    const auto all = read<float>(text, 21);
    for (const std::size_t count : {1U, 2U, 21U}) {
        const auto reals = read<float>(text, count, 21 - count);
        claim(reals.result == all.result &&
                  std::memcmp(reals.values.data(), all.values.data(), 4 * count) == 0,
              "values that are dropped are read like others");
        read<std::int32_t>(text, count);
    }
    compare_with_c(take_until(text, "\n"));
    return 0;
}
