#pragma once

#include <TavaroCore/Recording/CaptureHealth.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/Geometry.h>

#include <optional>
#include <string>
#include <vector>

/// The log of what happened during a recording apart from the pixels. Times are seconds since the start of the
/// recording; positions are unit coordinates of the captured frame.
namespace tavaro {

enum class CursorKind {
    arrow,
    iBeam,
    pointingHand,
    openHand,
    closedHand,
    resizeLeftRight,
    resizeUpDown,
    crosshair,
    text
};

constexpr std::array<std::string_view, 9> namesOf(CursorKind) {
    return {"arrow",           "iBeam",        "pointingHand", "openHand", "closedHand",
            "resizeLeftRight", "resizeUpDown", "crosshair",    "text"};
}

struct CursorSample {
    double t = 0;
    UnitPoint2 position;
    CursorKind kind = CursorKind::arrow;

    static constexpr auto fields = std::tuple{field("t", &CursorSample::t), field("position", &CursorSample::position),
                                              field("kind", &CursorSample::kind)};
    static constexpr bool isFlat = true; // neither lists nor free text inside
    bool operator==(CursorSample const&) const = default;
};
static_assert(listsEveryField<CursorSample>);

enum class MouseButton { left, right, middle };

constexpr std::array<std::string_view, 3> namesOf(MouseButton) { return {"left", "right", "middle"}; }

/// A press of a mouse button.
struct ClickEvent {
    UUID id = UUID::random();
    double t = 0;
    UnitPoint2 position;
    MouseButton button = MouseButton::left;
    bool isDoubleClick = false;
    bool isDrag = false;
    std::optional<double> dragEnd;             // when the drag ended
    std::optional<std::string> application;    // name of the application clicked in
    std::optional<NormalizedRect> windowFrame; // frame of the window clicked in

    static constexpr auto fields = std::tuple{
        field("id", &ClickEvent::id),
        field("t", &ClickEvent::t),
        field("position", &ClickEvent::position),
        field("button", &ClickEvent::button),
        field("isDoubleClick", &ClickEvent::isDoubleClick),
        field("isDrag", &ClickEvent::isDrag),
        field("dragEnd", &ClickEvent::dragEnd),
        field("application", &ClickEvent::application),
        field("windowFrame", &ClickEvent::windowFrame),
    };
    bool operator==(ClickEvent const&) const = default;
};
static_assert(listsEveryField<ClickEvent>);

struct KeystrokeEvent {
    UUID id = UUID::random();
    double t = 0;
    std::vector<std::string> keys; // modifiers in the order ⌃ ⌥ ⇧ ⌘, then the key
    bool isShortcut = false;
    std::optional<std::string> application;

    static constexpr auto fields = std::tuple{
        field("id", &KeystrokeEvent::id),
        field("t", &KeystrokeEvent::t),
        field("keys", &KeystrokeEvent::keys),
        field("isShortcut", &KeystrokeEvent::isShortcut),
        field("application", &KeystrokeEvent::application),
    };
    bool operator==(KeystrokeEvent const&) const = default;
};
static_assert(listsEveryField<KeystrokeEvent>);

/// A stretch of time in which one application was frontmost.
struct AppFocusSpan {
    double t = 0;
    double duration = 0;
    std::string bundleID;
    std::string name;

    static constexpr auto fields =
        std::tuple{field("t", &AppFocusSpan::t), field("duration", &AppFocusSpan::duration),
                   field("bundleID", &AppFocusSpan::bundleID), field("name", &AppFocusSpan::name)};
    bool operator==(AppFocusSpan const&) const = default;
};
static_assert(listsEveryField<AppFocusSpan>);

struct RecordingMetadata {
    Size2 captureSize;
    double scaleFactor = 1;                                    // pixels per point of the captured display
    std::vector<CursorSample> cursorSamples;                   // ascending in time
    std::optional<std::vector<CursorSample>> rawCursorSamples; // the recorded path, once cursorSamples is smoothed
    std::vector<ClickEvent> clicks;                            // ascending in time
    std::vector<KeystrokeEvent> keystrokes;                    // ascending in time
    std::vector<AppFocusSpan> appSpans;
    std::vector<float> micLevels;
    CaptureHealth health;

    /// Time of the last thing logged.
    double duration() const;
    /// Whether nothing was logged: no samples, clicks, keys, spans or levels.
    bool isEmpty() const;
    /// Where the pointer was, linear between samples and held before the first and after the last; none without
    /// samples.
    std::optional<UnitPoint2> cursorPosition(double t) const;
    /// The application in front at that time; of overlapping spans the last one listed.
    AppFocusSpan const* application(double t) const;

    static constexpr auto fields = std::tuple{
        field("captureSize", &RecordingMetadata::captureSize),
        field("scaleFactor", &RecordingMetadata::scaleFactor),
        field("cursorSamples", &RecordingMetadata::cursorSamples),
        field("rawCursorSamples", &RecordingMetadata::rawCursorSamples),
        field("clicks", &RecordingMetadata::clicks),
        field("keystrokes", &RecordingMetadata::keystrokes),
        field("appSpans", &RecordingMetadata::appSpans),
        field("micLevels", &RecordingMetadata::micLevels),
        field("health", &RecordingMetadata::health),
    };
    bool operator==(RecordingMetadata const&) const = default;
};
static_assert(listsEveryField<RecordingMetadata>);

/// The same query on any list of samples in ascending time.
std::optional<UnitPoint2> cursorPosition(std::vector<CursorSample> const& samples, double t);

}
