#pragma once

#include <TavaroCore/Records/Fields.h>

namespace tavaro {

/// What Auto Polish does to a take.
struct PolishOptions {
    bool smartZoom = true;
    bool cursorSmoothing = true;
    bool clickHighlights = true;
    bool motionBlur = true;
    bool audioEnhancement = true;
    bool removeSilence = true;
    bool background = true;
    bool cameraPositioning = true;
    bool captions = true;
    bool keystrokeOverlays = true;
    bool zoomFollowsCursor = false;

    static constexpr auto fields = std::tuple{
        field("smartZoom", &PolishOptions::smartZoom),
        field("cursorSmoothing", &PolishOptions::cursorSmoothing),
        field("clickHighlights", &PolishOptions::clickHighlights),
        field("motionBlur", &PolishOptions::motionBlur),
        field("audioEnhancement", &PolishOptions::audioEnhancement),
        field("removeSilence", &PolishOptions::removeSilence),
        field("background", &PolishOptions::background),
        field("cameraPositioning", &PolishOptions::cameraPositioning),
        field("captions", &PolishOptions::captions),
        field("keystrokeOverlays", &PolishOptions::keystrokeOverlays),
        field("zoomFollowsCursor", &PolishOptions::zoomFollowsCursor),
    };
    bool operator==(PolishOptions const&) const = default;
};
static_assert(listsEveryField<PolishOptions>);

}
