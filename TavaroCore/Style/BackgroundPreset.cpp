#include <TavaroCore/Style/BackgroundPreset.h>

#include <algorithm>

namespace tavaro {

namespace {

using Family = BackgroundFamily;

BackgroundStyle linear(unsigned from, unsigned to, double angle) {
    return {BackgroundStyle::LinearGradient{{RGBAColor::rgb(from), RGBAColor::rgb(to)}, angle}};
}

BackgroundStyle radial(unsigned middle, unsigned rim, UnitPoint2 center) {
    return {BackgroundStyle::RadialGradient{{RGBAColor::rgb(middle), RGBAColor::rgb(rim)}, center}};
}

std::vector<RGBAColor> colours(std::initializer_list<unsigned> codes) {
    std::vector<RGBAColor> result;
    for (unsigned const code : codes) result.push_back(RGBAColor::rgb(code));
    return result;
}

/// Corners: top-left, top-right, bottom-left, bottom-right.
BackgroundStyle mesh(std::initializer_list<unsigned> corners, double seed, double speed = 0) {
    return {BackgroundStyle::Mesh{colours(corners), speed, seed}};
}

BackgroundStyle aurora(std::initializer_list<unsigned> bands, double speed, double seed) {
    return {BackgroundStyle::Aurora{colours(bands), speed, seed}};
}

BackgroundStyle solid(unsigned colour) { return {BackgroundStyle::Solid{RGBAColor::rgb(colour)}}; }

}

std::string_view title(BackgroundFamily family) {
    constexpr std::array<std::string_view, 5> titles{"Gradients", "Glows", "Meshes", "In Motion", "Solid Colours"};
    return titles[static_cast<std::size_t>(family)];
}

std::vector<BackgroundPreset> const& BackgroundPreset::all() {
    static std::vector<BackgroundPreset> const presets{
        {"midnight", "Midnight", linear(0x0F172A, 0x3B4A6B, 60), Family::gradient},
        {"ocean", "Ocean", linear(0x38BDF8, 0x1E3A8A, 60), Family::gradient},
        {"meadow", "Meadow", linear(0x6EE7B7, 0x0F766E, 50), Family::gradient},
        {"sunset", "Sunset", linear(0xFDBA74, 0xBE3A7A, 55), Family::gradient},
        {"graphite", "Graphite", radial(0x3A404D, 0x171A21, {0.5, 0.3}), Family::glow},
        {"blush", "Blush", radial(0xF9E4EC, 0xD3BCE6, {0.3, 0.2}), Family::glow},
        {"daybreak", "Daybreak", mesh({0x6E8BF5, 0xB79CF2, 0x8FC7F3, 0xF3B3C9}, 3), Family::mesh},
        {"lagoon", "Lagoon", mesh({0x0E7490, 0x5EEAD4, 0x1E3A8A, 0x38BDF8}, 5), Family::mesh},
        {"ember", "Ember", mesh({0x3B1027, 0x8C2F39, 0x1B1B2F, 0xE07A5F}, 8), Family::mesh},
        {"drift", "Drift", mesh({0x4338CA, 0x7C3AED, 0x0EA5E9, 0xDB2777}, 2, 4), Family::motion},
        {"northern-lights", "Northern Lights", aurora({0x0B132B, 0x1C7C6E, 0x5B4B9A}, 0.2, 1), Family::motion},
        {"ink", "Ink", solid(0x111318), Family::solid},
        {"paper", "Paper", solid(0xF4F4F1), Family::solid},
    };
    return presets;
}

BackgroundPreset const* BackgroundPreset::withID(std::string_view id) {
    auto const found =
        std::find_if(all().begin(), all().end(), [&](BackgroundPreset const& preset) { return preset.id == id; });
    return found == all().end() ? nullptr : &*found;
}

}
