// Pictures of g(r): of the samples of a report around its window, or of a PDF file with the windows
// that are proposed.
#pragma once

#include <cmath>  // for NAN
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "input/window.hpp"
#include "layout.hpp"

namespace dorvek::tools {

// A sample: where its curve is found, and what a report says of its peak, which is marked if all of
// that is finite.
struct SampleCurve {
    std::int32_t number = 1;  // within the report
    std::filesystem::path file{};
    std::optional<std::int32_t>
        partials;  // of the file; if not said, it follows from the first line
    std::int32_t pdf = 0;
    std::string name{};
    std::string label{};  // of the partial; empty if it has none
    bool is_r2 = false;   // drawn as r^2 g
    float Rmea = NAN;
    float Rmod = NAN;
    float var = NAN;
};

struct CurvePicture {
    std::size_t number = 0;  // within the input
    bool is_report = true;
    std::vector<input::Window> windows;  // one of a report; all that are proposed for a PDF file
    std::vector<SampleCurve> samples;
};

// The picture of a PDF file, whose windows are those that find_peaks finds in g. Throws Failure, as
// page_of does, if there is no such curve.
[[nodiscard]] CurvePicture preview(const SampleCurve& sample);

// Loads the curves; what there is to say about a file is told once. The range of `look` is that of
// r. Throws Failure if there is nothing to draw.
[[nodiscard]] Page page_of(const CurvePicture& picture, const Look& look);

}  // namespace dorvek::tools
