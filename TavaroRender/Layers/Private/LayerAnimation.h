#pragma once

#include <TavaroCore/Captions/CaptionTrack.h>
#include <TavaroCore/Overlays/Overlay.h>

namespace tavaro {

/// Where an animation has a layer at one moment.
struct LayerPose {
    double opacity = 1; // 0…1
    double drop = 0;    // downward, shares of the canvas's smaller side
    double scale = 1;   // about the layer's centre
    double shown = 1;   // 0…1 of a text that is typed, of an arrow that is drawn

    bool operator==(LayerPose const&) const = default;
};

/// The pose at `at` seconds of an overlay's time. Both animations take `animationDuration`; what is shorter than they
/// are is shared between them, so the whole layer is there for at least a moment.
LayerPose overlayPose(Overlay const& overlay, double at);
/// The pose of a card's text, `at` seconds after the card came on. It comes and goes with the card's animation.
LayerPose cardPose(TitleCard const& card, double at);
/// The pose of a caption at output time `at`.
LayerPose captionPose(CaptionAnimation animation, CaptionCue const& cue, double at);

}
