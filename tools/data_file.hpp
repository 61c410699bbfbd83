// PDF files as the companions read them: what the dialogue would ask and say, without a terminal.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "failure.hpp"
#include "input/pdf_set.hpp"

namespace dorvek::tools {

// A file that cannot be read; the text says why, with the name and the line.
struct BadFile : Failure {
    using Failure::Failure;
};

// Reads a PDF file into `set`: with that many partials or, if it is not said, as many as its first
// line holds. A file that does not exist is not created. Returns what there is to say about the
// data: bins or partials left out, bins on more than one line, a grid that does not ascend or is
// not even. Throws BadFile.
std::vector<std::string> load_pdf(const std::string& name, std::optional<std::int32_t> partials,
                                  input::PdfSet& set);

// One partial of a set, whose columns it looks at.
struct Partial {
    std::span<const float> r;
    std::span<const float> g;
};

// The partial `number`, counted from 1, of a set that was read from the file `name`. Throws BadFile
// if there is none.
[[nodiscard]] Partial partial_of(const input::PdfSet& set, std::int32_t number,
                                 const std::string& name);

}  // namespace dorvek::tools
