#include <TavaroCore/Project/RecordingOfProject.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Timeline/Private/LogOnTimeline.h>

#include <algorithm>
#include <cmath>
#include <compare>
#include <map>
#include <utility>

namespace tavaro {

namespace {

constexpr double logOverrun = 1; // seconds that a log goes on after the last frame

/// How well a movie's length goes with the log's, in the order of what counts. Lengths do not change by edits, so
/// neither does the recording.
struct Fit {
    bool holdsLog = true;
    bool isKnown = false;
    double nearness = 0; // minus the seconds that the movie is longer

    auto operator<=>(Fit const&) const = default;
};

Fit fitOf(DemoProject const& project, std::string const& asset, double logged) {
    auto const known = project.assetDurations.find(asset);
    if (known == project.assetDurations.end() || !(logged > 0)) return {};
    return {known->second + logOverrun >= logged, true, -std::abs(known->second - logged)};
}

}

std::string_view recordingAsset(DemoProject const& project) {
    auto const& clips = project.timeline.clips;
    if (clips.empty()) return {};
    double const logged = project.metadata->duration();
    std::map<std::string_view, double> shownSeconds;
    for (auto const& clip : clips) shownSeconds[clip.asset] += std::max(clip.sourceSpan(), 0.0);
    auto const rank = [&](VideoClip const& clip) {
        return std::pair(fitOf(project, clip.asset, logged), shownSeconds[clip.asset]);
    };
    auto const* best = &clips.front();
    for (auto const& clip : clips) {
        if (clip.asset != best->asset && rank(clip) > rank(*best)) best = &clip;
    }
    return best->asset;
}

double recordedSeconds(DemoProject const& project) {
    auto const asset = recordingAsset(project);
    auto const known = project.assetDurations.find(std::string(asset));
    if (known != project.assetDurations.end() && known->second > 0) return known->second;
    double seconds = project.metadata->duration();
    for (auto const& clip : project.timeline.clips) {
        if (clip.asset == asset) seconds = std::max(seconds, clip.sourceStart + clip.sourceSpan());
    }
    return seconds;
}

RecordingOnTimeline recordingOnTimeline(DemoProject const& project) {
    return {project.timeline, recordingAsset(project)};
}

RecordingMetadata logOnTimeline(DemoProject const& project) {
    return logOnTimeline(*project.metadata, recordingOnTimeline(project));
}

}
