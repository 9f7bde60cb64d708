#include <TavaroCore/Errors/Excerpt.h>

#include <algorithm>

namespace tavaro {

std::string_view wholeCharacters(std::string_view text, std::size_t mostBytes) {
    auto const isWithinCharacter = [&](std::size_t at) {
        return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
    };
    auto end = std::min(mostBytes, text.size());
    while (end > 0 && end < text.size() && isWithinCharacter(end)) --end;
    return text.substr(0, end);
}

std::string excerpt(std::string_view text, std::size_t mostBytes) {
    std::string shown(wholeCharacters(text, mostBytes));
    auto const end = shown.size();
    std::ranges::replace_if(
        shown, [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
    return end < text.size() ? shown + "…" : shown;
}

}
