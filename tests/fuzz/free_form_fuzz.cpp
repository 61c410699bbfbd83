// Free-form input: the text is scanned, line after line, as one read of 21 reals of which 1, 2 or
// all are kept, and of as many integers.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <span>
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
        std::vector<char> line(rest.begin(), rest.end());
        line.push_back('\n');
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

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text{reinterpret_cast<const char*>(data), size};
    const auto all = read<float>(text, 21);
    for (const std::size_t count : {1U, 2U, 21U}) {
        const auto reals = read<float>(text, count, 21 - count);
        claim(reals.result == all.result &&
                  std::memcmp(reals.values.data(), all.values.data(), 4 * count) == 0,
              "values that are dropped are read like others");
        read<std::int32_t>(text, count);
    }
    return 0;
}
