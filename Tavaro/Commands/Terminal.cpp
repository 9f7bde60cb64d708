#include <Tavaro/Commands/Terminal.h>

#include <array>
#include <optional>
#include <unistd.h>

namespace tavaro::terminal {

namespace {

constexpr char32_t noCharacter = 0xFFFFFFFF;

/// The first character of UTF-8 and its length; of bytes that are none, `noCharacter` and 1.
struct Character {
    char32_t value = noCharacter;
    std::size_t bytes = 1;
};

Character first(std::string_view text) {
    auto const at = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    auto const lead = at(0);
    if (lead < 0x80) return {lead, 1};
    std::size_t const bytes = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes > text.size()) return {};
    char32_t value = lead & (0x7Fu >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        if ((at(i) & 0xC0) != 0x80) return {};
        value = value << 6 | (at(i) & 0x3Fu);
    }
    constexpr std::array<char32_t, 5> least{0, 0, 0x80, 0x800, 0x10000};
    bool const isSurrogate = value >= 0xD800 && value <= 0xDFFF;
    return value < least[bytes] || value > 0x10FFFF || isSurrogate ? Character{} : Character{value, bytes};
}

bool isActedOn(char32_t c) {
    bool const isControl = c < 0x20 || (c >= 0x7F && c <= 0x9F);
    bool const isDirection =
        c == 0x61C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
    bool const isBreak = c == 0x2028 || c == 0x2029;
    return isControl || isDirection || isBreak || c == noCharacter;
}

/// The text with `replacement(character)` for each that a terminal acts on; none leaves it.
template<class Replacement> std::string replaced(std::string_view text, Replacement const& replacement) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        auto const character = first(text.substr(at));
        auto const other = isActedOn(character.value) ? replacement(character.value) : std::nullopt;
        result += other ? *other : text.substr(at, character.bytes);
        at += character.bytes;
    }
    return result;
}

constexpr std::string_view mark = "�";

}

std::string harmless(std::string_view text) {
    return replaced(text, [](char32_t) { return std::optional(mark); });
}

std::string harmless(Lines const& lines) {
    return replaced(lines.text, [](char32_t c) { return c == '\n' || c == '\t' ? std::nullopt : std::optional(mark); });
}

void sayPieceOfJSON(std::string_view json) {
    auto const escaped = replaced(json, [](char32_t c) -> std::optional<std::string> {
        if (c == noCharacter) return std::string(mark);
        if (c == '\n' || c == '\t') return std::nullopt; // of the layout: in a text they are escaped already
        return fmt::format("\\u{:04x}", static_cast<unsigned>(c));
    });
    fmt::print(stdout, "{}", escaped);
}

void sayJSON(std::string_view json) {
    sayPieceOfJSON(json);
    fmt::print(stdout, "\n");
}

void sayPath(std::string const& path) {
    fmt::print(stdout, "{}\n", isatty(STDOUT_FILENO) == 1 ? harmless(path) : path);
}

}
