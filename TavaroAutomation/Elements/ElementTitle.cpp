#include <TavaroAutomation/Elements/Private/ElementTitle.h>

#include <algorithm>
#include <array>

namespace tavaro::atspi {

namespace {

bool isClassName(std::string_view name) {
    constexpr std::array<std::string_view, 4> libraries{"Gtk", "Adw", "Gd", "Editor"};
    return std::ranges::any_of(libraries, [&](std::string_view library) {
        return name.starts_with(library) && name.size() > library.size() && name[library.size()] >= 'A' &&
               name[library.size()] <= 'Z' && name.find(' ') == std::string_view::npos;
    });
}

std::string withoutMarkup(std::string_view text) {
    constexpr std::size_t longestTag = 200;
    if (!text.starts_with('<')) return std::string(text);
    std::string result;
    while (!text.empty()) {
        auto const end = text.front() == '<' ? text.substr(0, longestTag).find('>') : std::string_view::npos;
        if (end == std::string_view::npos) {
            result += text.front();
            text.remove_prefix(1);
        } else {
            result += ' ';
            text.remove_prefix(end + 1);
        }
    }
    return result;
}

std::string onOneLine(std::string_view text) {
    std::string result;
    for (char const c : text) {
        bool const isSpace = static_cast<unsigned char>(c) <= ' ';
        if (!isSpace)
            result += c;
        else if (!result.empty() && result.back() != ' ')
            result += ' ';
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

std::string readableTitle(std::string_view name, Toolkit toolkit) {
    auto title = onOneLine(withoutMarkup(name));
    if (toolkit == Toolkit::gtk4) title = isClassName(title) ? "" : saidOnce(title);
    return shortened(std::move(title));
}

}
