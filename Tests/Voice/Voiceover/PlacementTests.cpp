#include <TavaroVoice/Voiceover/Placement.h>

#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroVoice/Voiceover/Private/HeldFrames.h>

#include <gmock/gmock.h>

#include <map>
#include <random>

namespace tavaro {

namespace {

using testing::DoubleNear;
using testing::Pointwise;

VoiceoverSegment line(std::optional<double> anchor, double seconds, double pause = 0) {
    return {.text = "Line",
            .anchor = anchor,
            .audioAsset = "line.caf",
            .audioDuration = seconds,
            .trailingPause = pause,
            .isDirty = false};
}

/// Ten seconds of a recording, its sound, music over all of it, and a zoom for each line at its action.
DemoProject film(std::vector<VoiceoverSegment> lines, bool holds) {
    DemoProject project;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 10}};
    project.audioTracks = {
        {.role = AudioRole::microphone, .clips = {{.asset = "talk.m4a", .duration = 10}}},
        {.role = AudioRole::music, .clips = {{.asset = "song.mp3", .duration = 30}}},
    };
    for (auto const& each : lines)
        if (each.anchor) project.zoomEvents.push_back({.start = *each.anchor, .duration = 0.5});
    project.voiceover = VoiceoverPlan{.segments = std::move(lines), .stretchesVideoToFit = holds};
    return project;
}

std::vector<double> starts(DemoProject const& project) {
    std::vector<double> times;
    for (auto const& segment : project.voiceover->segments) times.push_back(segment.start);
    return times;
}

std::vector<double> zooms(DemoProject const& project) {
    std::vector<double> times;
    for (auto const& zoom : project.zoomEvents) times.push_back(zoom.start);
    return times;
}

auto near(std::vector<double> const& times) { return Pointwise(DoubleNear(1e-6), times); }

TEST(Placement, pushesTheNextLinesOnAndLeavesThePicture) {
    auto project = film({line(1, 2), line(2, 1, 0.5), line({}, 1), line(8, 1)}, false);
    placeVoiceover(project);
    EXPECT_THAT(starts(project), near({1, 3, 4.5, 8}));
    EXPECT_DOUBLE_EQ(project.duration(), 10);
}

TEST(Placement, holdsTheFrameUntilALineIsOverSoThatTheNextMeetsItsAction) {
    auto project = film({line(1, 2), line(2, 1), line(8, 1)}, true);
    placeVoiceover(project);
    EXPECT_THAT(starts(project), near({1, 3, 9}));
    EXPECT_THAT(zooms(project), near({1, 3, 9}));
    EXPECT_NEAR(project.duration(), 11, 1e-6);
    EXPECT_NEAR(*project.timeline.sourceTime(2.5), 2, 1e-6) << "the frame of the action waits";
    EXPECT_EQ(project.audioTracks[1].clips.size(), 1u) << "music plays on";
}

TEST(Placement, keepsToTheAnchorsWhereverTheLinesAreInTheList) {
    auto project = film({line(6, 1), line({}, 1), line(2, 1)}, false);
    placeVoiceover(project);
    EXPECT_THAT(starts(project), near({6, 7, 2}));
}

TEST(Placement, holdsTheLastFrameWhereTheNarrationIsLongerThanTheFilm) {
    for (bool const holds : {false, true}) {
        auto project = film({line(1, 3), line(9, 4), line(12, 1)}, holds);
        placeVoiceover(project);
        EXPECT_NEAR(project.duration(), 14, 1e-6);
        EXPECT_THAT(starts(project), near({1, 9, 13}));
        project.voiceover->segments.pop_back();
        project.voiceover->segments.pop_back();
        placeVoiceover(project);
        EXPECT_NEAR(project.duration(), 10, 1e-6) << "nobody needs it any more";
    }
}

TEST(Placement, ofLinesThatGotShorterGivesTheTimeBackAndAPersonsOwnHoldsStay) {
    auto project = film({line(1, 5), line(2, 1)}, true);
    insertTime(project, 9, 2); // a person's
    auto const plain = project;
    placeVoiceover(project);
    EXPECT_NEAR(project.duration(), 16, 1e-6);
    project.voiceover->segments[0].audioDuration = 3;
    placeVoiceover(project);
    EXPECT_NEAR(project.duration(), 14, 1e-6);
    project.voiceover->stretchesVideoToFit = false;
    placeVoiceover(project);
    EXPECT_NEAR(project.duration(), 12, 1e-6);
    EXPECT_TRUE(heldFrames(project).empty());
    EXPECT_THAT(zooms(project), near(zooms(plain)));
    auto const& music = project.audioTracks[1].clips;
    EXPECT_TRUE(music.size() == 1 && music[0].duration == 30) << "music has no cuts";
    double played = 0;
    for (auto const& clip : project.audioTracks[0].clips) played += clip.duration;
    EXPECT_NEAR(played, 10, 1e-6);
}

TEST(Placement, survivesCutsAndSpeedsWithTheLinesAtTheirActions) {
    auto project = film({line(1, 2), line(2, 1), line(5, 1), line(8, 1)}, true);
    placeVoiceover(project);
    removeTimeRange(project, 0.2, 0.5);
    changeSpeed(project, {project.duration() - 4, 1}, 2);
    EXPECT_THAT(starts(project), near(zooms(project))) << "what moves with the picture moves alike";
    placeVoiceover(project);
    EXPECT_THAT(starts(project), near(zooms(project)));
}

TEST(Placement, ofTimesThatNobodyMeantIsStillAFilm) {
    double const infinity = std::numeric_limits<double>::infinity();
    auto project = film({line(-5, 1), line(1e300, 1), line(infinity, infinity), line(std::nan(""), -3, -1)}, true);
    placeVoiceover(project);
    for (double const start : starts(project)) EXPECT_TRUE(start >= 0 && start < 20) << start;
    DemoProject empty;
    empty.voiceover = VoiceoverPlan{.segments = {line(3, 1)}};
    placeVoiceover(empty);
    EXPECT_TRUE(empty.timeline.clips.empty());
}

std::vector<VoiceoverSegment> randomLines(std::mt19937& random) {
    auto const below = [&](double most) { return std::uniform_real_distribution(0.0, most)(random); };
    std::vector<VoiceoverSegment> lines;
    for (auto count = random() % 8; count > 0; --count) {
        std::optional<double> anchor;
        if (random() % 4) anchor = random() % 5 ? below(11) : static_cast<double>(random() % 10);
        lines.push_back(line(anchor, 0.1 + below(4), random() % 3 ? 0 : below(1)));
    }
    return lines;
}

/// Lines never speak at once, and none behind the film.
void expectInOrder(DemoProject const& project, unsigned seed) {
    std::map<double, double> ends;
    for (auto const& segment : project.voiceover->segments) {
        EXPECT_TRUE(ends.emplace(segment.start, segment.end()).second) << "seed " << seed;
        EXPECT_LE(segment.end(), project.duration() + 0.011) << "seed " << seed;
    }
    double end = 0;
    for (auto const& [start, until] : ends) {
        EXPECT_GE(start, end - 1e-6) << "seed " << seed;
        end = until;
    }
}

TEST(Placement, doneAgainChangesNothingAndWithHeldFramesEveryLineMeetsItsAnchor) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::mt19937 random(seed);
        auto project = film(randomLines(random), seed % 2);
        placeVoiceover(project);
        expectInOrder(project, seed);
        auto const once = project;
        placeVoiceover(project);
        ASSERT_EQ(project, once) << "seed " << seed;
        for (auto const& segment : project.voiceover->segments) {
            if (!segment.anchor) continue;
            double const anchor = std::min(*segment.anchor, endWithoutHeldFrame(project));
            EXPECT_GE(segment.start, anchor - 1e-6) << "seed " << seed;
            EXPECT_TRUE(seed % 2 == 0 || segment.start <= anchor + 0.101) << "seed " << seed;
        }
        withdrawHeldFrames(project);
        EXPECT_NEAR(project.duration(), 10, 1e-6) << "seed " << seed;
    }
}

/// A cut, a split or another speed somewhere in or around one of the frames that are held.
void editHeldFrame(DemoProject& project, std::mt19937& random) {
    auto const held = heldFrames(project);
    if (held.empty()) return;
    auto const below = [&](double most) { return std::uniform_real_distribution(0.0, most)(random); };
    auto const frame = held[random() % held.size()].range();
    double const from = std::max(frame.start - 0.2 + below(frame.duration + 0.2), 0.0), seconds = 0.05 + below(1.5);
    switch (random() % 3) {
    case 0: return removeTimeRange(project, from, seconds);
    case 1: project.timeline.split(from); return;
    default: return changeSpeed(project, {from, seconds}, random() % 2 ? 2 : 0.5);
    }
}

TEST(Placement, whatEditsLeaveOfHeldFramesIsTakenOutToo) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::mt19937 random(seed);
        auto project = film({line(1, 3), line(2, 2.5), line(3, 1), line(9, 3)}, true);
        placeVoiceover(project);
        for (auto edits = 1 + random() % 4; edits > 0; --edits) editHeldFrame(project, random);
        double played = 0, end = 0;
        for (auto const& clip : project.timeline.clips) played += clip.speed > 0 ? clip.duration : 0;
        project.voiceover->stretchesVideoToFit = false;
        placeVoiceover(project);
        EXPECT_NEAR(endWithoutHeldFrame(project), played, 1e-6) << "seed " << seed;
        for (auto const& segment : project.voiceover->segments) end = std::max(end, segment.end());
        EXPECT_NEAR(project.duration(), std::max(played, end), 0.011) << "seed " << seed;
        withdrawHeldFrames(project);
        EXPECT_NEAR(project.duration(), played, 1e-6) << "seed " << seed;
    }
}

TEST(Placement, ofAHeldFrameThatIsCutThePersonsOwnStays) {
    auto project = film({line(1, 4), line(2, 1)}, true);
    placeVoiceover(project);
    insertTime(project, heldFrames(project)[0].start + 1, 0.7);
    EXPECT_EQ(heldFrames(project).size(), 2u);
    withdrawHeldFrames(project);
    EXPECT_NEAR(project.duration(), 10.7, 1e-6);
}

}

}
