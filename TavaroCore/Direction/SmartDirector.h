#pragma once

#include <TavaroCore/Direction/DirectorReport.h>
#include <TavaroCore/Direction/PolishOptions.h>
#include <TavaroCore/Direction/ZoomTuning.h>
#include <TavaroCore/Project/DemoMode.h>
#include <TavaroCore/Values/Geometry.h>

#include <span>
#include <vector>

namespace tavaro {

struct ClickEvent;
enum class CameraPlacement;
struct DemoProject;
struct Overlay;
struct RecordingMetadata;
struct ScreenStyle;
struct ZoomEvent;

/// Clicks near each other in time and place: what one zoom would show. Borrows the clicks it was merged from.
struct ZoomCandidate {
    double start = 0; // time of the first click
    double end = 0;   // time of the last click
    UnitPoint2 focus; // mean of the clicks
    std::span<ClickEvent const> clicks;
};

/// Turns a raw take into a first edit. Linear in the length of the take; pure, so any thread.
class SmartDirector {
public:
    SmartDirector(PolishOptions const& settings, DemoMode mode) : settings_(settings), mode_(mode) {}

    PolishOptions const& settings() const { return settings_; }
    DemoMode mode() const { return mode_; }

    /// Replaces what an earlier polish made; what was made by hand stays. Polishing again changes nothing. Never fails:
    /// a step without input adds nothing.
    DirectorReport polish(DemoProject& project) const;

    /// Zooms onto the clicks of a take of that many seconds, ascending, each marked automatic.
    std::vector<ZoomEvent> zoomEvents(RecordingMetadata const& recording, double duration) const;

    /// Clusters of clicks that are ascending in time; they borrow `clicks`.
    static std::vector<ZoomCandidate> merge(std::span<ClickEvent const> clicks, ZoomTuning const& tuning);

    /// How much a cluster deserves a zoom, 0…1. `typing` holds the ascending times of the keystrokes that are not
    /// shortcuts.
    static double importance(ZoomCandidate const& candidate, std::span<double const> typing);

    /// Ends a zoom just before a click that it would hide, where enough of the zoom is left. Clicks ascending in time.
    static std::vector<ZoomEvent> endingBeforeUnseenClicks(std::vector<ZoomEvent> zooms,
                                                           std::span<ClickEvent const> clicks);

    /// The zooms that do not intersect any of the existing ones, loupes included.
    static std::vector<ZoomEvent> clearOfHandMade(std::vector<ZoomEvent> zooms, std::span<ZoomEvent const> existing);

    /// The framing that a mode promises for a recording of that size.
    static ScreenStyle screenStyle(DemoMode mode, Size2 recorded);

    /// The corner near which least happens; of equally quiet ones bottom right, then bottom left, top right, top left.
    static CameraPlacement bestCameraPlacement(RecordingMetadata const& recording);

    /// A keycap for each shortcut, none for plain typing. Quick repeats share one, no two overlap, and each stays at
    /// least 0.6 s: what follows sooner waits, or is left out when it would come a second late.
    static std::vector<Overlay> keystrokeOverlays(RecordingMetadata const& recording);

private:
    PolishOptions settings_;
    DemoMode mode_;
};

}
