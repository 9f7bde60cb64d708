#pragma once

#include <TavaroCore/Audio/AudioTrack.h>
#include <TavaroCore/Camera/CameraDirection.h>
#include <TavaroCore/Captions/CaptionTrack.h>
#include <TavaroCore/Captions/Transcript.h>
#include <TavaroCore/Export/ExportSettings.h>
#include <TavaroCore/Overlays/Overlay.h>
#include <TavaroCore/Privacy/Redaction.h>
#include <TavaroCore/Project/DemoMode.h>
#include <TavaroCore/Recording/RecordingMetadata.h>
#include <TavaroCore/Records/CopyOnWrite.h>
#include <TavaroCore/Records/Date.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Style/BackgroundStyle.h>
#include <TavaroCore/Style/CameraSettings.h>
#include <TavaroCore/Style/CanvasLayout.h>
#include <TavaroCore/Style/CursorSettings.h>
#include <TavaroCore/Style/ScreenStyle.h>
#include <TavaroCore/Timeline/Timeline.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Voice/VoiceoverPlan.h>
#include <TavaroCore/Zoom/ZoomEvent.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// The one document of the system: everything needed to reproduce an edit of one recording. A value; the large, rarely
/// changed parts are shared between copies. Media is referred to by asset name. Times of items are output seconds;
/// times in `metadata` are seconds of the recording.
struct DemoProject {
    std::int64_t version = 1;
    UUID id = UUID::random();
    std::string name = "Untitled Demo";
    Date createdAt = Date::now();
    Date modifiedAt = Date::now();
    DemoMode mode = DemoMode::website;
    Size2 sourceSize; // pixels of the recorded screen video
    Size2 canvas = {1920, 1080};
    Timeline timeline;
    std::map<std::string, double> assetDurations; // seconds, by asset name
    CopyOnWrite<RecordingMetadata> metadata;
    CanvasLayout layout;
    std::optional<TitleCard> intro;
    std::optional<TitleCard> outro;
    BackgroundStyle background;
    ScreenStyle screen;
    CursorSettings cursor;
    CameraSettings camera;
    std::optional<std::string> cameraAsset;
    double cameraOffset = 0; // seconds the camera video is shifted against the screen video
    std::vector<LayoutCue> layoutCues;
    std::vector<CameraMove> cameraMoves;
    CopyOnWrite<std::vector<FaceSample>> cameraFaces;
    std::optional<CopyOnWrite<Transcript>> transcript;
    CameraDirectorStyle cameraDirectorStyle = CameraDirectorStyle::off;
    std::optional<std::vector<double>> screenSceneChanges; // source times; absent until analysed
    std::optional<NormalizedRect> sourceCrop;
    std::vector<ZoomEvent> zoomEvents;
    std::vector<Overlay> overlays;
    CaptionTrack captions;
    std::vector<AudioTrack> audioTracks;
    std::vector<SilenceSpan> silences;
    std::optional<VoiceoverPlan> voiceover;
    CopyOnWrite<std::vector<RedactionTrack>> redactions;
    RedactionSettings redactionSettings;
    std::optional<RedactionScanInfo> redactionScan;
    ExportSettings exportSettings; // stored as "export", a word that the language keeps for itself

    /// Removes the zooms, overlays and camera moves that Auto Polish made; those made by hand keep their order.
    void clearAutomaticEdits();

    /// Output seconds of the edit.
    double duration() const { return timeline.duration(); }
    /// Seconds of the title cards; 0 where there is none.
    double introDuration() const;
    double outroDuration() const;
    /// Seconds of the whole output: the edit with its title cards.
    double presentationDuration() const;
    /// The edit's output ranges whose clips are muted, ascending and apart from each other.
    std::vector<TimeRange> mutedRanges() const;

    /// Whether there is a webcam to show.
    bool usesCamera() const { return cameraAsset && camera.isEnabled; }
    /// Whether the camera has a pane of its own, at least for some time.
    bool usesSplit() const;
    /// How a canvas of that size is split where it is: as the layout says, or in the way that suits the canvas.
    CanvasLayout::Split effectiveSplit(Size2 canvas) const;
    /// The scene before the first layout cue.
    SceneLayout baseScene() const;

    /// The crop, inside the unit square, or the whole frame.
    NormalizedRect effectiveCrop() const;
    /// Pixels of the part of the recording that the crop keeps.
    Size2 croppedSourceSize() const;

    static constexpr auto fields = std::tuple{
        field("version", &DemoProject::version),
        field("id", &DemoProject::id),
        field("name", &DemoProject::name),
        field("createdAt", &DemoProject::createdAt),
        field("modifiedAt", &DemoProject::modifiedAt),
        field("mode", &DemoProject::mode),
        field("sourceSize", &DemoProject::sourceSize),
        field("canvas", &DemoProject::canvas),
        field("timeline", &DemoProject::timeline),
        field("assetDurations", &DemoProject::assetDurations),
        field("metadata", &DemoProject::metadata),
        field("layout", &DemoProject::layout),
        field("intro", &DemoProject::intro),
        field("outro", &DemoProject::outro),
        field("background", &DemoProject::background),
        field("screen", &DemoProject::screen),
        field("cursor", &DemoProject::cursor),
        field("camera", &DemoProject::camera),
        field("cameraAsset", &DemoProject::cameraAsset),
        field("cameraOffset", &DemoProject::cameraOffset),
        field("layoutCues", &DemoProject::layoutCues),
        field("cameraMoves", &DemoProject::cameraMoves),
        field("cameraFaces", &DemoProject::cameraFaces),
        field("transcript", &DemoProject::transcript),
        field("cameraDirectorStyle", &DemoProject::cameraDirectorStyle),
        field("screenSceneChanges", &DemoProject::screenSceneChanges),
        field("sourceCrop", &DemoProject::sourceCrop),
        field("zoomEvents", &DemoProject::zoomEvents),
        field("overlays", &DemoProject::overlays),
        field("captions", &DemoProject::captions),
        field("audioTracks", &DemoProject::audioTracks),
        field("silences", &DemoProject::silences),
        field("voiceover", &DemoProject::voiceover),
        field("redactions", &DemoProject::redactions),
        field("redactionSettings", &DemoProject::redactionSettings),
        field("redactionScan", &DemoProject::redactionScan),
        field("export", &DemoProject::exportSettings),
    };
    bool operator==(DemoProject const&) const = default;
};
static_assert(listsEveryField<DemoProject>);

/// Reads a document; throws `JSONError`. A missing key takes the value a new project has.
DemoProject decodeProject(std::string_view json);
/// Sorted keys, shortest numbers, ISO 8601 dates.
std::string encodeProject(DemoProject const& project);
std::size_t hashOf(DemoProject const& project);

}
