#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace tavaro {

/// What happens when something that a frame asks for cannot be used.
enum class EffectFailure {
    drop, // it is left out and listed, and the log says so once: a preview goes on
    stop, // the failure is thrown: what is exported is what was asked for
};

/// What frames may be drawn without.
enum class Effect { colorTable, matte, background, layer };

constexpr std::array<std::string_view, 4> namesOf(Effect) { return {"colorTable", "matte", "background", "layer"}; }

/// Something that a frame asks for and is drawn without.
struct DroppedEffect {
    Effect effect = Effect::layer;
    std::string subject;    // the asset's name; of a text or graphic its kind
    std::string sentence;   // what is left out, and why
    std::int64_t since = 0; // the revision of the project in which it was first left out

    bool operator==(DroppedEffect const&) const = default;
};

}
