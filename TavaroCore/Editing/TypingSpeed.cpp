#include <TavaroCore/Editing/TypingSpeed.h>

#include <TavaroCore/Editing/Private/EditError.h>
#include <TavaroCore/Editing/Private/PictureRange.h>
#include <TavaroCore/Editing/Private/Retime.h>
#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr double longestPause = 1; // seconds between keys of one run
constexpr int fewestKeys = 5;
constexpr double shortestStretch = 2; // seconds of the recording
constexpr double shortestPiece = 0.5; // seconds of output
constexpr double normalSpeed = 1.000001;

/// The parts of the stretches that the edit shows at the recorded speed or slower, in output times, ascending.
std::vector<TimeRange> shownAtEase(DemoProject const& project, std::vector<TimeRange> const& stretches) {
    auto const recording = recordingOnTimeline(project);
    std::vector<TimeRange> shown;
    for (auto const& stretch : stretches) {
        recording.forEachClip(stretch, [&](VideoClip const& clip, TimeRange const& part) {
            double const duration = part.duration / clip.speed;
            bool const isAtEase = clip.speed > 0 && clip.speed <= normalSpeed;
            if (isAtEase && duration >= shortestPiece) shown.push_back({clip.outputTime(part.start), duration});
        });
    }
    std::ranges::sort(shown, {}, &TimeRange::start);
    return shown;
}

}

std::vector<TimeRange> typingStretches(std::vector<KeystrokeEvent> const& keystrokes) {
    std::vector<TimeRange> stretches;
    double first = 0, last = 0;
    int keys = 0;
    auto const close = [&] {
        if (keys >= fewestKeys && last - first >= shortestStretch) stretches.push_back({first, last - first});
    };
    for (auto const& key : keystrokes) {
        if (key.isShortcut) continue;
        if (keys == 0 || key.t - last >= longestPause) {
            close();
            first = key.t;
            keys = 0;
        }
        last = key.t;
        ++keys;
    }
    close();
    return stretches;
}

SpansEdited speedUpTyping(DemoProject& project, double by) {
    if (!std::isfinite(by)) {
        throw EditError(EditError::Kind::badNumber, "Typing cannot be sped up: the factor has to be a number.");
    }
    double const rate = std::clamp(by, 1.0, fastestRate);
    auto const stretches = typingStretches(project.metadata->keystrokes);
    if (rate == 1 || stretches.empty()) return {};
    pictureRange(project, {});
    double const before = project.duration();
    auto const pieces = shownAtEase(project, stretches);
    for (auto piece = pieces.rbegin(); piece != pieces.rend(); ++piece) {
        retime(project, pictureRange(project, *piece), rate);
    }
    return {.count = static_cast<int>(pieces.size()), .seconds = before - project.duration()};
}

}
