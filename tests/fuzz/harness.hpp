// What the fuzz targets share: runs that end without ending the process, and files that exist only
// in memory, so that no typed name reaches the system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// Tries one input. The name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace dorvek::fuzz {

// Thrown where dorvek would report a run-time error and exit.
struct RunEnded {};

// What the files named "a" and "b" hold; the results file as opened last. Any other name is that
// of an empty file, "." a directory, and a name with a slash may not be opened.
struct Files {
    std::string_view a;
    std::string_view b;
    int results = -1;
};
extern Files files;

// Stops the fuzzer where a statement about the program does not hold.
void claim(bool holds, const char* statement);

// Cuts off and returns what stands before the first `mark`; `text` is left with what is behind it.
std::string_view take_until(std::string_view& text, std::string_view mark);

}  // namespace dorvek::fuzz
