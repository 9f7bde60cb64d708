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
    constexpr std::array<std::string_view, 5> titles{"Gradients", "Meshes", "Glows", "Auroras", "Solid Colours"};
    return titles[static_cast<std::size_t>(family)];
}

std::vector<BackgroundPreset> const& BackgroundPreset::all() {
    static std::vector<BackgroundPreset> const presets{
        {"midnight", "Midnight", linear(0x0F172A, 0x3B4A6B, 60), Family::gradient},
        {"ocean", "Ocean", linear(0x38BDF8, 0x1E3A8A, 60), Family::gradient},
        {"meadow", "Meadow", linear(0x6EE7B7, 0x0F766E, 50), Family::gradient},
        {"sunset", "Sunset", linear(0xFDBA74, 0xBE3A7A, 55), Family::gradient},
        {"lavender", "Lavender", linear(0xDDD6FE, 0x8B7BD8, 50), Family::gradient},
        {"steel", "Steel", linear(0xCBD5E1, 0x64748B, 65), Family::gradient},
        {"daybreak", "Daybreak", mesh({0x6E8BF5, 0xB79CF2, 0x8FC7F3, 0xF3B3C9}, 3), Family::mesh},
        {"lagoon", "Lagoon", mesh({0x0E7490, 0x5EEAD4, 0x1E3A8A, 0x38BDF8}, 5), Family::mesh},
        {"ember", "Ember", mesh({0x3B1027, 0x8C2F39, 0x1B1B2F, 0xE07A5F}, 8), Family::mesh},
        {"orchid", "Orchid", mesh({0x5B21B6, 0xC084FC, 0x312E81, 0xF0ABFC}, 11), Family::mesh},
        {"sage", "Sage", mesh({0xD9E4D4, 0xA8C3A0, 0xEFE9DB, 0x7E9F85}, 4), Family::mesh},
        {"dune", "Dune", mesh({0xF3DFC1, 0xDDBEA8, 0xF7EDE2, 0xC98F6B}, 6), Family::mesh},
        {"drift", "Drift", mesh({0x4338CA, 0x7C3AED, 0x0EA5E9, 0xDB2777}, 2, 4), Family::mesh},
        {"graphite", "Graphite", radial(0x3A404D, 0x171A21, {0.5, 0.3}), Family::glow},
        {"blush", "Blush", radial(0xF9E4EC, 0xD3BCE6, {0.3, 0.2}), Family::glow},
        {"horizon", "Horizon", radial(0x2C4A86, 0x14213D, {0.5, 0.85}), Family::glow},
        {"candle", "Candle", radial(0x9C5A54, 0x5C2E3E, {0.3, 0.7}), Family::glow},
        {"moss", "Moss", radial(0x3E7364, 0x1D3A34, {0.6, 0.25}), Family::glow},
        {"northern-lights", "Northern Lights", aurora({0x0B132B, 0x1C7C6E, 0x5B4B9A}, 0.2, 1), Family::aurora},
        {"deep-sea", "Deep Sea", aurora({0x06202B, 0x0E5A6F, 0x1B3B6F}, 0.15, 4), Family::aurora},
        {"twilight", "Twilight", aurora({0x1A1033, 0x6D3B7C, 0xC2557A}, 0.18, 7), Family::aurora},
        {"ink", "Ink", solid(0x111318), Family::solid},
        {"slate", "Slate", solid(0x334155), Family::solid},
        {"paper", "Paper", solid(0xF4F4F1), Family::solid},
        {"sand", "Sand", solid(0xE8DFD0), Family::solid},
        {"mint", "Mint", solid(0xCDE7DC), Family::solid},
    };
    return presets;
}

BackgroundPreset const* BackgroundPreset::withID(std::string_view id) {
    auto const found =
        std::find_if(all().begin(), all().end(), [&](BackgroundPreset const& preset) { return preset.id == id; });
    return found == all().end() ? nullptr : &*found;
}

}
