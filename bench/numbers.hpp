// The least that reading numbers can cost.
#pragma once

#include <charconv>

namespace dorvek::bench {

// Puts the numbers of a text into `values`: a bare loop of std::from_chars and nothing else, no
// lines, no checks, no null values. Returns behind the last one.
inline float* take_numbers(const char* at, const char* end, float* values) {
    for (;;) {
        while (at != end && (*at == ' ' || *at == '\n')) ++at;
        if (at == end) return values;
        at = std::from_chars(at, end, *values++).ptr;
    }
}

}  // namespace dorvek::bench
