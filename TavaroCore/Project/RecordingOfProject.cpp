#include <TavaroCore/Project/RecordingOfProject.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Timeline/Private/LogOnTimeline.h>

#include <algorithm>
#include <map>
#include <utility>

namespace tavaro {

namespace {

constexpr double logOverrun = 1; // seconds that a log goes on after the last frame

bool holdsLog(DemoProject const& project, std::string const& asset, double logged) {
    auto const known = project.assetDurations.find(asset);
    return known == project.assetDurations.end() || known->second + logOverrun >= logged;
}

}

std::string_view recordingAsset(DemoProject const& project) {
    auto const& clips = project.timeline.clips;
    if (clips.empty()) return {};
    double const logged = project.metadata->duration();
    std::map<std::string_view, double> shownSeconds;
    for (auto const& clip : clips) shownSeconds[clip.asset] += std::max(clip.sourceSpan(), 0.0);
    auto const isBetter = [&](VideoClip const& a, VideoClip const& b) {
        return std::pair(holdsLog(project, a.asset, logged), shownSeconds[a.asset]) >
               std::pair(holdsLog(project, b.asset, logged), shownSeconds[b.asset]);
    };
    auto const* best = &clips.front();
    for (auto const& clip : clips) {
        if (clip.asset != best->asset && isBetter(clip, *best)) best = &clip;
    }
    return best->asset;
}

double recordedSeconds(DemoProject const& project) {
    double seconds = project.metadata->duration();
    auto const asset = recordingAsset(project);
    if (auto const known = project.assetDurations.find(std::string(asset)); known != project.assetDurations.end())
        return std::max(seconds, known->second);
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
