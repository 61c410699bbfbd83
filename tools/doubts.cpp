#include "doubts.hpp"

#include <cstddef>
#include <string_view>

namespace dorvek::tools {

void add_doubts(std::span<const input::PdfSet> sets, std::span<const std::int32_t> /*ipdf*/,
                const driver::Analysis& analysis, std::vector<std::string>& said) {
    for (std::size_t i = 0; i < analysis.messages.count; ++i) {
        const std::string_view text = analysis.messages.text[i];
        said.push_back(text == " " ? "pause without a message" : "pause: " + std::string(text));
    }
    if (sets.size() == 2 && analysis.comparison.distribution.doff <= 0.0f) {
        said.emplace_back("the chi-square test has no degrees of freedom");
    }
}

}  // namespace dorvek::tools
