#include "RandomDocument.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace tavaro {

namespace {

constexpr double tick = 1.0 / 64;

std::string span(double start, double duration) { return fmt::format(" {:.9g}+{:.9g}", start, duration); }

std::string drawn(ZoomEvent const& zoom) {
    return span(zoom.start, zoom.duration) + fmt::format("/{:.9g}/{:.9g}", zoom.rampIn, zoom.rampOut);
}
std::string drawn(Overlay const& overlay) { return span(overlay.start, overlay.duration); }
std::string drawn(SilenceSpan const& silence) { return span(silence.start, silence.duration); }
std::string drawn(LayoutCue const& cue) { return fmt::format(" {:.9g}", cue.time); }
std::string drawn(AudioClip const& clip) {
    return span(clip.start, clip.duration) +
           fmt::format("@{:.9g}×{:.9g}/{:.9g}/{:.9g}", clip.sourceStart, clip.speed, clip.fadeIn, clip.fadeOut);
}
std::string drawn(VideoClip const& clip) {
    return span(clip.start, clip.duration) + fmt::format("@{:.9g}×{:.9g}", clip.sourceStart, clip.speed);
}
std::string drawn(CaptionCue const& cue) {
    auto text = span(cue.start, cue.duration) + "'" + cue.text + "'";
    for (auto const& word : cue.words) text += fmt::format(" {}{:.9g}-{:.9g}", word.text, word.start, word.end);
    return text;
}
std::string drawn(VoiceoverSegment const& segment) {
    return span(segment.start, segment.duration()) +
           fmt::format("^{:.9g}{}", segment.anchor.value_or(-1), segment.isDirty ? "!" : "");
}

template<class Item> std::string lane(std::string name, std::vector<Item> const& items) {
    for (auto const& item : items) name += drawn(item);
    return name + "\n";
}

}

double RandomDocument::time(double from, double to) {
    int const ticks = static_cast<int>(std::floor((to - from) / tick));
    return from + tick * below(ticks + 1);
}

TimeRange RandomDocument::range(double within, double shortest) {
    double const duration = time(shortest, within);
    return {time(0, within - duration), duration};
}

VideoClip RandomDocument::clip(double sourceFrom) {
    static constexpr double speeds[] = {1, 1, 1, 2, 0.5, 4, 0};
    return {.asset = "screen.mp4",
            .sourceStart = sourceFrom + time(0.25, 2),
            .duration = time(0.25, 6),
            .speed = speeds[below(7)]};
}

void RandomDocument::addItems(DemoProject& project) {
    double const end = project.duration();
    for (int i = below(7); i > 0; --i) {
        auto const zoom = range(end);
        project.zoomEvents.push_back({.start = zoom.start,
                                      .duration = zoom.duration,
                                      .rampIn = zoom.duration / 2,
                                      .rampOut = zoom.duration / 4});
        auto const overlay = range(end);
        project.overlays.push_back({.start = overlay.start, .duration = overlay.duration});
        auto const silence = range(end);
        project.silences.push_back({.start = silence.start, .duration = silence.duration, .isRemoved = below(2) == 0});
        project.layoutCues.push_back({.time = time(0, end)});

        auto const shown = range(end, 16 * tick);
        CaptionCue cue{.start = shown.start, .duration = shown.duration, .text = "first second"};
        double const middle = time(shown.start + 8 * tick, shown.end() - 8 * tick);
        cue.words = {{"first", shown.start, middle}, {"second", middle, shown.end()}};
        if (below(3) == 0) cue.text = "typed by hand";
        project.captions.cues.push_back(cue);

        auto const spoken = range(end);
        if (!project.voiceover) project.voiceover.emplace();
        project.voiceover->segments.push_back({.text = "line",
                                               .anchor = spoken.start,
                                               .audioDuration = spoken.duration,
                                               .start = spoken.start,
                                               .isDirty = false});
    }
}

void RandomDocument::addSound(DemoProject& project) {
    AudioTrack microphone{.role = AudioRole::microphone}, music{.role = AudioRole::music};
    for (auto const& clip : project.timeline.clips) {
        if (clip.speed == 0) continue;
        microphone.clips.push_back({.asset = "mic.m4a",
                                    .start = clip.start,
                                    .sourceStart = clip.sourceStart,
                                    .duration = clip.duration,
                                    .fadeIn = 2 * tick,
                                    .fadeOut = 2 * tick,
                                    .speed = clip.speed});
    }
    auto const played = range(project.duration());
    music.clips.push_back({.asset = "music.mp3", .start = played.start, .duration = played.duration, .fadeOut = 0.5});
    project.audioTracks = {microphone, music};
}

DemoProject RandomDocument::make() {
    DemoProject project;
    project.assetDurations = {{"screen.mp4", recordingSeconds}, {"mic.m4a", recordingSeconds}, {"music.mp3", 300}};
    auto& clips = project.timeline.clips;
    double source = 0;
    for (int i = 1 + below(8); i > 0; --i) {
        clips.push_back(clip(source));
        source = clips.back().sourceStart + clips.back().sourceSpan();
    }
    if (below(2)) std::shuffle(clips.begin(), clips.end(), random_);
    for (std::size_t i = 1; i < clips.size(); ++i) clips[i].start = clips[i - 1].end();
    auto& log = project.metadata.edit();
    for (double t = 0; t < 64; t += 0.25) {
        log.keystrokes.push_back({.t = t, .keys = {"a"}, .isShortcut = below(24) == 0});
        if (below(12) == 0) t += 2;
    }
    addItems(project);
    addSound(project);
    return project;
}

std::string drawn(DemoProject const& project) {
    auto text = lane("clips", project.timeline.clips) + lane("zooms", project.zoomEvents) +
                lane("overlays", project.overlays) + lane("silences", project.silences) +
                lane("captions", project.captions.cues) + lane("layouts", project.layoutCues);
    for (auto const& track : project.audioTracks) text += lane(std::string(nameOf(track.role)), track.clips);
    if (project.voiceover) text += lane("voice", project.voiceover->segments);
    return text;
}

}
