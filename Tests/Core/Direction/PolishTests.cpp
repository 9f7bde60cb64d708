#include <TavaroCore/Direction/SmartDirector.h>
#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Editing/SilenceRemoval.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroCore/Style/BackgroundPreset.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

using namespace tavaro;
using testing::ElementsAre;

namespace {

DemoProject randomTake(unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0, 1);
    DemoProject project;
    project.sourceSize = {1920, 1080};
    double const duration = 5 + 40 * unit(random);
    auto& recording = project.metadata.edit();
    for (double t = 0; t < duration; t += 1 / 30.0) {
        recording.cursorSamples.push_back({t, {unit(random), unit(random)}});
    }
    for (unsigned i = random() % 25; i > 0; --i) {
        recording.clicks.push_back({.t = unit(random) * duration,
                                    .position = {unit(random), unit(random)},
                                    .isDrag = random() % 4 == 0,
                                    .application = random() % 2 ? std::optional<std::string>("Code") : std::nullopt});
    }
    std::sort(recording.clicks.begin(), recording.clicks.end(), [](auto& a, auto& b) { return a.t < b.t; });
    for (double t = 0; t < duration; t += 3) recording.keystrokes.push_back({.t = t, .keys = {"a"}});
    for (double t = unit(random); t < duration; t += 4 * unit(random)) {
        recording.keystrokes.push_back({.t = t, .keys = {"⌃", random() % 2 ? "C" : "V"}, .isShortcut = true});
    }
    std::sort(recording.keystrokes.begin(), recording.keystrokes.end(), [](auto& a, auto& b) { return a.t < b.t; });
    for (int i = 0; i < duration * 10; ++i) recording.micLevels.push_back(i / 20 % 2 ? 0.2f : 0.0f);
    double const cut = duration * unit(random);
    project.timeline.clips = {{.asset = "a.mp4", .duration = cut},
                              {.asset = "a.mp4",
                               .start = cut,
                               .sourceStart = std::min(cut + 1, duration),
                               .duration = std::max(duration - cut - 1, 0.0)}};
    for (unsigned i = random() % 4; i > 0; --i) {
        project.zoomEvents.push_back({.start = unit(random) * duration,
                                      .duration = 3 * unit(random),
                                      .motionBlur = 0.4,
                                      .style = static_cast<ZoomStyle>(random() % 2)});
    }
    project.overlays = {{.start = 1}, {.start = 2, .isAutomatic = true}};
    project.cameraMoves = {{.time = 1}, {.time = 2, .isAutomatic = true}};
    project.cursor.smoothing = unit(random);
    project.layoutCues = {{.time = duration / 2, .scene = SceneLayout::screenOnly}};
    if (random() % 2) project.cameraAsset = "camera.mp4";
    project.cameraDirectorStyle = static_cast<CameraDirectorStyle>(random() % 4);
    project.audioTracks = {{.role = AudioRole::microphone}, {.role = AudioRole::music}, {.role = AudioRole::system}};
    if (random() % 2) project.voiceover = VoiceoverPlan{.segments = {{.text = "Open the settings."}}};
    return project;
}

PolishOptions randomOptions(unsigned seed) {
    std::mt19937 random(seed);
    PolishOptions options;
    forEachField<PolishOptions>([&](auto const& field) { options.*field.member = random() % 4 != 0; });
    return options;
}

constexpr double quietSeconds = 60;

/// A minute of talk and pauses, with some clicks and a pointer that rests but for its jumps to them.
DemoProject quietTake(std::mt19937& random) {
    std::uniform_real_distribution<double> unit(0, 1);
    DemoProject project;
    project.assetDurations = {{"a.mp4", quietSeconds}};
    project.timeline.clips = {{.asset = "a.mp4", .duration = quietSeconds}};
    project.audioTracks = {{.clips = {{.asset = "a.mp4", .duration = quietSeconds}}}};
    auto& recording = project.metadata.edit();
    float level = 0;
    for (int i = 0; i < quietSeconds * 10; ++i) {
        if (unit(random) < 0.08) level = level > 0 ? 0.0f : 0.1f;
        recording.micLevels.push_back(level);
    }
    for (double t = 3 * unit(random); t < quietSeconds; t += 8 * unit(random))
        recording.clicks.push_back({.t = t, .position = {unit(random), unit(random)}});
    UnitPoint2 pointer;
    auto click = recording.clicks.begin();
    for (int frame = 0; frame < quietSeconds * 30; ++frame) {
        double const t = frame / 30.0;
        if (click != recording.clicks.end() && click->t <= t) pointer = (click++)->position;
        recording.cursorSamples.push_back({t, pointer});
    }
    return project;
}

void editAtRandom(DemoProject& project, std::mt19937& random) {
    std::uniform_real_distribution<double> unit(0, 1);
    for (unsigned turn = random() % 8; turn > 0; --turn) {
        TimeRange const range{project.duration() * unit(random), 6 * unit(random)};
        switch (random() % 4) {
        case 0: removeTimeRange(project, range.start, range.duration); break;
        case 1: changeSpeed(project, range, unit(random) < 0.5 ? 0.25 + unit(random) : 1 + 7 * unit(random)); break;
        case 2: insertTime(project, range.start, range.duration); break;
        default: splitClip(project, range.start);
        }
    }
}

/// Whether no level that the edit shows in the range is loud.
bool isQuiet(DemoProject const& project, TimeRange const& range) {
    auto const& levels = project.metadata->micLevels;
    for (double t = range.start; t < range.end(); t += 0.01) {
        auto const recorded = recordingOnTimeline(project).recordedTime(t);
        if (recorded && levels.at(static_cast<std::size_t>(std::min(*recorded, quietSeconds - 0.01) * 10)) > 0.018f)
            return false;
    }
    return true;
}

template<class Item> std::vector<Item> handMade(std::vector<Item> items) {
    std::erase_if(items, [](auto const& item) { return item.isAutomatic; });
    return items;
}

/// A take of 20 s with one click in a small window after 6 s.
DemoProject oneClick() {
    DemoProject project;
    project.timeline.clips = {{.duration = 20}};
    project.metadata.edit().clicks = {
        {.t = 6, .position = {0.5, 0.5}, .windowFrame = NormalizedRect{0.4, 0.4, 0.2, 0.2}}};
    return project;
}

DirectorReport polish(DemoProject& project, DemoMode mode = DemoMode::website, PolishOptions const& options = {}) {
    return SmartDirector(options, mode).polish(project);
}

}

TEST(Polish, polishingTwiceEqualsOnce) {
    for (unsigned seed = 1; seed <= 40; ++seed) {
        for (auto const mode : allCases<DemoMode>()) {
            auto once = randomTake(seed);
            auto const options = seed == 1 ? PolishOptions{} : randomOptions(seed);
            auto const report = polish(once, mode, options);
            auto twice = once;
            EXPECT_EQ(polish(twice, mode, options), report) << "seed " << seed << " " << nameOf(mode);
            EXPECT_EQ(twice, once) << "seed " << seed << " " << nameOf(mode);
            EXPECT_TRUE(twice.metadata.sharesWith(once.metadata)) << "an unchanged log is not copied";
        }
    }
}

TEST(Polish, aPolishedDocumentIsTheSameAfterSavingAndLoading) {
    for (auto const mode : allCases<DemoMode>()) {
        auto project = randomTake(9);
        polish(project, mode);
        EXPECT_EQ(decodeProject(encodeProject(project)), project) << nameOf(mode);
    }
}

TEST(Polish, whatIsMadeByHandSurvivesAndNoZoomIsPutOverIt) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        auto const before = randomTake(seed);
        auto after = before;
        auto const report = polish(after, DemoMode::terminal, randomOptions(seed));
        auto kept = handMade(before.zoomEvents);
        std::stable_sort(kept.begin(), kept.end(), [](auto& a, auto& b) { return a.start < b.start; });
        auto now = handMade(after.zoomEvents);
        std::stable_sort(now.begin(), now.end(), [](auto& a, auto& b) { return a.start < b.start; });
        EXPECT_EQ(now, kept) << "seed " << seed;
        EXPECT_EQ(after.zoomEvents.size(), kept.size() + static_cast<std::size_t>(report.zoomsAdded));
        for (auto const& zoom : after.zoomEvents) {
            for (auto const& hand : kept) {
                EXPECT_FALSE(zoom.isAutomatic && zoom.range().intersects(hand.range())) << "seed " << seed;
            }
        }
        EXPECT_EQ(handMade(after.overlays), handMade(before.overlays)) << "seed " << seed;
        EXPECT_EQ(handMade(after.cameraMoves), handMade(before.cameraMoves)) << "seed " << seed;
        EXPECT_EQ(handMade(after.layoutCues), handMade(before.layoutCues)) << "seed " << seed;
    }
}

TEST(Polish, smoothingStartsFromTheRecordedPathEachTime) {
    auto project = randomTake(3);
    auto const recorded = project.metadata->cursorSamples;
    auto const copy = project;
    EXPECT_EQ(polish(project).cursorSamplesSmoothed, static_cast<std::int64_t>(recorded.size()));
    EXPECT_EQ(project.metadata->rawCursorSamples, recorded);
    EXPECT_NE(project.metadata->cursorSamples, recorded);
    EXPECT_EQ(copy.metadata->cursorSamples, recorded) << "a copy for undo keeps the old path";

    project.cursor.smoothing = 0;
    polish(project);
    EXPECT_EQ(project.metadata->cursorSamples, recorded);

    auto untouched = copy;
    PolishOptions options;
    options.cursorSmoothing = false;
    EXPECT_EQ(polish(untouched, DemoMode::website, options).cursorSamplesSmoothed, 0);
    EXPECT_TRUE(untouched.metadata.sharesWith(copy.metadata));
}

TEST(Polish, zoomsFollowThePictureThroughCuts) {
    auto project = oneClick();
    project.timeline.clips = {{.duration = 2}, {.start = 2, .sourceStart = 5, .duration = 10}}; // 2…5 is cut
    EXPECT_EQ(polish(project).zoomsAdded, 1);
    EXPECT_NEAR(project.zoomEvents.front().start, 3 - 0.45, 1e-12);

    project.timeline.clips = {{.duration = 5}}; // the click is not shown any more
    auto const report = polish(project);
    EXPECT_EQ(report.zoomsAdded, 0);
    EXPECT_TRUE(project.zoomEvents.empty());
    EXPECT_EQ(report.clicksDetected, 1) << "clicks of the recording are counted";
}

TEST(Polish, plainModeAddsNoZoomsAndNoFraming) {
    auto project = oneClick();
    EXPECT_EQ(polish(project, DemoMode::plain).zoomsAdded, 0);
    EXPECT_TRUE(project.zoomEvents.empty());
    EXPECT_EQ(project.screen, ScreenStyle{});
    PolishOptions options;
    options.smartZoom = false;
    EXPECT_EQ(polish(project, DemoMode::website, options).zoomsAdded, 0);
}

TEST(Polish, clickHighlightsShowThePointerAndAnEffect) {
    auto project = oneClick();
    project.cursor.isVisible = false;
    project.cursor.clickEffect = ClickEffect::none;
    polish(project);
    EXPECT_TRUE(project.cursor.isVisible);
    EXPECT_EQ(project.cursor.clickEffect, ClickEffect::ripple);
    project.cursor.clickEffect = ClickEffect::prism;
    polish(project);
    EXPECT_EQ(project.cursor.clickEffect, ClickEffect::prism) << "a chosen effect stays";
    PolishOptions options;
    options.clickHighlights = false;
    polish(project, DemoMode::website, options);
    EXPECT_EQ(project.cursor.clickEffect, ClickEffect::none);
}

TEST(Polish, motionBlurOffLeavesHandMadeZoomsTheirs) {
    auto project = oneClick();
    project.zoomEvents = {{.start = 12, .duration = 2, .motionBlur = 0.4}};
    polish(project);
    ASSERT_EQ(project.zoomEvents.size(), 2u);
    EXPECT_EQ(project.zoomEvents[0].motionBlur, 0.65);
    PolishOptions options;
    options.motionBlur = false;
    polish(project, DemoMode::website, options);
    EXPECT_EQ(project.zoomEvents[0].motionBlur, 0);
    EXPECT_EQ(project.zoomEvents[1].motionBlur, 0.4);
}

TEST(Polish, aChosenBackgroundStaysAndABareOneIsReplaced) {
    auto project = oneClick();
    polish(project);
    EXPECT_EQ(project.background, BackgroundPreset::all().at(6).style);
    EXPECT_EQ(project.screen, SmartDirector::screenStyle(DemoMode::website, project.sourceSize));
    project.background = BackgroundPreset::all().front().style;
    polish(project, DemoMode::desktopApp);
    EXPECT_EQ(project.background, BackgroundPreset::all().front().style);
    EXPECT_EQ(project.screen, SmartDirector::screenStyle(DemoMode::desktopApp, project.sourceSize));

    DemoProject untouched;
    PolishOptions options;
    options.background = false;
    polish(untouched, DemoMode::website, options);
    EXPECT_TRUE(untouched.background.isNone());
    EXPECT_EQ(untouched.screen, ScreenStyle{});
}

TEST(Polish, everyModeKeepsThePromiseOfItsSummary) {
    constexpr Size2 recorded{1920, 1080};
    EXPECT_EQ(SmartDirector::screenStyle(DemoMode::website, recorded).frame, DeviceFrame::browserLight);
    auto const window = SmartDirector::screenStyle(DemoMode::desktopApp, recorded);
    EXPECT_EQ(window.frame, DeviceFrame::none);
    for (auto const mode : allCases<DemoMode>()) {
        auto const style = SmartDirector::screenStyle(mode, recorded);
        EXPECT_LE(style.shadowOpacity, window.shadowOpacity) << "the desktop window has the deepest shadow";
        EXPECT_TRUE(mode == DemoMode::plain || (style.padding >= 0.04 && style.padding <= 0.1)) << nameOf(mode);
    }
}

TEST(Polish, onlyAnUprightRecordingOfAnAppGetsAnUprightDevice) {
    struct Case {
        Size2 recorded;
        std::optional<NormalizedRect> crop;
        DeviceFrame frame;
    };
    for (auto const& [recorded, crop, frame] :
         {Case{{1179, 2556}, {}, DeviceFrame::iphone}, Case{{1080, 1920}, {}, DeviceFrame::iphone},
          Case{{1536, 2048}, {}, DeviceFrame::ipad}, Case{{1600, 2560}, {}, DeviceFrame::ipad},
          Case{{1000, 1000}, {}, DeviceFrame::ipad}, Case{{1920, 1080}, {}, DeviceFrame::ipad},
          Case{{2556, 1179}, {}, DeviceFrame::ipad},
          Case{{1920, 1080}, NormalizedRect{0.35, 0, 0.25, 1}, DeviceFrame::iphone}}) {
        DemoProject project;
        project.sourceSize = recorded;
        project.sourceCrop = crop;
        polish(project, DemoMode::mobileApp);
        EXPECT_EQ(project.screen.frame, frame) << recorded.width << " × " << recorded.height;
    }
}

TEST(Polish, silencesOfTheRecordingLieWhereTheEditShowsThem) {
    DemoProject project;
    project.assetDurations = {{"screen.mp4", 20}};
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 20}};
    auto& recording = project.metadata.edit();
    recording.micLevels.assign(200, 0.3f);
    std::fill(recording.micLevels.begin() + 50, recording.micLevels.begin() + 100, 0.0f); // quiet from 5 s to 10 s
    auto report = polish(project);
    EXPECT_EQ(report.silencesFound, 1);
    EXPECT_NEAR(report.silenceSecondsRemovable, 4.75, 1e-9);
    ASSERT_EQ(project.silences.size(), 1u);
    EXPECT_NEAR(project.silences[0].start, 5.125, 1e-9);
    EXPECT_TRUE(project.silences[0].isRemoved);

    // 6…8 is cut, and what follows plays twice as fast
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 6},
                              {.asset = "screen.mp4", .start = 6, .sourceStart = 8, .duration = 6, .speed = 2}};
    report = polish(project);
    ASSERT_EQ(project.silences.size(), 1u) << "what stays end to end is one";
    EXPECT_NEAR(project.silences[0].start, 5.125, 1e-9);
    EXPECT_NEAR(project.silences[0].range().end(), 6 + (10.0 - 8) / 2 - 0.125, 1e-9) << "room in seconds of the film";

    PolishOptions options;
    options.removeSilence = false;
    EXPECT_EQ(polish(project, DemoMode::website, options).silencesFound, 0);
    EXPECT_EQ(project.silences.size(), 1u) << "left as they were";
}

TEST(Polish, aStrayEventBehindTheMovieMovesNoLevel) {
    DemoProject project;
    project.assetDurations = {{"screen.mp4", 20}};
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 20}};
    project.metadata.edit().micLevels.assign(200, 0.3f);
    auto& levels = project.metadata.edit().micLevels;
    std::fill(levels.begin() + 50, levels.begin() + 100, 0.0f);
    polish(project);
    auto const silences = project.silences;
    ASSERT_EQ(silences.size(), 1u);
    project.metadata.edit().keystrokes = {{.t = 60, .keys = {"a"}}};
    polish(project);
    EXPECT_EQ(project.silences, silences) << "speech would be offered";
}

TEST(Polish, anEditedFilmIsOfferedTheSilencesThatItHasAndNoneOnceTheyAreRemoved) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        std::mt19937 random(seed);
        auto project = quietTake(random);
        editAtRandom(project, random);
        polish(project);
        auto const log = logOnTimeline(project);
        for (auto const& silence : project.silences) {
            EXPECT_GE(silence.duration, 1.2 - 0.25 - 1e-5) << "seed " << seed << " at " << silence.start;
            EXPECT_TRUE(isQuiet(project, silence.range())) << "seed " << seed << " at " << silence.start;
            for (auto const& click : log.clicks) EXPECT_FALSE(silence.range().contains(click.t)) << "seed " << seed;
        }
        removeAllSilence(project);
        EXPECT_EQ(polish(project).silencesFound, 0) << "seed " << seed;
    }
}

TEST(Polish, whatACutBringsTogetherIsOneSilence) {
    DemoProject project;
    project.assetDurations = {{"screen.mp4", 10}};
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 10}};
    auto& levels = project.metadata.edit().micLevels;
    levels.assign(100, 0.3f);
    std::fill(levels.begin() + 30, levels.begin() + 40, 0.0f);
    std::fill(levels.begin() + 60, levels.begin() + 70, 0.0f);
    EXPECT_EQ(polish(project).silencesFound, 0) << "each pause is short";
    removeTimeRange(project, 4, 2);
    EXPECT_EQ(polish(project).silencesFound, 1);
    EXPECT_NEAR(project.silences.at(0).range().end(), 4.875, 1e-9);
}

TEST(Polish, theVoiceIsEnhancedAndMusicMakesRoomForIt) {
    DemoProject project;
    for (auto const role : allCases<AudioRole>()) project.audioTracks.push_back({.role = role});
    polish(project);
    for (auto const& track : project.audioTracks) {
        bool const isVoice = track.role == AudioRole::microphone;
        EXPECT_EQ(track.noiseReduction && track.voiceClarity && track.normalize, isVoice) << nameOf(track.role);
        EXPECT_EQ(track.noiseReduction || track.voiceClarity || track.normalize, isVoice) << nameOf(track.role);
        EXPECT_EQ(track.duckedBy == AudioRole::voiceover, track.role == AudioRole::music) << nameOf(track.role);
    }
}

TEST(Polish, noKeycapWaitsPastTheEnd) {
    auto project = oneClick();
    for (double const t : {19.5, 19.7, 19.9}) {
        project.metadata.edit().keystrokes.push_back(
            {.t = t, .keys = {"⌃", t == 19.7 ? "V" : "C"}, .isShortcut = true});
    }
    EXPECT_EQ(polish(project).overlaysAdded, 1);
    for (auto const& overlay : project.overlays) EXPECT_GT(overlay.duration, 0) << "at " << overlay.start;
}

TEST(Polish, theCameraGoesToTheQuietestCorner) {
    DemoProject project;
    project.timeline.clips = {{.duration = 10}};
    polish(project);
    EXPECT_EQ(project.camera.placement, CameraPlacement::bottomRight) << "all are equally quiet";
    EXPECT_TRUE(project.camera.avoidsContent);
    auto& recording = project.metadata.edit();
    recording.clicks = {{.t = 1, .position = {0.9, 0.9}}, {.t = 2, .position = {0.1, 0.8}}};
    for (int i = 0; i < 50; ++i) recording.keystrokes.push_back({.t = 3 + i * 0.1, .keys = {"a"}});
    recording.cursorSamples = {{0, {0.7, 0.1}}, {1, {0.95, 0.05}}, {2, {0.7, 0.1}}};
    PolishOptions options;
    options.cursorSmoothing = false;
    polish(project, DemoMode::website, options);
    EXPECT_EQ(project.camera.placement, CameraPlacement::topLeft);

    project.camera = {.isEnabled = false};
    polish(project);
    EXPECT_EQ(project.camera, (CameraSettings{.isEnabled = false}));
}

TEST(Polish, voiceoverBecomesCaptions) {
    DemoProject project;
    project.timeline.clips = {{.duration = 30}};
    project.captions.cues = {{.start = 1, .duration = 1, .text = "kept while there is no voice-over"}};
    EXPECT_EQ(polish(project).captionCues, 0);
    EXPECT_EQ(project.captions.cues.size(), 1u);
    project.voiceover = VoiceoverPlan{
        .segments = {{.text = "This is where everything of a project begins, and where it ends.", .start = 2},
                     {.text = "Done.", .audioDuration = 1.5, .start = 12}}};
    auto const report = polish(project);
    auto const& cues = project.captions.cues;
    EXPECT_EQ(report.captionCues, 3);
    ASSERT_EQ(cues.size(), 3u);
    EXPECT_TRUE(project.captions.isEnabled);
    EXPECT_EQ(cues[0].start, 2);
    EXPECT_NEAR(cues[1].range().end(), 2 + 12 / 2.7, 1e-9);
    EXPECT_EQ(cues[2].range(), (TimeRange{12, 1.5}));
}

TEST(BackgroundPreset, presetsHaveTheirOwnNamesAndPolishPicksAStillOne) {
    std::set<std::string> ids;
    std::set<std::string> names;
    for (auto const& preset : BackgroundPreset::all()) {
        EXPECT_TRUE(ids.insert(preset.id).second) << preset.id;
        EXPECT_TRUE(names.insert(preset.name).second) << preset.name;
        EXPECT_EQ(BackgroundPreset::withID(preset.id), &preset);
        EXPECT_FALSE(title(preset.family).empty());
        if (auto const* mesh = std::get_if<BackgroundStyle::Mesh>(&preset.style.content)) {
            EXPECT_EQ(mesh->colors.size(), 4u) << preset.id;
            EXPECT_EQ(preset.family, BackgroundFamily::mesh) << preset.id;
        }
        if (auto const* aurora = std::get_if<BackgroundStyle::Aurora>(&preset.style.content)) {
            EXPECT_EQ(aurora->colors.size(), 3u) << preset.id;
        }
    }
    EXPECT_GE(ids.size(), 24u);
    auto const* picked = std::get_if<BackgroundStyle::Mesh>(&BackgroundPreset::all().at(6).style.content);
    EXPECT_TRUE(picked && picked->speed == 0) << "a background that moves would distract";
    EXPECT_EQ(BackgroundPreset::withID("no such"), nullptr);
}

TEST(DirectorReport, saysWhatHappenedAndOnlyThat) {
    EXPECT_THAT(DirectorReport{}.summaryLines(), ElementsAre("Applied polish defaults"));
    EXPECT_THAT((DirectorReport{.zoomsAdded = 1, .clicksDetected = 1, .overlaysAdded = 1}).summaryLines(),
                ElementsAre("Added 1 zoom", "Highlighted 1 click", "Added 1 overlay"));
    EXPECT_THAT((DirectorReport{.zoomsAdded = 3,
                                .clicksDetected = 12,
                                .cursorSamplesSmoothed = 900,
                                .silencesFound = 2,
                                .silenceSecondsRemovable = 4.26,
                                .overlaysAdded = 5,
                                .captionCues = 1})
                    .summaryLines(),
                ElementsAre("Added 3 zooms", "Smoothed cursor path", "Highlighted 12 clicks", "Found 4.3s of silence",
                            "Added 5 overlays", "Generated 1 caption lines"));
    EXPECT_THAT((DirectorReport{.captionCues = 2}).summaryLines(),
                ElementsAre("Applied polish defaults", "Generated 2 caption lines"));
    DemoProject empty;
    EXPECT_THAT(polish(empty).summaryLines(), ElementsAre("Applied polish defaults"));
}
