#include <TavaroCore/Direction/SmartDirector.h>

#include <TavaroCore/Cursor/CursorSmoother.h>
#include <TavaroCore/Direction/CameraDirector.h>
#include <TavaroCore/Direction/Private/ScreenActivity.h>
#include <TavaroCore/Direction/Private/SilenceDetector.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroCore/Style/BackgroundPreset.h>
#include <TavaroCore/Values/JoinedRanges.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <set>
#include <tuple>

namespace tavaro {

namespace {

constexpr double clickPinSeconds = 0.09;
constexpr std::size_t polishBackground = 6; // entry of the built-in presets
constexpr SilenceDetector silenceDetector{
    .threshold = 0.018f, .minimumDuration = 1.2, .padding = 0.25, .bucketSeconds = 0.1};
constexpr double touching = 0.000001; // seconds; ranges that close are one
constexpr std::int64_t captionCharacters = 42;

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

std::int64_t addZooms(DemoProject& project, SmartDirector const& director, RecordingMetadata const& shownLog) {
    auto made = SmartDirector::clearOfHandMade(director.zoomEvents(shownLog, project.duration()), project.zoomEvents);
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
    project.screen = SmartDirector::screenStyle(mode, project.croppedSourceSize());
    if (project.background.isNone()) project.background = BackgroundPreset::all()[polishBackground].style;
}

/// Where the edit shows recorded seconds in which the microphone is quiet.
std::vector<TimeRange> quietOnTimeline(DemoProject const& project) {
    auto const& levels = project.metadata->micLevels;
    double const recorded = recordedSeconds(project);
    auto const quiet =
        levels.empty() ? std::vector<TimeRange>{{0, recorded}} : silenceDetector.quietRanges(levels, recorded);
    auto const shown = recordingOnTimeline(project);
    std::vector<TimeRange> result;
    for (auto const& range : quiet) {
        for (auto const& stretch : shown.stretches(range)) result.push_back(stretch.range);
    }
    return joined(std::move(result), touching);
}

/// By what the edit shows: what was cut away parts nothing, and what plays faster is a shorter pause.
void findSilences(DemoProject& project, RecordingMetadata const& shownLog, DirectorReport& report) {
    auto const activity = SilenceDetector::activityTimes(shownLog, SilenceDetector::pointerTravel);
    project.silences = silenceDetector.spans(quietOnTimeline(project), activity);
    report.silencesFound = static_cast<std::int64_t>(project.silences.size());
    for (auto const& span : project.silences) report.silenceSecondsRemovable += span.duration;
}

void enhanceAudio(DemoProject& project) {
    for (auto& track : project.audioTracks) {
        if (track.role == AudioRole::microphone) track.noiseReduction = track.voiceClarity = track.normalize = true;
        if (track.role == AudioRole::music) track.duckedBy = AudioRole::voiceover;
    }
}

void placeCamera(CameraSettings& camera, RecordingMetadata const& shownLog) {
    camera.placement = SmartDirector::bestCameraPlacement(shownLog);
    camera.avoidsContent = true;
}

/// Appends keycaps where no keycap made by hand is shown. One that had to wait past the end is left out.
std::int64_t addKeycaps(DemoProject& project, RecordingMetadata const& shownLog) {
    auto keycaps = SmartDirector::keystrokeOverlays(shownLog);
    auto const isCovered = [&](Overlay const& made) {
        return std::any_of(project.overlays.begin(), project.overlays.end(), [&](Overlay const& other) {
            return std::holds_alternative<OverlayKind::Keycap>(other.kind.content) &&
                   other.range().intersects(made.range());
        });
    };
    std::erase_if(keycaps, [&](Overlay const& made) { return made.start >= project.duration() || isCovered(made); });
    for (auto& keycap : keycaps) keycap.duration = std::min(keycap.duration, project.duration() - keycap.start);
    auto const count = static_cast<std::int64_t>(keycaps.size());
    auto& overlays = project.overlays;
    overlays.insert(overlays.end(), std::make_move_iterator(keycaps.begin()), std::make_move_iterator(keycaps.end()));
    return count;
}

/// Captions of what the voice-over says.
std::int64_t captionVoiceover(DemoProject& project) {
    if (!project.voiceover || project.voiceover->segments.empty()) return 0;
    std::vector<CaptionCue> cues;
    for (auto const& segment : project.voiceover->segments) {
        auto spoken = CaptionTrack::cuesFromScript(segment.text, segment.start, segment.duration(), captionCharacters);
        cues.insert(cues.end(), std::make_move_iterator(spoken.begin()), std::make_move_iterator(spoken.end()));
    }
    project.captions.cues = std::move(cues);
    project.captions.isEnabled = true;
    return static_cast<std::int64_t>(project.captions.cues.size());
}

/// The lists that a polish fills.
auto madeLists(DemoProject& project) {
    return std::tie(project.zoomEvents, project.silences, project.overlays, project.layoutCues, project.cameraMoves,
                    project.captions.cues);
}

auto copied(auto const& lists) {
    return std::apply([](auto const&... each) { return std::tuple(each...); }, lists);
}

template<class Item> std::set<UUID> identitiesOf(std::vector<Item> const& items) {
    std::set<UUID> identities;
    for (auto const& item : items) identities.insert(item.id);
    return identities;
}

/// What is made again as it was, in its place, is the same item.
template<class Item> void keepIdentities(std::vector<Item>& items, std::vector<Item> const& before) {
    auto const former = identitiesOf(before), present = identitiesOf(items);
    for (std::size_t i = 0; i < std::min(items.size(), before.size()); ++i) {
        if (former.contains(items[i].id) || present.contains(before[i].id)) continue; // made by hand
        auto same = items[i];
        same.id = before[i].id;
        if (same == before[i]) items[i].id = before[i].id;
    }
}

}

DirectorReport SmartDirector::polish(DemoProject& project) const {
    DirectorReport report;
    auto const before = copied(madeLists(project));
    project.clearAutomaticEdits();
    if (settings_.cursorSmoothing) report.cursorSamplesSmoothed = smoothPointer(project);
    auto const recording = logOnTimeline(project);
    if (settings_.smartZoom && mode_ != DemoMode::plain) report.zoomsAdded = addZooms(project, *this, recording);
    highlightClicks(project.cursor, settings_.clickHighlights);
    if (!settings_.motionBlur) stillAutomaticZooms(project);
    if (settings_.background) applyLook(project, mode_);
    if (settings_.removeSilence) findSilences(project, recording, report);
    if (settings_.audioEnhancement) enhanceAudio(project);
    if (settings_.cameraPositioning && project.camera.isEnabled) {
        placeCamera(project.camera, recording);
        directCamera(project, recording);
    }
    if (settings_.keystrokeOverlays) report.overlaysAdded = addKeycaps(project, recording);
    if (settings_.captions) report.captionCues = captionVoiceover(project);
    report.clicksDetected = static_cast<std::int64_t>(project.metadata->clicks.size());
    std::apply(
        [&](auto&... lists) {
            std::apply([&](auto const&... earlier) { (keepIdentities(lists, earlier), ...); }, before);
        },
        madeLists(project));
    return report;
}

CameraPlacement SmartDirector::bestCameraPlacement(RecordingMetadata const& recording) {
    constexpr double always = std::numeric_limits<double>::infinity();
    return ScreenActivity(recording).quietestCorner({0, always});
}

}
