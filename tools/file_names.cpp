#include "file_names.hpp"

#include <cstddef>
#include <filesystem>
#include <set>

#include "failure.hpp"

namespace dorvek::tools {

Template read_template(std::string_view text) {
    Template read;
    for (std::size_t open = 0; (open = text.find('{')) != std::string_view::npos;) {
        const std::size_t close = text.find('}', open);
        if (close == std::string_view::npos) throw WrongCall("--name: a brace is not closed");
        read.texts.emplace_back(text.substr(0, open));
        read.names.emplace_back(text.substr(open + 1, close - open - 1));
        text.remove_prefix(close + 1);
    }
    read.texts.emplace_back(text);
    if (read.names.empty()) throw WrongCall("--name: nothing stands in braces");
    return read;
}

// With the first place that fits the text behind a name, most is left for the others; the text
// behind the last one has to reach the end.
std::optional<Row> cells_of(const Template& pattern, const std::string& file) {
    const std::string whole = std::filesystem::path(file).filename().string();
    std::string_view name = whole;
    if (!name.starts_with(pattern.texts[0])) return {};
    name.remove_prefix(pattern.texts[0].size());
    Row cells;
    for (std::size_t i = 1; i < pattern.texts.size(); ++i) {
        const std::string& behind = pattern.texts[i];
        constexpr std::size_t none = std::string_view::npos;
        const std::size_t length = i + 1 < pattern.texts.size() ? name.find(behind, 1)
                                   : name.ends_with(behind)     ? name.size() - behind.size()
                                                                : none;
        if (length == none || length == 0) return {};
        cells.emplace_back(name.substr(0, length));
        name.remove_prefix(length + behind.size());
    }
    return cells;
}

std::string without_suffix(const std::string& file) {
    return std::filesystem::path(file).replace_extension().string();
}

bool needs_suffixes(const std::vector<std::string>& files) {
    const std::set<std::string> names(files.begin(), files.end());
    std::set<std::string> stems;
    for (const std::string& name : names) stems.insert(without_suffix(name));
    return stems.size() < names.size();
}

}  // namespace dorvek::tools
