#pragma once

#include <deque>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Composition/Private/FrameState.h>

namespace tavaro {

class Image;

/// A frame with layers on it: a project and the state that a composer would have made of it.
struct LayerFrame {
    explicit LayerFrame(Size2 canvas = {1920, 1080});
    LayerFrame(LayerFrame const&) = delete;

    /// An overlay from 0 to 10 s that comes and goes at once.
    Overlay& add(OverlayKind kind, UnitPoint2 position = {0.5, 0.5});
    CaptionCue& caption(std::string text, CaptionStyle style);

    DemoProject project;
    FrameState state; // at 5 s, the recording all over the canvas
    std::deque<Overlay> overlays;
    CaptionCue cue;
};

/// One of each kind of overlay that is a layer, with the content that people give them.
std::vector<OverlayKind> layerKinds();

/// The smallest rectangle that holds all pixels of at least that alpha; empty when there are none.
CanvasRect inkOf(Image const& image, int leastAlpha = 200);

}
