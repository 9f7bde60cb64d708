#pragma once

#include <TavaroCore/Records/UUID.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace tavaro {

/// What the timeline shows, each kind in a lane of its own; of sound, each track. In the order in which lanes are
/// shown.
enum class LaneKind { film, zooms, overlays, captions, camera, sound, voiceover, silences, redactions };

constexpr std::array<std::string_view, 9> namesOf(LaneKind) {
    return {"film", "zooms", "overlays", "captions", "camera", "sound", "voiceover", "silences", "redactions"};
}

/// What one thing on a lane is.
enum class LaneItemKind {
    clip,
    card, // before or after the film
    zoom,
    overlay,
    caption,
    scene, // from a change of the camera's layout to the next
    cameraMove,
    audioClip,
    voiceLine,
    silence,
    redaction,
};

/// The word for it, as in "Move Zoom".
constexpr std::string_view nounOf(LaneItemKind kind) {
    constexpr std::array<std::string_view, 11> nouns = {
        "Clip",    "Card",     "Zoom", "Overlay", "Caption", "Scene", "Camera Move", "Sound", "Voice-Over Line",
        "Silence", "Redaction"};
    return nouns[static_cast<std::size_t>(kind)];
}

/// Cards have no identity in the document, so they have these.
inline constexpr UUID introCardID{{0xCA, 0xD0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}};
inline constexpr UUID outroCardID{{0xCA, 0xD0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2}};

/// What a drag of the pointer may do to it.
enum class LaneItemHold {
    free,      // moved and trimmed
    placed,    // moved, without a length of its own
    trimmable, // its edges move, it does not
};

/// One box on a lane. A thing that the film shows several times has a box for each.
struct LaneItem {
    UUID id;
    double start = 0; // output seconds
    double end = 0;
    std::uint32_t index = 0; // in its list of the document
    LaneItemKind kind = LaneItemKind::clip;
    LaneItemHold hold = LaneItemHold::free;

    double duration() const { return end - start; }
    bool operator==(LaneItem const&) const = default;
};

}
