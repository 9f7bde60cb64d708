#include <TavaroCore/Editing/RestoredWords.h>

#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroCore/Speech/TimelineWords.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

namespace {

constexpr double margin = 0.08;       // seconds of silence beside a word, where more of it is not wanted
constexpr double mostTaken = 0.7;     // seconds of silence that a cut of words takes at one side
constexpr double leastRemoved = 0.01; // seconds

/// Words next to each other that come back together, by their places in the transcript.
struct Run {
    std::size_t first = 0, last = 0;
    bool followsShown = false, precedesShown = false; // the words beside them are in the film
};

std::vector<Run> runsOf(Transcript const& transcript, std::vector<bool> const& isShown,
                        std::vector<bool> const& isWanted) {
    std::vector<Run> runs;
    auto const count = transcript.words.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (isShown[i] || !isWanted[i]) continue;
        Run run{.first = i, .last = i, .followsShown = i > 0 && isShown[i - 1]};
        while (run.last + 1 < count && !isShown[run.last + 1] && isWanted[run.last + 1]) ++run.last;
        run.precedesShown = run.last + 1 < count && isShown[run.last + 1];
        runs.push_back(run);
        i = run.last;
    }
    return runs;
}

double sourceEnd(VideoClip const& clip) { return clip.sourceStart + clip.sourceSpan(); }

/// The clips of the recording that a moment of it lies between.
struct Neighbours {
    std::optional<VideoClip> before, behind;
};

Neighbours neighboursOf(DemoProject const& project, double moment) {
    Neighbours found;
    auto const asset = std::string(recordingAsset(project));
    for (auto const& clip : project.timeline.clips) {
        if (clip.asset != asset || !(clip.speed > 0)) continue;
        if (sourceEnd(clip) <= moment && (!found.before || sourceEnd(clip) > sourceEnd(*found.before)))
            found.before = clip;
        if (clip.sourceStart >= moment && (!found.behind || clip.sourceStart < found.behind->sourceStart))
            found.behind = clip;
    }
    return found;
}

/// Seconds of the recording.
struct Span {
    double start = 0, end = 0;
};

Span wantedSpan(Transcript const& transcript, Run const& run, Neighbours const& clips) {
    Span span{transcript.words[run.first].start - margin, transcript.words[run.last].end + margin};
    if (clips.before) {
        double const edge = sourceEnd(*clips.before);
        if (span.start < edge || (run.followsShown && span.start - edge <= mostTaken)) span.start = edge;
    }
    if (clips.behind) {
        double const edge = clips.behind->sourceStart;
        if (span.end > edge || (run.precedesShown && edge - span.end <= mostTaken)) span.end = edge;
    }
    span.start = std::max(span.start, 0.0);
    return span;
}

void removeIfAny(DemoProject& project, double start, double duration) {
    if (duration > leastRemoved) removeTimeRange(project, start, duration);
}

/// The clip grows over what is to come back, and what was cut before that is cut again.
void growBehind(DemoProject& project, VideoClip const& clip, Span const& span) {
    double const end = clip.end();
    trimClip(project, clip.id, ClipEdge::trailing, end + (span.end - sourceEnd(clip)) / clip.speed);
    removeIfAny(project, end, (span.start - sourceEnd(clip)) / clip.speed);
}

void growBefore(DemoProject& project, VideoClip const& clip, Span const& span) {
    double const by = (clip.sourceStart - span.start) / clip.speed;
    trimClip(project, clip.id, ClipEdge::leading, clip.start - by);
    removeIfAny(project, clip.start + (span.end - span.start) / clip.speed, (clip.sourceStart - span.end) / clip.speed);
}

void restore(DemoProject& project, Run const& run) {
    auto const& transcript = *project.transcript.value();
    auto const middle = (transcript.words[run.first].start + transcript.words[run.last].end) / 2;
    auto const clips = neighboursOf(project, middle);
    auto const span = wantedSpan(transcript, run, clips);
    double const room = clips.before ? headroom(project, clips.before->id).trailing * clips.before->speed : 0;
    bool const hasRoom = clips.before && sourceEnd(*clips.before) + room >= span.end - leastRemoved;
    if (hasRoom || (clips.before && !clips.behind))
        growBehind(project, *clips.before, span);
    else if (clips.behind)
        growBefore(project, *clips.behind, span);
}

}

double restoreWords(DemoProject& project, std::span<UUID const> words) {
    if (!project.transcript) return 0;
    double const before = project.duration();
    auto const& transcript = *project.transcript.value();
    std::vector<UUID> wanted(words.begin(), words.end());
    std::ranges::sort(wanted);
    std::vector<bool> isShown(transcript.words.size()), isWanted(transcript.words.size());
    for (auto const& word : timelineWords(project)) isShown[word.index] = true;
    for (std::size_t i = 0; i < isWanted.size(); ++i) {
        auto const& word = transcript.words[i];
        isWanted[i] =
            std::isfinite(word.start) && std::isfinite(word.end) && std::ranges::binary_search(wanted, word.id);
    }
    for (auto const& run : runsOf(transcript, isShown, isWanted)) restore(project, run);
    return project.duration() - before;
}

}
