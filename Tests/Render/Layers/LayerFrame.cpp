#include "LayerFrame.h"

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

LayerFrame::LayerFrame(Size2 canvas) {
    state.canvas = canvas;
    state.time = state.editTime = 5;
    state.source = ShownSource{"screen.mp4", 5};
    state.sourceSize = canvas;
    state.contentRect = state.clipRect = {0, 0, static_cast<double>(canvas.width), static_cast<double>(canvas.height)};
    state.camera.scale = 1;
    state.camera.center = {0.5, 0.5};
}

Overlay& LayerFrame::add(OverlayKind kind, UnitPoint2 position) {
    overlays.push_back({.kind = std::move(kind),
                        .start = 0,
                        .duration = 10,
                        .position = position,
                        .animationIn = OverlayAnimation::none,
                        .animationOut = OverlayAnimation::none});
    state.visibleOverlays.push_back(&overlays.back());
    return overlays.back();
}

CaptionCue& LayerFrame::caption(std::string text, CaptionStyle style) {
    project.captions.isEnabled = true;
    project.captions.style = style;
    project.captions.animation = CaptionAnimation::none;
    cue = {.start = 0, .duration = 10, .text = std::move(text)};
    state.captionCue = &cue;
    return cue;
}

std::vector<OverlayKind> layerKinds() {
    return {{OverlayKind::Title{"Ship faster", "with less work"}},
            {OverlayKind::Callout{"Click here"}},
            {OverlayKind::Keycap{{"⌘", "⇧", "return"}}},
            {OverlayKind::Command{"npm run build"}},
            {OverlayKind::Code{"let a = 1\nlet b = \"x\"", "swift"}},
            {OverlayKind::Arrow{{0.2, 0.7}, {0.6, 0.4}}},
            {OverlayKind::Box{{0.3, 0.3, 0.3, 0.2}}}};
}

CanvasRect inkOf(Image const& image, int leastAlpha) {
    int left = image.width(), top = image.height(), right = -1, bottom = -1;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.row(y)[4 * x + 3] < leastAlpha) continue;
            left = std::min(left, x);
            right = std::max(right, x);
            top = std::min(top, y);
            bottom = std::max(bottom, y);
        }
    }
    if (right < 0) return {};
    return {static_cast<double>(left), static_cast<double>(top), right - left + 1.0, bottom - top + 1.0};
}

}
