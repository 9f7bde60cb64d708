#include <TavaroCore/Style/CameraLook.h>

namespace tavaro {

namespace {

struct Look {
    CameraLook look;
    std::string_view name;
    CameraGrade grade;
};

// exposure, contrast, saturation, temperature, tint, lift, vignette, split tone
constexpr std::array<Look, namesOf(CameraLook()).size()> looks{{
    {CameraLook::natural, "Natural", {0, 1, 1, 0, 0, 0, 0, 0}},
    {CameraLook::warm, "Warm", {0, 1, 1.05, 0.35, 0.05, 0, 0, 0}},
    {CameraLook::cool, "Cool", {0, 1, 0.95, -0.35, -0.03, 0, 0, 0}},
    {CameraLook::vivid, "Vivid", {0, 1.12, 1.35, 0, 0, 0, 0, 0}},
    {CameraLook::muted, "Muted", {0, 0.92, 0.7, 0, 0, 0.04, 0, 0}},
    {CameraLook::film, "Film", {0, 1.08, 0.85, 0.12, 0, 0.06, 0.35, 0}},
    {CameraLook::golden, "Golden", {0.1, 1, 1.1, 0.55, 0.08, 0, 0.2, 0}},
    {CameraLook::tealOrange, "Teal & Orange", {0, 1.1, 1.15, 0, 0, 0, 0, 0.6}},
    {CameraLook::pastel, "Pastel", {0.15, 0.85, 0.75, 0, 0, 0.08, 0, 0}},
    {CameraLook::studio, "Studio", {0.12, 1.05, 1.02, 0.05, 0, 0, 0, 0}},
    {CameraLook::mono, "Mono", {0, 1, 0, 0, 0, 0, 0, 0}},
    {CameraLook::noir, "Noir", {0, 1.35, 0, 0, 0, -0.02, 0.55, 0}},
    {CameraLook::lut, "Custom LUT", {0, 1, 1, 0, 0, 0, 0, 0}},
}};

constexpr bool isInOrder() {
    for (std::size_t i = 0; i < looks.size(); ++i)
        if (looks[i].look != static_cast<CameraLook>(i)) return false;
    return true;
}
static_assert(isInOrder());

Look const& entry(CameraLook look) { return looks[static_cast<std::size_t>(look)]; }

}

std::string_view displayName(CameraLook look) { return entry(look).name; }

CameraGrade grade(CameraLook look) { return entry(look).grade; }

std::span<CameraLook const> cameraLookPresets() {
    static constexpr auto presets = [] {
        std::array<CameraLook, looks.size() - 1> all{};
        for (std::size_t i = 0; i < all.size(); ++i) all[i] = looks[i].look;
        return all;
    }();
    return presets;
}

}
