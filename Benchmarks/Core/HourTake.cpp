#include "HourTake.h"

#include <TavaroCore/Direction/SmartDirector.h>

#include <algorithm>
#include <random>

namespace tavaro {

namespace {

constexpr double takeSeconds = 3600;
constexpr int samplesPerSecond = 60;
constexpr int clickCount = 2000;
constexpr int keyCount = 12'000;
constexpr int wordCount = 9000;
constexpr int wordsPerCue = 7;
constexpr int clipCount = 300;

using Random = std::mt19937_64;
double unit(Random& random) { return std::uniform_real_distribution<double>(0, 1)(random); }

/// Times as the clock gives them and places as pixels of a 2560 × 1440 display.
void addPointer(RecordingMetadata& log, Random& random) {
    double x = 1280, y = 720;
    for (int i = 0; i < static_cast<int>(takeSeconds) * samplesPerSecond; ++i) {
        x = std::clamp(x + std::round(40 * (unit(random) - 0.5)), 0.0, 2559.0);
        y = std::clamp(y + std::round(40 * (unit(random) - 0.5)), 0.0, 1439.0);
        double const t = (i + 0.2 * unit(random)) / samplesPerSecond;
        log.cursorSamples.push_back({t, {x / 2560, y / 1440}, static_cast<CursorKind>(i / 500 % 3)});
    }
}

void addInput(RecordingMetadata& log, Random& random) {
    for (int i = 0; i < clickCount; ++i) {
        log.clicks.push_back({.t = takeSeconds * unit(random),
                              .position = {unit(random), unit(random)},
                              .application = "Text Editor",
                              .windowFrame = NormalizedRect{0.1, 0.1, 0.3 + 0.5 * unit(random), 0.5}});
    }
    for (int i = 0; i < keyCount; ++i) {
        bool const isShortcut = i % 30 == 0;
        log.keystrokes.push_back(
            {.t = takeSeconds * unit(random),
             .keys = isShortcut ? std::vector<std::string>{"⌘", "S"} : std::vector<std::string>{"a"},
             .isShortcut = isShortcut,
             .application = "Text Editor"});
    }
    auto const earlier = [](auto const& a, auto const& b) { return a.t < b.t; };
    std::sort(log.clicks.begin(), log.clicks.end(), earlier);
    std::sort(log.keystrokes.begin(), log.keystrokes.end(), earlier);
    for (int i = 0; i < static_cast<int>(takeSeconds) * 10; ++i) {
        log.micLevels.push_back(static_cast<float>(unit(random)));
    }
}

void addSpeech(DemoProject& project, Random& random) {
    static constexpr char const* spoken[] = {"so",  "the",      "window",         "opens,",
                                             "and", "settings", "understandable", "here."};
    Transcript transcript;
    for (int i = 0; i < wordCount; ++i) {
        double const start = i * takeSeconds / wordCount + 0.1 * unit(random);
        transcript.words.push_back(
            {.text = spoken[random() % 8], .start = start, .end = start + 0.25, .confidence = 0.9f});
        if (i % wordsPerCue == 0) project.captions.cues.push_back({.start = start});
        auto& cue = project.captions.cues.back();
        cue.words.push_back({transcript.words.back().text, start, start + 0.25});
        cue.text += (cue.text.empty() ? "" : " ") + transcript.words.back().text;
        cue.duration = start + 0.25 - cue.start;
    }
    project.captions.isEnabled = true;
    project.transcript = std::move(transcript);
}

void addEdit(DemoProject& project, Random& random) {
    double const length = takeSeconds / clipCount;
    AudioTrack voice{.role = AudioRole::microphone}, system{.role = AudioRole::system};
    for (int i = 0; i < clipCount; ++i) {
        project.timeline.clips.push_back(
            {.asset = "screen.mp4", .start = i * length, .sourceStart = i * length, .duration = length});
        voice.clips.push_back(
            {.asset = "microphone.m4a", .start = i * length, .sourceStart = i * length, .duration = length});
        system.clips.push_back(
            {.asset = "system.m4a", .start = i * length, .sourceStart = i * length, .duration = length});
    }
    project.audioTracks = {voice, system};
    for (auto const& key : project.metadata->keystrokes) {
        if (!key.isShortcut) continue;
        project.overlays.push_back({.kind = {OverlayContent::Keycap{key.keys}},
                                    .start = key.t,
                                    .duration = 1.2,
                                    .fontSize = 40,
                                    .isAutomatic = false});
    }
    for (int i = 0; i < 700; ++i) project.silences.push_back({.start = i * 5 + unit(random), .duration = 0.8});
    for (int i = 0; i < 120; ++i) project.layoutCues.push_back({.time = i * 30.0, .scene = SceneLayout::overlay});
    for (int i = 0; i < static_cast<int>(takeSeconds) * 2; ++i) {
        project.cameraFaces.edit().push_back({.t = i * 0.5, .rect = {unit(random), unit(random), 0.2, 0.3}});
    }
}

}

DemoProject hourTake() {
    Random random(1);
    DemoProject project;
    project.sourceSize = {2560, 1440};
    addPointer(project.metadata.edit(), random);
    addInput(project.metadata.edit(), random);
    addSpeech(project, random);
    addEdit(project, random);
    SmartDirector({}, DemoMode::website).polish(project);
    return project;
}

}
