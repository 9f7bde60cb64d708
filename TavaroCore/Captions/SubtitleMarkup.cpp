#include <TavaroCore/Captions/Private/SubtitleMarkup.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <unicode/utf8.h>
#include <utility>

namespace tavaro {

namespace {

void appendCharacter(UChar32 value, std::string& text) {
    std::array<char, U8_MAX_LENGTH> bytes;
    std::int32_t size = 0;
    UBool isError = false;
    U8_APPEND(bytes.data(), size, U8_MAX_LENGTH, value, isError);
    if (!isError) text.append(bytes.data(), static_cast<std::size_t>(size));
}

/// The character that "&name;" stands for.
std::optional<UChar32> characterNamed(std::string_view name) {
    constexpr std::array<std::pair<std::string_view, UChar32>, 8> names{{{"amp", '&'},
                                                                         {"lt", '<'},
                                                                         {"gt", '>'},
                                                                         {"quot", '"'},
                                                                         {"apos", '\''},
                                                                         {"nbsp", 0xA0},
                                                                         {"lrm", 0x200E},
                                                                         {"rlm", 0x200F}}};
    for (auto const& [known, value] : names) {
        if (name == known) return value;
    }
    if (!name.starts_with('#')) return std::nullopt;
    name.remove_prefix(1);
    bool const isHex = name.starts_with('x') || name.starts_with('X');
    if (isHex) name.remove_prefix(1);
    UChar32 value = 0;
    auto const read = std::from_chars(name.data(), name.data() + name.size(), value, isHex ? 16 : 10);
    bool const isWhole = !name.empty() && read.ec == std::errc{} && read.ptr == name.data() + name.size();
    return isWhole && value >= 0x20 && value != 0x7F ? std::optional(value) : std::nullopt;
}

bool isSubRipTag(std::string_view tag) {
    if (tag.starts_with('/')) tag.remove_prefix(1);
    auto const name = tag.substr(0, tag.find_first_of(" \t"));
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower == "i" || lower == "b" || lower == "u" || lower == "s" || lower == "font";
}

}

std::string withoutSubRipMarkup(std::string_view line) {
    constexpr std::size_t longestTag = 256;
    std::string text;
    while (!line.empty()) {
        bool const isCode = line.starts_with("{\\"), isTag = line.starts_with('<');
        auto const end = isCode || isTag ? line.substr(0, longestTag).find(isCode ? '}' : '>') : std::string_view::npos;
        if (end != std::string_view::npos && (isCode || isSubRipTag(line.substr(1, end - 1)))) {
            line.remove_prefix(end + 1);
            continue;
        }
        text += line.front();
        line.remove_prefix(1);
    }
    return text;
}

std::string withoutWebVTTMarkup(std::string_view line) {
    constexpr std::size_t longestReference = 12;
    std::string text;
    while (!line.empty()) {
        if (line.starts_with('<')) {
            auto const end = line.find('>');
            if (end == std::string_view::npos) break; // as every player reads it: the tag ends with the line
            line.remove_prefix(end + 1);
            continue;
        }
        if (line.starts_with('&')) {
            auto const end = line.substr(0, longestReference).find(';');
            auto const named = end == std::string_view::npos ? std::nullopt : characterNamed(line.substr(1, end - 1));
            if (named) {
                appendCharacter(*named, text);
                line.remove_prefix(end + 1);
                continue;
            }
        }
        text += line.front();
        line.remove_prefix(1);
    }
    return text;
}

}
