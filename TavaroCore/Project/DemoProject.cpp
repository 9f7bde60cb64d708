#include <TavaroCore/Project/DemoProject.h>

#include <TavaroCore/Records/Hash.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/JoinedRanges.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

void DemoProject::clearAutomaticEdits() {
    auto const isAutomatic = [](auto const& item) { return item.isAutomatic; };
    std::erase_if(zoomEvents, isAutomatic);
    std::erase_if(overlays, isAutomatic);
    std::erase_if(cameraMoves, isAutomatic);
}

static double cardSeconds(std::optional<TitleCard> const& card) { return card ? std::max(card->duration, 0.0) : 0; }

double DemoProject::introDuration() const { return cardSeconds(intro); }
double DemoProject::outroDuration() const { return cardSeconds(outro); }
double DemoProject::presentationDuration() const { return introDuration() + duration() + outroDuration(); }

std::vector<TimeRange> DemoProject::mutedRanges() const {
    std::vector<TimeRange> muted;
    for (auto const& clip : timeline.clips) {
        if (clip.isMuted && clip.duration > 0) muted.push_back(clip.range());
    }
    constexpr double rounding = 1e-6; // seconds, that clips laid end to end leave between their times
    return joined(std::move(muted), rounding);
}

bool DemoProject::usesSplit() const {
    auto const isSplit = [](LayoutCue const& cue) { return cue.scene == SceneLayout::split; };
    return usesCamera() && (layout.isSplit() || std::ranges::any_of(layoutCues, isSplit));
}

CanvasLayout::Split DemoProject::effectiveSplit(Size2 canvas) const {
    if (auto const* split = std::get_if<CanvasLayout::Split>(&layout.content)) return *split;
    if (canvas.height > canvas.width) return {.arrangement = SplitArrangement::cameraTop, .cameraFraction = 0.4};
    return {.arrangement = SplitArrangement::cameraRight, .cameraFraction = 0.34};
}

SceneLayout DemoProject::baseScene() const {
    if (!usesCamera()) return SceneLayout::screenOnly;
    return layout.isSplit() ? SceneLayout::split : SceneLayout::overlay;
}

NormalizedRect DemoProject::effectiveCrop() const {
    if (!sourceCrop) return {0, 0, 1, 1};
    auto const inside = sourceCrop->inset(0, 0);
    return inside.area() > 0 ? inside : NormalizedRect{0, 0, 1, 1};
}

Size2 DemoProject::croppedSourceSize() const {
    auto const crop = effectiveCrop();
    auto const side = [](std::int64_t pixels, double share) {
        return std::max<std::int64_t>(std::llround(static_cast<double>(pixels) * share), pixels > 0 ? 1 : 0);
    };
    return {side(sourceSize.width, crop.width), side(sourceSize.height, crop.height)};
}

DemoProject decodeProject(std::string_view json) { return decodeJSON<DemoProject>(json); }

std::string encodeProject(DemoProject const& project) {
    constexpr std::size_t bytesASample = 128; // a pointer sample with full fractions takes about 110
    auto const& log = *project.metadata;
    JSONWriter writer;
    writer.expect(bytesASample *
                  (log.cursorSamples.size() + (log.rawCursorSamples ? log.rawCursorSamples->size() : 0)));
    writeJSON(writer, project);
    return writer.take();
}

std::size_t hashOf(DemoProject const& project) { return detail::hashValue(project); }

}
