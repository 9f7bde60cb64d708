#pragma once

#include <TavaroCore/Style/BackgroundStyle.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// How the built-in backgrounds are grouped where they are chosen.
enum class BackgroundFamily { gradient, glow, mesh, motion, solid };

constexpr std::array<std::string_view, 5> namesOf(BackgroundFamily) {
    return {"gradient", "glow", "mesh", "motion", "solid"};
}

std::string_view title(BackgroundFamily family);

/// A built-in background.
struct BackgroundPreset {
    std::string id; // stays the same for ever
    std::string name;
    BackgroundStyle style;
    BackgroundFamily family = BackgroundFamily::gradient;

    bool operator==(BackgroundPreset const&) const = default;

    /// Every preset, grouped by family. The seventh is the one that Auto Polish picks.
    static std::vector<BackgroundPreset> const& all();
    /// Null when there is none of that id.
    static BackgroundPreset const* withID(std::string_view id);
};

}
