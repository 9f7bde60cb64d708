#include <TavaroCore/Direction/CameraDirector.h>
#include <TavaroCore/Direction/Private/Beats.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using namespace tavaro;
using testing::ElementsAre;

namespace {

/// 40 s with a camera: talk from 0 s to 10 s, work in the bottom right corner from 12 s to 20 s, a change of the screen
/// at its end, and talk again from 28 s on.
DemoProject talkedDemo(CameraDirectorStyle style) {
    DemoProject project;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 40}};
    project.assetDurations = {{"screen.mp4", 40}};
    project.cameraAsset = "camera.mp4";
    project.cameraDirectorStyle = style;
    project.screenSceneChanges = std::vector<double>{20.5};
    auto& recording = project.metadata.edit();
    recording.micLevels.assign(400, 0.0f);
    std::fill(recording.micLevels.begin(), recording.micLevels.begin() + 100, 0.2f);
    std::fill(recording.micLevels.begin() + 280, recording.micLevels.end(), 0.2f);
    for (double t = 12; t <= 20; t += 1) recording.clicks.push_back({.t = t, .position = {0.9, 0.9}});
    return project;
}

void direct(DemoProject& project) { directCamera(project, logOnTimeline(project)); }

std::vector<BeatKind> kindsOf(DemoProject const& project) {
    std::vector<BeatKind> kinds;
    for (auto const& beat : beats(project, logOnTimeline(project))) kinds.push_back(beat.kind);
    return kinds;
}

std::vector<SceneLayout> scenesOf(DemoProject const& project) {
    std::vector<SceneLayout> scenes;
    for (auto const& cue : project.layoutCues) scenes.push_back(cue.scene);
    return scenes;
}

DemoProject randomTalk(unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0, 1);
    auto project = talkedDemo(static_cast<CameraDirectorStyle>(1 + random() % 3));
    double const duration = 5 + 90 * unit(random);
    project.timeline.clips[0].duration = project.assetDurations["screen.mp4"] = duration;
    auto& recording = project.metadata.edit();
    recording = {};
    float level = 0;
    for (int i = 0; i < duration * 10; ++i) {
        if (unit(random) < 0.03) level = level > 0 ? 0.0f : 0.1f;
        recording.micLevels.push_back(level);
    }
    for (double t = 8 * unit(random); t < duration; t += 8 * unit(random)) {
        recording.clicks.push_back({.t = t, .position = {unit(random), unit(random)}});
    }
    project.screenSceneChanges->clear();
    for (double t = 0; t < duration; t += 9 * unit(random)) project.screenSceneChanges->push_back(t);
    return project;
}

}

TEST(Beats, aDemoIsIntroducedDoneLookedAtAndClosed) {
    using enum BeatKind;
    auto project = talkedDemo(CameraDirectorStyle::calm);
    EXPECT_THAT(kindsOf(project), ElementsAre(intro, doing, result, outro));
    project.screenSceneChanges.reset();
    EXPECT_THAT(kindsOf(project), ElementsAre(intro, doing, outro)) << "silence belongs to what was before";
    project.metadata.edit().clicks.clear();
    EXPECT_THAT(kindsOf(project), ElementsAre(explaining));
    project.timeline.clips.clear();
    EXPECT_TRUE(kindsOf(project).empty());
}

TEST(Beats, nobodyWhoIsSilentIntroducesAnything) {
    using enum BeatKind;
    auto project = talkedDemo(CameraDirectorStyle::presenter);
    auto& levels = project.metadata.edit().micLevels;
    std::fill(levels.begin(), levels.begin() + 100, 0.0f);
    EXPECT_THAT(kindsOf(project), ElementsAre(doing, result, outro));
    std::fill(levels.begin(), levels.end(), 0.0f);
    EXPECT_THAT(kindsOf(project), ElementsAre(doing, result));
}

TEST(Beats, aScreenThatChangesOfItsOwnAccordIsLookedAt) {
    using enum BeatKind;
    auto project = talkedDemo(CameraDirectorStyle::presenter);
    project.screenSceneChanges = std::vector<double>{5, 7, 15, 32};
    EXPECT_THAT(kindsOf(project), ElementsAre(intro, result, explaining, doing, explaining, result, outro));
}

TEST(Beats, theTranscriptIsHeardBeforeTheLevels) {
    auto project = talkedDemo(CameraDirectorStyle::calm);
    Transcript transcript;
    for (int i = 0; i < 8; ++i) transcript.words.push_back({.text = "word", .start = 22.0 + i, .end = 22.8 + i});
    project.transcript = transcript;
    project.screenSceneChanges.reset();
    auto const onEdit = logOnTimeline(project);
    auto const found = beats(project, onEdit);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].kind, BeatKind::doing) << "the levels of the beginning are no words";
    EXPECT_EQ(found[1].kind, BeatKind::outro);
    EXPECT_EQ(found[1].range.start, 22);
}

TEST(CameraDirector, theFaceIsLargeWhileNothingHappensAndSmallDuringWork) {
    using enum SceneLayout;
    auto project = talkedDemo(CameraDirectorStyle::dynamic);
    direct(project);
    EXPECT_THAT(scenesOf(project), ElementsAre(cameraOnly, overlay, screenOnly, cameraOnly));
    EXPECT_EQ(project.layoutCues.front().time, 0);
    for (auto const& cue : project.layoutCues) {
        EXPECT_TRUE(cue.isAutomatic);
        EXPECT_FALSE(cue.reason.value_or("").empty());
    }
    project.cameraDirectorStyle = CameraDirectorStyle::presenter;
    direct(project);
    EXPECT_THAT(scenesOf(project), ElementsAre(cameraOnly, overlay, cameraOnly)) << "those of before are replaced";
}

TEST(CameraDirector, theBubbleMovesOutOfTheWayOfTheWork) {
    auto project = talkedDemo(CameraDirectorStyle::calm);
    direct(project);
    ASSERT_EQ(project.cameraMoves.size(), 1u);
    EXPECT_NE(project.cameraMoves[0].placement, CameraPlacement::bottomRight);
    EXPECT_LE(project.cameraMoves[0].time, 12);
    EXPECT_TRUE(project.cameraMoves[0].isAutomatic);
    project.camera.position = UnitPoint2{0.5, 0.5};
    direct(project);
    EXPECT_TRUE(project.cameraMoves.empty()) << "a bubble that was placed by hand stays there";
}

TEST(CameraDirector, withoutACameraOrAStyleNothingChanges) {
    auto const made = [] {
        auto project = talkedDemo(CameraDirectorStyle::dynamic);
        direct(project);
        return project;
    }();
    for (int reason = 0; reason < 3; ++reason) {
        auto project = made;
        if (reason == 0) project.cameraDirectorStyle = CameraDirectorStyle::off;
        if (reason == 1) project.cameraAsset.reset();
        if (reason == 2) project.camera.isEnabled = false;
        auto const before = project;
        direct(project);
        EXPECT_EQ(project, before) << reason;
    }
    auto project = made;
    clearCameraDirection(project);
    EXPECT_TRUE(project.layoutCues.empty());
    EXPECT_TRUE(project.cameraMoves.empty());
}

TEST(CameraDirector, whatIsMadeByHandStaysWithRoomAroundIt) {
    auto project = talkedDemo(CameraDirectorStyle::dynamic);
    project.layoutCues = {{.time = 10.5, .scene = SceneLayout::split}};
    project.cameraMoves = {{.time = 11, .placement = CameraPlacement::topRight}};
    direct(project);
    EXPECT_EQ(std::count_if(project.layoutCues.begin(), project.layoutCues.end(),
                            [](auto const& cue) { return !cue.isAutomatic && cue.time == 10.5; }),
              1);
    for (auto const& cue : project.layoutCues) {
        if (cue.isAutomatic) {
            EXPECT_GE(std::abs(cue.time - 10.5), 2);
        }
    }
    ASSERT_EQ(project.cameraMoves.size(), 1u) << "the bubble is out of the way already";
}

TEST(CameraDirector, noShotFlickersAndNoWorkIsHidden) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        auto project = randomTalk(seed);
        double const shortest = project.cameraDirectorStyle == CameraDirectorStyle::calm      ? 4
                                : project.cameraDirectorStyle == CameraDirectorStyle::dynamic ? 2
                                                                                              : 3;
        direct(project);
        auto const& cues = project.layoutCues;
        ASSERT_FALSE(cues.empty()) << "seed " << seed;
        EXPECT_EQ(cues.front().time, 0) << "seed " << seed;
        for (std::size_t i = 0; i < cues.size(); ++i) {
            double const end = i + 1 < cues.size() ? cues[i + 1].time : project.duration();
            EXPECT_TRUE(cues.size() == 1 || end - cues[i].time >= shortest - 1e-6) << "seed " << seed;
            EXPECT_TRUE(i == 0 || cues[i].scene != cues[i - 1].scene) << "seed " << seed;
            if (cues[i].scene != SceneLayout::cameraOnly) continue;
            for (auto const& click : project.metadata->clicks) {
                EXPECT_FALSE(cues[i].time <= click.t && click.t < end) << "seed " << seed << ", click at " << click.t;
            }
        }
        auto again = project;
        direct(again);
        EXPECT_EQ(scenesOf(again), scenesOf(project)) << "seed " << seed;
        EXPECT_EQ(again.cameraMoves.size(), project.cameraMoves.size()) << "seed " << seed;
    }
}
