#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroCore/Timeline/Private/LogOnTimeline.h>
#include <TavaroCore/Timeline/RecordingOnTimeline.h>
#include <TavaroCore/Timeline/Timeline.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include <fmt/format.h>

using namespace tavaro;

namespace {

/// A clip that shows source [from, to) at a speed; clips of a timeline follow each other.
struct Shown {
    double from;
    double to;
    double speed = 1;
};

Timeline timelineOf(std::vector<Shown> const& parts) {
    Timeline timeline;
    double start = 0;
    for (auto const& [from, to, speed] : parts) {
        double const duration = (to - from) / speed;
        timeline.clips.push_back({.start = start, .sourceStart = from, .duration = duration, .speed = speed});
        start += duration;
    }
    return timeline;
}

RecordingMetadata shownLog(RecordingMetadata const& recording, Timeline const& timeline) {
    return logOnTimeline(recording, RecordingOnTimeline(timeline, ""));
}

template<class Entry> std::string times(std::vector<Entry> const& entries) {
    std::string text;
    for (auto const& entry : entries) text += fmt::format("{}{:g}", text.empty() ? "" : " ", entry.t);
    return text;
}

}

TEST(Timeline, everyTimeBelongsToTheClipThatBeginsThere) {
    auto const timeline = timelineOf({{10, 14}, {20, 30, 2}});
    EXPECT_EQ(timeline.clip(0), &timeline.clips[0]);
    EXPECT_EQ(timeline.clip(4), &timeline.clips[1]);
    EXPECT_EQ(timeline.clip(-0.1), nullptr);
    EXPECT_EQ(timeline.sourceTime(3), 13);
    EXPECT_EQ(timeline.sourceTime(5), 22);
    EXPECT_EQ(timeline.timelineTime(13), 3);
    EXPECT_EQ(timeline.timelineTime(22), 5);
    EXPECT_FALSE(timeline.timelineTime(14)) << "the first clip ends before it, the next begins later";
    EXPECT_FALSE((Timeline{}).clip(0));
    EXPECT_FALSE((Timeline{}).timelineTime(0));
}

TEST(Timeline, theEndOfTheLastClipBelongsToIt) {
    auto const timeline = timelineOf({{10, 14}, {20, 30, 2}});
    EXPECT_EQ(timeline.duration(), 9);
    for (double slack : {0.0, 0.0000005}) {
        EXPECT_EQ(timeline.clip(9 + slack), &timeline.clips[1]);
        EXPECT_EQ(timeline.sourceTime(9 + slack), 30);
        EXPECT_EQ(timeline.timelineTime(30 + slack), 9);
    }
    EXPECT_EQ(timeline.clip(9.00001), nullptr);
    EXPECT_FALSE(timeline.sourceTime(9.00001));
    EXPECT_FALSE(timeline.timelineTime(30.00001));
}

TEST(Timeline, sourceAndOutputTimesMapBackAndForth) {
    auto const timeline = timelineOf({{10, 14}, {0, 3, 0.5}, {20, 30, 4}});
    for (double t = 0; t <= timeline.duration(); t += 0.0625) {
        EXPECT_NEAR(*timeline.timelineTime(*timeline.sourceTime(t)), t, 1e-9);
    }
}

TEST(RecordingOnTimeline, namesEveryPlaceThatSomeClipShowsOnRandomEdits) {
    for (unsigned seed = 1; seed <= 200; ++seed) {
        std::mt19937 random(seed);
        std::uniform_int_distribution<int> ticks(0, 40); // a coarse grid, so that boundaries coincide
        std::vector<Shown> parts(random() % 8);
        for (auto& part : parts) {
            part = {ticks(random) * 0.25, ticks(random) * 0.25, random() % 2 ? 1.0 : 2.0};
        }
        auto timeline = timelineOf(parts); // clips that run backward or show nothing are among them
        for (auto& clip : timeline.clips) clip.asset = random() % 4 ? "take" : "other";
        if (!timeline.clips.empty() && random() % 4 == 0) timeline.clips.front().speed = 0;
        RecordingOnTimeline const recording(timeline, "take");
        for (double s = -0.5; s <= 11; s += 0.125) {
            std::vector<double> expected;
            for (auto const& clip : timeline.clips) {
                Timeline alone{{clip}};
                if (&clip != &timeline.clips.back()) alone.clips.push_back({}); // so that its end is no end of an edit
                if (auto const time = alone.timelineTime(s); time && clip.asset == "take") expected.push_back(*time);
            }
            std::ranges::sort(expected);
            EXPECT_EQ(recording.outputTimes(s), expected) << "seed " << seed << " source " << s;
            std::vector<double> walked;
            recording.forEachShown(std::vector<CursorSample>{{.t = s}},
                                   [&](CursorSample const&, double at) { walked.push_back(at); });
            std::ranges::sort(walked);
            EXPECT_EQ(walked, expected) << "seed " << seed << " source " << s;
            std::vector<double> unordered;
            recording.forEachShown(std::vector<CursorSample>{{.t = 1e9}, {.t = s}},
                                   [&](CursorSample const&, double at) { unordered.push_back(at); });
            EXPECT_EQ(unordered, expected) << "seed " << seed << " source " << s;
        }
        for (double t = -0.5; t <= timeline.duration() + 0.5; t += 0.125) {
            auto const* clip = timeline.clip(t);
            bool const isTake = clip && clip->asset == "take";
            EXPECT_EQ(recording.clip(t), isTake ? clip : nullptr) << "seed " << seed << " output " << t;
            EXPECT_EQ(recording.recordedTime(t), isTake ? timeline.sourceTime(t) : std::nullopt);
        }
    }
}

TEST(RecordingOnTimeline, aStretchGoesOnOverSplitsAndCutsAndIsThereForEachClipThatShowsIt) {
    auto const drawn = [](Timeline const& timeline, TimeRange const& recorded) {
        std::string text;
        for (auto const& [range, seconds] : RecordingOnTimeline(timeline, "").stretches(recorded))
            text += fmt::format("[{:g} {:g}] of {:g} ", range.start, range.end(), seconds);
        return text;
    };
    EXPECT_EQ(drawn(timelineOf({{0, 2}, {2, 4}}), {1, 2}), "[1 3] of 2 ") << "a split";
    EXPECT_EQ(drawn(timelineOf({{0, 2}, {3, 7, 2}}), {1, 6}), "[1 4] of 5 ") << "a cut, then twice as fast";
    EXPECT_EQ(drawn(timelineOf({{0, 4}, {0, 4}}), {0, 4}), "[0 4] of 4 [4 8] of 4 ") << "played again";
    EXPECT_EQ(drawn(timelineOf({{2, 4}, {0, 2}}), {1, 2}), "[0 1] of 1 [3 4] of 1 ") << "turned round";
}

TEST(RecordingOfProject, isTheMovieThatTheLogFitsWhateverIsShownOfIt) {
    DemoProject project;
    EXPECT_EQ(recordingAsset(project), "");
    project.metadata.edit().clicks = {{.t = 2}, {.t = 29}};
    project.timeline.clips = {{.asset = "logo.mp4", .duration = 6},
                              {.asset = "take.mp4", .start = 6, .sourceStart = 1, .duration = 4},
                              {.asset = "logo.mp4", .start = 10, .duration = 6}};
    project.assetDurations = {{"logo.mp4", 6}, {"take.mp4", 30}};
    EXPECT_EQ(recordingAsset(project), "take.mp4") << "the other is too short for the log";
    EXPECT_EQ(recordedSeconds(project), 30);
    auto const log = logOnTimeline(project);
    EXPECT_EQ(times(log.clicks), "7") << "nothing of the log over another movie";
    project.assetDurations["logo.mp4"] = 60;
    EXPECT_EQ(recordingAsset(project), "take.mp4") << "both could be; this one is as long as the log";
    project.assetDurations.clear();
    EXPECT_EQ(recordingAsset(project), "logo.mp4") << "nothing is known but what is shown longer";
}

TEST(RecordingOnTimeline, whatIsCutAwayIsDroppedAndTheRestMovesWithThePicture) {
    RecordingMetadata recording;
    for (double t : {1.0, 4.0, 5.0, 6.0, 8.0, 10.0}) {
        recording.clicks.push_back({.t = t});
        recording.keystrokes.push_back({.t = t});
        recording.cursorSamples.push_back({t, {t / 10, 0}});
    }
    recording.rawCursorSamples = recording.cursorSamples;
    auto const shown = shownLog(recording, timelineOf({{0, 4}, {6, 10, 2}})); // 4…6 is cut
    EXPECT_EQ(times(shown.clicks), "1 4 5 6");
    EXPECT_EQ(times(shown.keystrokes), "1 4 5 6");
    EXPECT_EQ(times(shown.cursorSamples), "1 4 5 6");
    EXPECT_EQ(shown.cursorSamples[1].position.x, 0.6);
    EXPECT_EQ(shown.clicks[2].id, recording.clicks[4].id);
    EXPECT_FALSE(shown.rawCursorSamples);
}

TEST(RecordingOnTimeline, reorderedClipsGiveAscendingTimes) {
    RecordingMetadata recording;
    for (int i = 0; i < 80; ++i) recording.cursorSamples.push_back({i * 0.1, {i * 0.01, 0}});
    auto const shown = shownLog(recording, timelineOf({{6, 8}, {2, 4}, {0, 1}}));
    EXPECT_EQ(shown.cursorSamples.size(), 51u) << "20 + 20 + 10, and the end of the last clip";
    EXPECT_TRUE(std::is_sorted(shown.cursorSamples.begin(), shown.cursorSamples.end(),
                               [](auto const& a, auto const& b) { return a.t < b.t; }));
    EXPECT_NEAR(shown.cursorSamples.front().position.x, 0.6, 1e-9);
}

TEST(RecordingOnTimeline, aDragLosesAnEndThatIsNotShown) {
    RecordingMetadata recording;
    recording.clicks = {{.t = 1, .isDrag = true, .dragEnd = 2}, {.t = 3, .isDrag = true, .dragEnd = 5}};
    auto const shown = shownLog(recording, timelineOf({{0, 4, 2}}));
    EXPECT_EQ(shown.clicks[0].dragEnd, 1);
    EXPECT_FALSE(shown.clicks[1].dragEnd);
    EXPECT_TRUE(shown.clicks[1].isDrag);
}

TEST(RecordingOnTimeline, whatTwoClipsShowIsThereTwice) {
    RecordingMetadata recording;
    recording.clicks = {{.t = 1}, {.t = 2, .isDrag = true, .dragEnd = 4}};
    recording.keystrokes = {{.t = 1}};
    recording.cursorSamples = {{.t = 1}};
    recording.appSpans = {{1, 1, "a", "Editor"}};
    auto const shown = shownLog(recording, timelineOf({{0, 3}, {0, 5}}));
    EXPECT_EQ(times(shown.clicks), "1 2 4 5");
    EXPECT_EQ(times(shown.keystrokes), "1 4");
    EXPECT_EQ(times(shown.cursorSamples), "1 4");
    EXPECT_EQ(times(shown.appSpans), "1 4");
    EXPECT_FALSE(shown.clicks[1].dragEnd) << "the first clip ends before the drag does";
    EXPECT_EQ(shown.clicks[3].dragEnd, 7);
}

TEST(RecordingOnTimeline, focusSpansKeepTheirShownParts) {
    RecordingMetadata recording;
    recording.appSpans = {{0, 5, "a", "Editor"}, {5, 5, "b", "Terminal"}};
    auto const shown = shownLog(recording, timelineOf({{1, 2}, {2, 4}, {6, 10, 2}})); // a split, then a cut
    ASSERT_EQ(shown.appSpans.size(), 2u);
    EXPECT_EQ(shown.appSpans[0], (AppFocusSpan{0, 3, "a", "Editor"}));
    EXPECT_EQ(shown.appSpans[1], (AppFocusSpan{3, 2, "b", "Terminal"}));
}
