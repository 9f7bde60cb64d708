#include <TavaroCore/Direction/SmartDirector.h>

#include <TavaroCore/Overlays/Overlay.h>
#include <TavaroCore/Recording/RecordingMetadata.h>

#include <algorithm>

namespace tavaro {

namespace {

constexpr double readableSeconds = 0.6;         // no keycap leaves the screen sooner
constexpr double holdSeconds = 1.4;             // after the last press
constexpr double repeatSeconds = 0.8;           // the same shortcut pressed again so soon is the same keycap
constexpr double patienceSeconds = 1;           // a shortcut that would show later than that is left out
constexpr UnitPoint2 belowTheMiddle{0.5, 0.79}; // over the captions

/// How long a keycap that came at `start` stays after a press.
double durationAfter(double press, double start) { return std::max(press + holdSeconds - start, readableSeconds); }

Overlay keycap(KeystrokeEvent const& stroke, double start) {
    return {.kind = {OverlayKind::Keycap{stroke.keys}},
            .start = start,
            .duration = durationAfter(stroke.t, start),
            .position = belowTheMiddle,
            .animationIn = OverlayAnimation::scale,
            .animationOut = OverlayAnimation::fade,
            .animationDuration = 0.18,
            .isAutomatic = true};
}

bool shows(Overlay const& overlay, KeystrokeEvent const& stroke) {
    return std::get<OverlayKind::Keycap>(overlay.kind.content).keys == stroke.keys;
}

}

std::vector<Overlay> SmartDirector::keystrokeOverlays(RecordingMetadata const& recording) {
    std::vector<Overlay> overlays;
    double lastPress = 0;
    for (auto const& stroke : recording.keystrokes) {
        if (!stroke.isShortcut || stroke.keys.empty()) continue;
        if (overlays.empty()) {
            overlays.push_back(keycap(stroke, stroke.t));
        } else if (auto& shown = overlays.back(); shows(shown, stroke) && stroke.t - lastPress <= repeatSeconds) {
            shown.duration = durationAfter(stroke.t, shown.start);
        } else {
            double const start = std::max(stroke.t, shown.start + readableSeconds);
            if (start - stroke.t > patienceSeconds) continue;
            shown.duration = std::min(shown.duration, start - shown.start);
            overlays.push_back(keycap(stroke, start));
        }
        lastPress = stroke.t;
    }
    return overlays;
}

}
