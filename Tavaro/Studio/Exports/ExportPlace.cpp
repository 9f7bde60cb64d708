#include <Tavaro/Studio/Exports/ExportPlace.h>

#include <algorithm>
#include <array>

namespace tavaro {

namespace {

using Way = ExportPlace::Way;

constexpr std::array youtube{Way{"youtube-1080", "1080p"}, Way{"youtube-4k", "4K"}};
constexpr std::array posts{Way{"x", "X"}, Way{"linkedin", "LinkedIn, square"}, Way{"linkedin-45", "LinkedIn, 4:5"}};
constexpr std::array phones{Way{"tiktok", "TikTok"}, Way{"instagram", "Instagram Reels"},
                            Way{"split-vertical", "Camera above the screen"}};
constexpr std::array sites{Way{"web", "Small file"}, Way{"product-hunt", "Product Hunt, 4K"}};
constexpr std::array chats{Way{"gif", "GIF"}};
constexpr std::array programs{Way{"prores", "ProRes 422"}};

constexpr std::array places{
    ExportPlace{"youtube", "YouTube", "Sharp and smooth", "youtube", youtube},
    ExportPlace{"post", "A post", "X and LinkedIn", "share", posts},
    ExportPlace{"phone", "Phones", "TikTok, Reels, upright", "phone", phones},
    ExportPlace{"site", "A website", "Loads quickly", "globe2", sites},
    ExportPlace{"chat", "README or chat", "A looping GIF", "chat-dots", chats},
    ExportPlace{"program", "Editing program", "Loses nothing, very large", "film", programs},
};

}

std::span<ExportPlace const> ExportPlace::all() { return places; }

ExportPlace const* ExportPlace::withID(std::string_view id) {
    auto const* const found = std::ranges::find(places, id, &ExportPlace::id);
    return found == places.end() ? nullptr : found;
}

ExportPlace const* ExportPlace::ofPreset(std::string_view preset) {
    auto const* const found = std::ranges::find_if(places, [&](auto const& place) { return place.way(preset); });
    return found == places.end() ? nullptr : found;
}

ExportPlace::Way const* ExportPlace::way(std::string_view preset) const {
    auto const found = std::ranges::find(ways, preset, &Way::preset);
    return found == ways.end() ? nullptr : &*found;
}

}
