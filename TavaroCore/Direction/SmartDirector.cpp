#include <TavaroCore/Direction/SmartDirector.h>

#include <TavaroCore/Cursor/CursorSmoother.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Style/BackgroundPreset.h>
#include <TavaroCore/Timeline/RecordingOnTimeline.h>

#include <algorithm>

namespace tavaro {

namespace {

constexpr double clickPinSeconds = 0.09;
constexpr std::size_t polishBackground = 6; // entry of the built-in presets

/// Smooths from the path as recorded, which the first smoothing keeps, so that smoothing again changes nothing.
std::int64_t smoothPointer(DemoProject& project) {
    auto const& recording = *project.metadata;
    if (recording.cursorSamples.empty()) return 0;
    bool const isFirst = !recording.rawCursorSamples || recording.rawCursorSamples->empty();
    auto const& raw = isFirst ? recording.cursorSamples : *recording.rawCursorSamples;
    auto smooth = CursorSmoother(project.cursor.smoothing, clickPinSeconds).smooth(raw, recording.clicks);
    auto const count = static_cast<std::int64_t>(smooth.size());
    if (!isFirst && smooth == recording.cursorSamples) return count; // the log stays shared with other copies
    auto& edited = project.metadata.edit();
    if (isFirst) edited.rawCursorSamples = std::move(edited.cursorSamples);
    edited.cursorSamples = std::move(smooth);
    return count;
}

std::int64_t addZooms(DemoProject& project, SmartDirector const& director, RecordingMetadata const& onTimeline) {
    auto made = SmartDirector::clearOfHandMade(director.zoomEvents(onTimeline, project.duration()), project.zoomEvents);
    auto const count = static_cast<std::int64_t>(made.size());
    auto& zooms = project.zoomEvents;
    zooms.insert(zooms.end(), std::make_move_iterator(made.begin()), std::make_move_iterator(made.end()));
    std::stable_sort(zooms.begin(), zooms.end(), [](auto const& a, auto const& b) { return a.start < b.start; });
    return count;
}

void highlightClicks(CursorSettings& cursor, bool highlights) {
    if (!highlights) {
        cursor.clickEffect = ClickEffect::none;
        return;
    }
    cursor.isVisible = true;
    if (cursor.clickEffect == ClickEffect::none) cursor.clickEffect = ClickEffect::ripple;
}

void stillAutomaticZooms(DemoProject& project) {
    for (auto& zoom : project.zoomEvents) {
        if (zoom.isAutomatic) zoom.motionBlur = 0;
    }
}

void applyLook(DemoProject& project, DemoMode mode) {
    project.screen = SmartDirector::screenStyle(mode);
    if (project.background.isNone()) project.background = BackgroundPreset::all()[polishBackground].style;
}

}

DirectorReport SmartDirector::polish(DemoProject& project) const {
    DirectorReport report;
    project.clearAutomaticEdits();
    if (settings_.cursorSmoothing) report.cursorSamplesSmoothed = smoothPointer(project);
    if (settings_.smartZoom && mode_ != DemoMode::plain) {
        report.zoomsAdded = addZooms(project, *this, onTimeline(*project.metadata, project.timeline));
    }
    highlightClicks(project.cursor, settings_.clickHighlights);
    if (!settings_.motionBlur) stillAutomaticZooms(project);
    if (settings_.background) applyLook(project, mode_);
    report.clicksDetected = static_cast<std::int64_t>(project.metadata->clicks.size());
    return report;
}

}
