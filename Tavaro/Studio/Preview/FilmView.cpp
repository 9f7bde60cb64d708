#include <Tavaro/Studio/Preview/FilmView.h>

#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <variant>

namespace tavaro {

namespace {

bool hides(Overlay const& overlay) {
    auto const& content = overlay.kind.content;
    return std::holds_alternative<OverlayKind::Blur>(content) || std::holds_alternative<OverlayKind::Mask>(content);
}

/// The recording alone, as large as the canvas lets it be. The edit keeps its cuts, so that a moment stays the moment.
void showAsRecorded(DemoProject& project) {
    project.sourceCrop.reset();
    project.zoomEvents.clear();
    std::erase_if(project.overlays, [](Overlay const& overlay) { return !hides(overlay); });
    project.captions.isEnabled = false;
    project.camera.isEnabled = false;
    project.layout = {};
    project.background.content = BackgroundStyle::Solid{.colour = RGBAColor::black};
    project.screen = {};
    project.cursor = CursorSettings{.size = 1, .smoothing = 0, .clickEffect = ClickEffect::none};
    project.exportSettings.fit = ContentFit::fit;
    project.exportSettings.includeWatermark = false;
}

}

FilmView FilmView::playing() const { return shows == Shows::rawTake ? *this : FilmView{}; }

DemoProject FilmView::of(DemoProject const& project) const {
    auto viewed = project;
    if (shows == Shows::rawTake) showAsRecorded(viewed);
    if (shows == Shows::wholeRecording) viewed.sourceCrop.reset();
    for (auto& overlay : viewed.overlays) {
        if (std::ranges::find(resting, overlay.id) == resting.end()) continue;
        overlay.animationIn = overlay.animationOut = OverlayAnimation::none;
    }
    return viewed;
}

}
