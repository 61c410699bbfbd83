#include "text.hpp"

#include <algorithm>

namespace dorvek::tools {
namespace {

// The length of the character of UTF-8 that `text` begins with: 0 if it begins with none, -1 if it
// ends within one.
int character_length(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = byte(0);
    if (first < 0x80) return 1;
    if (first < 0xC2 || first > 0xF4) return 0;
    const int length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    // The second byte excludes forms too long, surrogates, and what lies beyond the last character.
    const unsigned low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    for (int i = 1; i < length; ++i) {
        if (static_cast<std::size_t>(i) == text.size()) return -1;
        const unsigned next = byte(static_cast<std::size_t>(i));
        if (next < (i == 1 ? low : 0x80) || next > (i == 1 ? high : 0xBF)) return 0;
    }
    return length;
}

constexpr std::string_view gap = "...";

// How many bytes all texts begin with, up to the end of a word.
std::size_t shared_bytes(const std::vector<std::string>& texts) {
    std::size_t count = texts[0].size();
    for (const std::string& text : texts) {
        count = std::min(count, text.size());
        const auto end = texts[0].begin() + static_cast<std::ptrdiff_t>(count);
        count = static_cast<std::size_t>(std::mismatch(texts[0].begin(), end, text.begin()).first -
                                         texts[0].begin());
    }
    const std::size_t last = texts[0].substr(0, count).find_last_of(" ,_/");
    return last == std::string::npos ? 0 : last + 1;
}

// Without the words that all texts begin with.
std::vector<std::string> without_beginning(std::vector<std::string> texts) {
    const std::size_t count = texts.size() > 1 ? shared_bytes(texts) : 0;
    if (count <= gap.size()) return texts;
    for (std::string& text : texts) text.replace(0, count, gap);
    return texts;
}

std::vector<std::string> backwards(std::vector<std::string> texts) {
    for (std::string& text : texts) std::ranges::reverse(text);
    return texts;
}

}  // namespace

std::string input_name(const std::string& named) {
    return named == "-" ? "standard input" : named;
}

std::string valid_utf8(std::string_view text) {
    const auto is_ascii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (std::ranges::all_of(text, is_ascii)) return std::string(text);
    std::string valid;
    while (!text.empty()) {
        const int length = character_length(text);
        if (length < 0) break;
        valid += length == 0 ? "\uFFFD" : text.substr(0, static_cast<std::size_t>(length));
        text.remove_prefix(static_cast<std::size_t>(std::max(length, 1)));
    }
    return valid;
}

std::string printable(std::string_view text) {
    std::string clean;
    const std::string valid = valid_utf8(text);
    for (const std::string_view c : characters_of(valid)) {
        const bool good = c.size() == 1 ? c >= " " && c != "\x7F"
                          : c.size() == 2
                              ? c >= "\u00A0"
                              : (c < "\u2028" || c >= "\u202F") && c != "\uFFFE" && c != "\uFFFF";
        clean += good ? c : "\uFFFD";
    }
    return clean;
}

std::vector<std::string_view> characters_of(std::string_view valid_text) {
    std::vector<std::string_view> characters;
    while (!valid_text.empty()) {
        std::size_t length = 1;
        while (length < valid_text.size() && (valid_text[length] & '\xC0') == '\x80') ++length;
        characters.push_back(valid_text.substr(0, length));
        valid_text.remove_prefix(length);
    }
    return characters;
}

std::size_t width_of(std::string_view valid_text) {
    std::size_t width = 0;
    for (const std::string_view c : characters_of(valid_text)) width += c.size() > 2 ? 2U : 1U;
    return width;
}

std::string shortened(const std::string& valid_text, std::size_t width) {
    std::size_t taken = width_of(valid_text);
    if (taken <= width) return valid_text;
    const std::vector<std::string_view> characters = characters_of(valid_text);
    std::size_t from = characters.size() / 2;
    std::size_t to = from;
    while (taken + gap.size() > width) {  // characters are wide or not, of an odd or even number
        if (from > 0) taken -= width_of(characters[--from]);
        if (to < characters.size()) taken -= width_of(characters[to++]);
    }
    std::string text;
    for (std::size_t c = 0; c < from; ++c) text += characters[c];
    text += gap;
    for (std::size_t c = to; c < characters.size(); ++c) text += characters[c];
    return text;
}

std::vector<std::string> without_shared_words(const std::vector<std::string>& valid_texts) {
    return backwards(without_beginning(backwards(without_beginning(valid_texts))));
}

}  // namespace dorvek::tools
