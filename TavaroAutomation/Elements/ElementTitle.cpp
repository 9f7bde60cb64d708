#include <TavaroAutomation/Elements/Private/ElementTitle.h>

#include <algorithm>
#include <array>
#include <optional>

namespace tavaro::atspi {

namespace {

bool isClassName(std::string_view name) {
    constexpr std::array<std::string_view, 4> libraries{"Gtk", "Adw", "Gd", "Editor"};
    return std::ranges::any_of(libraries, [&](std::string_view library) {
        return name.starts_with(library) && name.size() > library.size() && name[library.size()] >= 'A' &&
               name[library.size()] <= 'Z' && name.find(' ') == std::string_view::npos;
    });
}

/// What a tag becomes: a space where it ends a line; nothing for what is no tag of rich text.
std::optional<std::string_view> insteadOf(std::string_view tag) {
    constexpr std::array<std::string_view, 8> blocks{"p", "br", "div", "html", "body", "center", "hr", "li"};
    constexpr std::array<std::string_view, 16> inlines{"b",   "i",   "u",   "s",    "a",    "qt",    "em",   "tt",
                                                       "big", "sub", "sup", "span", "font", "small", "code", "strong"};
    if (tag.starts_with('/')) tag.remove_prefix(1);
    auto const name = tag.substr(0, tag.find_first_of(" /"));
    if (std::ranges::find(blocks, name) != blocks.end()) return " ";
    return std::ranges::find(inlines, name) != inlines.end() ? std::optional<std::string_view>("") : std::nullopt;
}

std::string withoutMarkup(std::string_view text) {
    constexpr std::size_t longestTag = 200;
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        auto const end = text[at] == '<' ? text.substr(at, longestTag).find('>') : std::string_view::npos;
        auto const instead = end == std::string_view::npos ? std::nullopt : insteadOf(text.substr(at + 1, end - 1));
        result += instead ? *instead : text.substr(at, 1);
        at += instead ? end + 1 : 1;
    }
    return result;
}

/// How many bytes a space or a control character there has; 0 for any other.
std::size_t spaceAt(std::string_view text, std::size_t at) {
    auto const byte = [&](std::size_t place) {
        return place < text.size() ? static_cast<unsigned char>(text[place]) : 0U;
    };
    constexpr unsigned del = 0x7F, twoBytes = 0xC2, firstC1 = 0x80, noBreakSpace = 0xA0;
    if (byte(at) <= ' ' || byte(at) == del) return 1;
    return byte(at) == twoBytes && byte(at + 1) >= firstC1 && byte(at + 1) <= noBreakSpace ? 2 : 0;
}

std::string onOneLine(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        auto const space = spaceAt(text, at);
        if (space == 0)
            result += text[at];
        else if (!result.empty() && result.back() != ' ')
            result += ' ';
        at += std::max<std::size_t>(space, 1);
    }
    if (result.ends_with(' ')) result.pop_back();
    return result;
}

/// "7 7" is "7", "_Inform Inform" is "Inform".
std::string saidOnce(std::string const& name) {
    std::string bare = name;
    std::erase(bare, '_');
    auto const half = bare.size() / 2;
    bool const isTwice = bare.size() % 2 == 1 && bare[half] == ' ' && bare.substr(0, half) == bare.substr(half + 1);
    return isTwice ? bare.substr(0, half) : name;
}

std::string shortened(std::string text) {
    constexpr std::size_t most = 200;
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        bool const starts = (static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80U;
        if (starts && ++characters > most) return text.substr(0, i) + "…";
    }
    return text;
}

}

bool isBullet(std::string_view title) {
    constexpr std::array<std::string_view, 3> bullets{"•", "◦", "▪"};
    return std::ranges::find(bullets, title) != bullets.end();
}

std::string readableTitle(std::string_view name, Toolkit toolkit) {
    auto const& habits = habitsOf(toolkit);
    // Others have markup in descriptions alone.
    bool const isMarkup = habits.saysNamesInMarkup || name.starts_with('<');
    auto title = onOneLine(isMarkup ? withoutMarkup(name) : std::string(name));
    if (habits.namesByClass) title = isClassName(title) ? "" : saidOnce(title);
    return shortened(std::move(title));
}

}
