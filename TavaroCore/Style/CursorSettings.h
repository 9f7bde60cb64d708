#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Values/RGBAColor.h>

#include <array>
#include <optional>
#include <string_view>

namespace tavaro {

enum class CursorStyle { native, circle, filled, outline, glow, minimal, spotlight };

constexpr std::array<std::string_view, 7> namesOf(CursorStyle) {
    return {"native", "circle", "filled", "outline", "glow", "minimal", "spotlight"};
}

enum class ClickEffect { none, spotlight, ripple, prism, pulse, ring };

constexpr std::array<std::string_view, 6> namesOf(ClickEffect) {
    return {"none", "spotlight", "ripple", "prism", "pulse", "ring"};
}

/// The synthetic pointer and click effects.
struct CursorSettings {
    bool isVisible = true;
    CursorStyle style = CursorStyle::native;
    double size = 1.4;      // scale of the drawn pointer
    double smoothing = 0.7; // 0…1
    ClickEffect clickEffect = ClickEffect::ripple;
    RGBAColor clickColor = RGBAColor::rgb(0x3B82F6, 0.9);
    double clickDuration = 0.55; // seconds
    std::optional<RGBAColor> tint;
    double idleHideAfter = 0; // seconds without movement; 0 never hides
    double motionBlur = 0;    // 0…1
    bool loops = false;       // the pointer returns to where it began
    bool clickSound = false;
    double clickSoundVolume = 0.6; // 0…1

    static constexpr auto fields = std::tuple{
        field("isVisible", &CursorSettings::isVisible),
        field("style", &CursorSettings::style),
        field("size", &CursorSettings::size),
        field("smoothing", &CursorSettings::smoothing),
        field("clickEffect", &CursorSettings::clickEffect),
        field("clickColor", &CursorSettings::clickColor),
        field("clickDuration", &CursorSettings::clickDuration),
        field("tint", &CursorSettings::tint),
        field("idleHideAfter", &CursorSettings::idleHideAfter),
        field("motionBlur", &CursorSettings::motionBlur),
        field("loops", &CursorSettings::loops),
        field("clickSound", &CursorSettings::clickSound),
        field("clickSoundVolume", &CursorSettings::clickSoundVolume),
    };
    bool operator==(CursorSettings const&) const = default;
};
static_assert(listsEveryField<CursorSettings>);

/// Brings `smoothing`, `motionBlur` and `clickSoundVolume` of a document that was read into 0…1.
void settleAfterReading(CursorSettings& settings);

}
