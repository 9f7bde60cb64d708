#pragma once

#include <TavaroCore/Style/BackgroundStyle.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// How the built-in backgrounds are grouped where they are chosen.
enum class BackgroundFamily { gradient, mesh, glow, aurora, solid };

constexpr std::array<std::string_view, 5> namesOf(BackgroundFamily) {
    return {"gradient", "mesh", "glow", "aurora", "solid"};
}

std::string_view title(BackgroundFamily family);

/// A built-in background.
struct BackgroundPreset {
    std::string id; // stays the same for ever
    std::string name;
    BackgroundStyle style;
    BackgroundFamily family = BackgroundFamily::gradient;

    static constexpr auto fields = std::tuple{
        field("id", &BackgroundPreset::id),
        field("name", &BackgroundPreset::name),
        field("style", &BackgroundPreset::style),
        field("family", &BackgroundPreset::family),
    };
    bool operator==(BackgroundPreset const&) const = default;

    /// Every preset, grouped by family. The seventh is the one that Auto Polish picks.
    static std::vector<BackgroundPreset> const& all();
    /// Null when there is none of that id.
    static BackgroundPreset const* withID(std::string_view id);
};
static_assert(listsEveryField<BackgroundPreset>);

}
