#include "DrawnEdit.h"

#include <TavaroCore/Editing/Private/EditError.h>
#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Editing/SilenceRemoval.h>
#include <TavaroCore/Editing/TimedLists.h>
#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Editing/TrackEdits.h>
#include <TavaroCore/Editing/TypingSpeed.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <type_traits>

#include <fmt/format.h>

using namespace tavaro;

namespace {}

TEST(KeepTimeRange, onlyTheRangeIsLeftAndItBeginsAtZero) {
    auto project = projectOf(10);
    project.overlays = {{.start = 1, .duration = 3}, {.start = 4, .duration = 5}, {.start = 9, .duration = 1}};
    keepTimeRange(project, {3, 4});
    EXPECT_EQ(spans(project.timeline.clips), "0-4");
    EXPECT_EQ(project.timeline.clips[0].sourceStart, 3);
    EXPECT_EQ(spans(project.overlays), "0-1 1-4");
}

TEST(ChangeSpeed, clipsAndSoundAreSplitAndRetimedAndTheRestFollows) {
    auto project = projectOf(10);
    project.audioTracks = {{.role = AudioRole::system, .clips = {{.duration = 10}}}};
    project.zoomEvents = {{.start = 3, .duration = 2}, {.start = 8, .duration = 1}};
    changeSpeed(project, {2, 4}, 2);
    EXPECT_EQ(spans(project.timeline.clips), "0-2 2-4×2 4-8");
    EXPECT_EQ(project.timeline.clips[2].sourceStart, 6);
    EXPECT_EQ(spans(project.audioTracks[0].clips), "0-2 2-4×2 4-8");
    EXPECT_EQ(project.audioTracks[0].clips[2].sourceStart, 6);
    EXPECT_EQ(spans(project.zoomEvents), "2.5-3.5 6-7");
    changeSpeed(project, {2, 2}, 2);
    EXPECT_EQ(spans(project.timeline.clips), "0-2 2-3×4 3-7") << "on top of the speed it has";
    changeSpeed(project, {6.9999, 50}, 1000);
    EXPECT_EQ(project.duration(), 7) << "nothing is shown there";
}

TEST(InsertTime, theFrameIsHeldWhileRecordedSoundWaits) {
    auto project = projectOf(10);
    project.audioTracks = {{.role = AudioRole::microphone, .clips = {{.duration = 10}}},
                           {.role = AudioRole::music, .clips = {{.duration = 10}}}};
    project.overlays = {{.start = 4, .duration = 2}, {.start = 2, .duration = 4}};
    insertTime(project, 4, 3);
    EXPECT_EQ(spans(project.timeline.clips), "0-4 4-7×0 7-13");
    EXPECT_EQ(project.timeline.sourceTime(6.5), 4);
    EXPECT_EQ(project.timeline.sourceTime(7.5), 4.5);
    EXPECT_EQ(spans(project.audioTracks[0].clips), "0-4 7-13");
    EXPECT_EQ(spans(project.audioTracks[1].clips), "0-10");
    EXPECT_EQ(spans(project.overlays), "7-9 2-6");
    insertTime(project, 13, 1);
    EXPECT_EQ(project.timeline.sourceTime(13.5), 10) << "the last frame at the end";
    removeTimeRange(project, 5, 1);
    EXPECT_EQ(spans(project.timeline.clips), "0-4 4-5×0 5-6×0 6-12 12-13×0");
    DemoProject empty;
    EXPECT_THROW(insertTime(empty, 0, 1), EditError);
}

TEST(RemoveAllSilence, markedSpansGoFromTheLatestOnAndTheOthersStay) {
    auto project = projectOf(20);
    project.silences = {{.start = 12, .duration = 2, .isRemoved = true},
                        {.start = 2, .duration = 3, .isRemoved = true},
                        {.start = 4, .duration = 2, .isRemoved = true},
                        {.start = 8, .duration = 2}};
    project.layoutCues = {{.time = 15}};
    auto const removed = removeAllSilence(project);
    EXPECT_EQ(removed.count, 3);
    EXPECT_EQ(removed.seconds, 6);
    EXPECT_EQ(spans(project.timeline.clips), "0-2 2-8 8-14");
    EXPECT_EQ(spans(project.silences), "4-6");
    EXPECT_EQ(project.layoutCues[0].time, 9);
    auto const before = project;
    EXPECT_EQ(removeAllSilence(project).count, 0);
    EXPECT_EQ(project, before);
}

namespace {

/// One key every `gap` seconds, from `from` on.
void type(DemoProject& project, double from, int count, double gap) {
    for (int i = 0; i < count; ++i) project.metadata.edit().keystrokes.push_back({.t = from + i * gap, .keys = {"a"}});
}

}

TEST(SpeedUpTyping, onlyRunsThatAreWorthItCount) {
    DemoProject project;
    type(project, 0, 4, 0.9);      // too few keys
    type(project, 10, 20, 0.0625); // too short
    type(project, 20, 5, 0.5);     // exactly long enough
    type(project, 30, 10, 1);      // one by one
    type(project, 50, 30, 0.25);
    project.metadata.edit().keystrokes.push_back({.t = 58, .keys = {"⌘", "S"}, .isShortcut = true});
    auto const stretches = typingStretches(project.metadata->keystrokes);
    ASSERT_EQ(stretches.size(), 2u);
    EXPECT_EQ(stretches[0], (TimeRange{20, 2}));
    EXPECT_EQ(stretches[1], (TimeRange{50, 7.25}));
    EXPECT_TRUE(typingStretches({}).empty());
}

TEST(SpeedUpTyping, whatTheEditShowsOfItPlaysFasterWithThePointerAndZoomsOverIt) {
    auto project = projectOf(30);
    type(project, 4, 17, 0.25);  // 4…8
    type(project, 20, 17, 0.25); // 20…24
    project.metadata.edit().clicks = {{.t = 6}, {.t = 26}};
    removeTimeRange(project, 22, 4); // half of the second stretch
    project.zoomEvents = {{.start = 6, .duration = 4}};
    auto const log = project.metadata;
    auto const result = speedUpTyping(project, 4);
    EXPECT_EQ(result.count, 2);
    EXPECT_EQ(result.seconds, 4.5);
    EXPECT_EQ(spans(project.timeline.clips), "0-4 4-5×4 5-17 17-17.5×4 17.5-21.5");
    EXPECT_EQ(spans(project.zoomEvents), "4.5-7") << "over the click it was made for";
    EXPECT_EQ(logOnTimeline(project).clicks[0].t, 4.5);
    EXPECT_TRUE(project.metadata.sharesWith(log));
    auto const before = project;
    EXPECT_EQ(speedUpTyping(project, 4).count, 0) << "it is fast already";
    EXPECT_EQ(project, before);
    EXPECT_EQ(speedUpTyping(project, 0.5).count, 0);
    EXPECT_THROW(speedUpTyping(project, std::nan("")), EditError);
}

TEST(TrackEdits, theTracksOfARoleAreSetAndARoleWithoutOneIsNamed) {
    auto project = projectOf(4);
    project.audioTracks = {{.role = AudioRole::music}, {.role = AudioRole::system}, {.role = AudioRole::music}};
    setTrackMuted(project, AudioRole::music, true);
    setTrackGain(project, AudioRole::music, 7);
    EXPECT_TRUE(project.audioTracks[0].isMuted && project.audioTracks[2].isMuted);
    EXPECT_FALSE(project.audioTracks[1].isMuted);
    EXPECT_EQ(project.audioTracks[2].gain, loudestGain);
    EXPECT_EQ(project.audioTracks[1].gain, 1);
    try {
        setTrackGain(project, AudioRole::camera, 1);
        ADD_FAILURE();
    } catch (EditError const& error) {
        EXPECT_STREQ(error.what(), "This project has no camera track.");
    }
}

namespace {

/// The names of the lists, anywhere below a record, whose items carry a time of the edit.
template<class Record> void collectTimedLists(std::string const& path, std::set<std::string>& names);

template<class Value> void collectFrom(std::string const& path, std::set<std::string>& names) {
    if constexpr (requires { typename Value::Value; }) {
        collectFrom<typename Value::Value>(path, names);
    } else if constexpr (requires(Value value) {
                             *value;
                             value.has_value();
                         }) {
        collectFrom<typename Value::value_type>(path, names);
    } else if constexpr (requires(Value value) { value.push_back(value.front()); }) {
        using Item = typename Value::value_type;
        if constexpr (RecordType<Item>) {
            if constexpr (
                requires(Item item) { item.start; } || requires(Item item) { item.time; })
                names.insert(path);
            collectTimedLists<Item>(path + ".", names);
        }
    } else if constexpr (RecordType<Value>) {
        collectTimedLists<Value>(path + ".", names);
    }
}

template<class Record> void collectTimedLists(std::string const& path, std::set<std::string>& names) {
    forEachField<Record>([&](auto const& field) {
        using Value = std::remove_cvref_t<decltype(std::declval<Record>().*field.member)>;
        collectFrom<Value>(path + std::string(field.name), names);
    });
}

}

TEST(TimedLists, everyListOfTheDocumentIsInTheTableOrStaysByDesign) {
    std::set<std::string> names;
    collectTimedLists<DemoProject>("", names);
    std::set<std::string> const moved{"zoomEvents",          "overlays",   "silences",          "captions.cues",
                                      "captions.cues.words", "layoutCues", "audioTracks.clips", "voiceover.segments"};
    std::set<std::string> const clipsOfEachEdit{"timeline.clips"};
    std::set<std::string> const staying{"cameraMoves", "redactions", "redactionScan.ranges", "transcript.words",
                                        "transcript.unrecognisedSounds"};
    std::set<std::string> known = moved;
    known.insert(clipsOfEachEdit.begin(), clipsOfEachEdit.end());
    known.insert(staying.begin(), staying.end());
    EXPECT_EQ(names, known) << "a new timed list belongs into forEachTimedList, or here with a reason";

    auto project = projectOf(10);
    project.zoomEvents.emplace_back().start = 5;
    project.overlays.emplace_back().start = 5;
    project.silences.emplace_back().start = 5;
    project.captions.cues.push_back({.start = 5, .duration = 1, .words = {{"word", 5, 6}}});
    project.layoutCues.emplace_back().time = 5;
    project.audioTracks.resize(2);
    for (auto& track : project.audioTracks) track.clips.emplace_back().start = 5;
    project.voiceover.emplace().segments.emplace_back().start = 5;
    rippleInsert(project, 1, 2);
    int lists = 0;
    forEachTimedList(project, [&](auto& items) {
        ++lists;
        EXPECT_EQ(startOf(items.at(0)), 7);
    });
    EXPECT_EQ(lists, 8);
    EXPECT_EQ(project.captions.cues[0].words[0].start, 7);
}
