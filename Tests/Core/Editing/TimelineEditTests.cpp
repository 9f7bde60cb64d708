#include "DrawnEdit.h"

#include <TavaroCore/Editing/TimelineEdits.h>

#include <TavaroCore/Project/DemoProject.h>

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include <fmt/format.h>

using namespace tavaro;

namespace {

std::string words(CaptionCue const& cue) {
    std::string text;
    for (auto const& word : cue.words) {
        text += fmt::format("{}{} {:g}-{:g}", text.empty() ? "" : " ", word.text, word.start, word.end);
    }
    return text;
}

AudioTrack& addTrack(DemoProject& project, AudioRole role, std::vector<AudioClip> clips) {
    project.audioTracks.push_back({.role = role, .clips = std::move(clips)});
    return project.audioTracks.back();
}

DemoProject withZoom(double from, double to) {
    auto project = projectOf(20);
    project.zoomEvents = {{.start = from, .duration = to - from}};
    return project;
}

std::string zoomsAfterCut(double from, double to, double cutFrom, double cutTo) {
    auto project = withZoom(from, to);
    removeTimeRange(project, cutFrom, cutTo - cutFrom);
    return spans(project.zoomEvents);
}

}

TEST(RemoveTimeRange, zoomsLoseWhatIsCut) {
    EXPECT_EQ(zoomsAfterCut(1, 4, 2, 3), "1-3");
    EXPECT_EQ(zoomsAfterCut(1, 4, 0, 10), "");
    EXPECT_EQ(zoomsAfterCut(1, 2, 1.9995, 4), "1-1.9995");
    EXPECT_EQ(zoomsAfterCut(5, 8, 1, 3), "3-6");
}

TEST(RemoveTimeRange, aZoomShorterThanItsRampsKeepsTheirProportion) {
    auto project = withZoom(1, 4);
    project.zoomEvents[0].rampIn = 0.6;
    project.zoomEvents[0].rampOut = 0.4;
    auto whole = project;
    removeTimeRange(project, 2, 2);
    EXPECT_EQ(project.zoomEvents[0].rampIn, 0.6) << "one second is enough";
    removeTimeRange(project, 1.25, 0.5);
    EXPECT_NEAR(project.zoomEvents[0].rampIn, 0.3, 1e-9);
    EXPECT_NEAR(project.zoomEvents[0].rampOut, 0.2, 1e-9);
    removeTimeRange(whole, 10, 5);
    EXPECT_EQ(whole.zoomEvents[0].rampIn, 0.6);
}

TEST(RemoveTimeRange, tooLittleOrNonsenseChangesNothing) {
    auto const project = withZoom(1, 4);
    constexpr double infinite = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    for (auto const& [start, duration] : std::vector<std::pair<double, double>>{
             {2, 0.00005}, {2, 0}, {2, -1}, {nan, 1}, {2, nan}, {infinite, 1}, {2, infinite}, {-5, 4}}) {
        auto edited = project;
        removeTimeRange(edited, start, duration);
        EXPECT_EQ(edited, project) << start << " + " << duration;
    }
}

TEST(RemoveTimeRange, endsNearAClipEdgeMeanTheEdgeForPictureAndItems) {
    auto project = withZoom(6, 7);
    project.timeline.split(4);
    removeTimeRange(project, 2, 1.9992); // to 0.0008 s before the second clip
    EXPECT_EQ(spans(project.timeline.clips), "0-2 2-18");
    EXPECT_EQ(project.timeline.clips[1].sourceStart, 4);
    EXPECT_EQ(spans(project.zoomEvents), "4-5");
}

TEST(RemoveTimeRange, layoutCuesMoveAsPoints) {
    auto project = projectOf(10);
    for (double const time : {1.0, 2.5, 3.0, 7.0}) project.layoutCues.push_back({.time = time});
    removeTimeRange(project, 2, 1);
    std::string times;
    for (auto const& cue : project.layoutCues) times += fmt::format("{:g} ", cue.time);
    EXPECT_EQ(times, "1 2 2 6 ");
}

TEST(RemoveTimeRange, soundIsCutWithThePictureAtItsOwnSpeed) {
    auto project = projectOf(20);
    auto& track = addTrack(project, AudioRole::microphone,
                           {{.asset = "mic.m4a", .duration = 10, .fadeIn = 1, .fadeOut = 2, .speed = 2},
                            {.asset = "mic.m4a", .start = 12, .sourceStart = 30, .duration = 4, .fadeIn = 0.5}});
    auto const id = track.clips[0].id;
    removeTimeRange(project, 4, 2);
    EXPECT_EQ(spans(track.clips), "0-4×2 4-8×2 10-14");
    EXPECT_EQ(track.clips[0].id, id);
    EXPECT_NE(track.clips[1].id, id);
    EXPECT_EQ(track.clips[1].sourceStart, 12) << "six seconds at double speed";
    EXPECT_EQ(track.clips[0].fadeIn, 1);
    EXPECT_EQ(track.clips[0].fadeOut, 0) << "the cut is a hard end";
    EXPECT_EQ(track.clips[1].fadeIn, 0);
    EXPECT_EQ(track.clips[1].fadeOut, 2);
    EXPECT_EQ(track.clips[2].fadeIn, 0.5);
}

TEST(RemoveTimeRange, captionsLoseTheWordsThatAreCut) {
    auto project = projectOf(20);
    CaptionCue const spoken{.start = 1,
                            .duration = 4,
                            .text = "open the settings page",
                            .words = {{"open", 1, 1.5}, {"the", 2, 2.5}, {"settings", 2.8, 3.4}, {"page", 4, 5}}};
    auto typed = spoken;
    typed.text = "Open the settings";
    CaptionCue const swallowed{.start = 5, .duration = 3, .text = "um so", .words = {{"um", 6, 6.5}, {"so", 6.5, 7}}};
    project.captions.cues = {spoken, typed, swallowed};
    removeTimeRange(project, 6, 1);
    removeTimeRange(project, 2, 1);
    ASSERT_EQ(project.captions.cues.size(), 2u) << "a caption whose words are all cut goes";
    EXPECT_EQ(spans(project.captions.cues), "1-4 1-4");
    EXPECT_EQ(words(project.captions.cues[0]), "open 1-1.5 settings 2-2.4 page 3-4");
    EXPECT_EQ(project.captions.cues[0].text, "open settings page");
    EXPECT_EQ(project.captions.cues[1].text, "Open the settings") << "a text written by hand stays";
}

TEST(RemoveTimeRange, aVoiceOverSegmentThatIsCutInsideHasToBeSpokenAgain) {
    auto project = projectOf(20);
    VoiceoverSegment const voiced{
        .text = "Now", .anchor = 2.5, .audioAsset = "v.mp3", .audioDuration = 4, .start = 2, .isDirty = false};
    auto later = voiced, gone = voiced, unvoiced = voiced;
    later.start = later.anchor.emplace(9);
    gone.start = 3.5;
    gone.audioDuration = 1;
    unvoiced.start = 4.9;
    unvoiced.audioAsset.reset();
    unvoiced.audioDuration.reset();
    project.voiceover = VoiceoverPlan{.segments = {voiced, later, gone, unvoiced}};
    removeTimeRange(project, 3, 2);
    auto const& segments = project.voiceover->segments;
    ASSERT_EQ(segments.size(), 3u);
    EXPECT_EQ(segments[0].audioDuration, 2);
    EXPECT_TRUE(segments[0].isDirty);
    EXPECT_EQ(segments[0].anchor, 2.5);
    EXPECT_EQ(segments[1].start, 7);
    EXPECT_EQ(segments[1].anchor, 7);
    EXPECT_FALSE(segments[1].isDirty);
    EXPECT_EQ(segments[2].start, 3) << "a line without audio lasts as long as a voice takes";
    EXPECT_NEAR(*segments[2].audioDuration, 0.3, 1e-9);
}

TEST(RemoveTimeRange, gapsBetweenClipsAreClosedWithTheItemsInStep) {
    auto project = projectOf(4);
    project.timeline.clips.push_back({.asset = "screen.mp4", .start = 6, .sourceStart = 4, .duration = 4});
    project.zoomEvents = {{.start = 7, .duration = 2}};
    removeTimeRange(project, 1, 1);
    EXPECT_EQ(spans(project.timeline.clips), "0-1 1-3 3-7");
    EXPECT_EQ(spans(project.zoomEvents), "4-6");
}

TEST(RippleInsert, whatStartsAtThePlaceMovesAndWhatSpansItStays) {
    auto project = projectOf(20);
    project.overlays = {{.start = 5, .duration = 1}, {.start = 4.9, .duration = 1.1}};
    project.silences = {{.start = 4, .duration = 3}, {.start = 5 - 1e-10, .duration = 1}};
    project.layoutCues = {{.time = 4.999}, {.time = 5}};
    project.captions.cues = {{.start = 4, .duration = 3, .words = {{"stays", 6, 7}}},
                             {.start = 6, .duration = 2, .words = {{"moves", 6, 7}}}};
    project.voiceover = VoiceoverPlan{.segments = {{.anchor = 8, .start = 8}, {.anchor = 1, .start = 1}}};
    rippleInsert(project, 5, 1);
    EXPECT_EQ(spans(project.overlays), "6-7 4.9-6");
    EXPECT_EQ(spans(project.silences), "4-7 6-7");
    EXPECT_EQ(project.layoutCues[0].time, 4.999);
    EXPECT_EQ(project.layoutCues[1].time, 6);
    EXPECT_EQ(words(project.captions.cues[0]), "stays 6-7");
    EXPECT_EQ(words(project.captions.cues[1]), "moves 7-8");
    EXPECT_EQ(project.voiceover->segments[0].start, 9);
    EXPECT_EQ(project.voiceover->segments[0].anchor, 9);
    EXPECT_EQ(project.voiceover->segments[1].anchor, 1);
    EXPECT_EQ(spans(project.timeline.clips), "0-20") << "the clips are the caller's";

    auto const before = project;
    for (double const nothing : {0.000001, 0.0, -1.0, std::nan("")}) rippleInsert(project, 5, nothing);
    EXPECT_EQ(project, before);
}

TEST(TimeWarp, whatFollowsMovesAndWhatLiesInsideStretches) {
    auto project = projectOf(20);
    project.zoomEvents = {{.start = 13, .duration = 2}, {.start = 11, .duration = 1}, {.start = 1, .duration = 9}};
    project.overlays = {{.start = 9, .duration = 2}, {.start = 9, .duration = 5}};
    project.layoutCues = {{.time = 11}, {.time = 12}, {.time = 10}};
    project.captions.cues = {{.start = 10, .duration = 2, .words = {{"slow", 10.5, 11}, {"down", 11, 12}}}};
    timeWarp(project, {10, 2}, 2, 0.5);
    EXPECT_EQ(spans(project.zoomEvents), "15-17 12-14 1-10");
    EXPECT_EQ(spans(project.overlays), "9-12 9-16");
    EXPECT_EQ(project.layoutCues[0].time, 12);
    EXPECT_EQ(project.layoutCues[1].time, 14);
    EXPECT_EQ(project.layoutCues[2].time, 10);
    EXPECT_EQ(spans(project.captions.cues), "10-14");
    EXPECT_EQ(words(project.captions.cues[0]), "slow 11-12 down 12-14");
}

TEST(TimeWarp, nothingGetsShorterThanItsFloorAndRampsFit) {
    auto project = projectOf(20);
    project.zoomEvents = {{.start = 10, .duration = 2, .rampIn = 0.6, .rampOut = 0.2}};
    project.overlays = {{.start = 10, .duration = 0.4}};
    timeWarp(project, {10, 4}, 0.25, 4);
    EXPECT_EQ(project.zoomEvents[0].duration, 0.5);
    EXPECT_EQ(project.zoomEvents[0].rampIn, 0.25);
    EXPECT_EQ(project.zoomEvents[0].rampOut, 0.2);
    EXPECT_NEAR(project.overlays[0].duration, 0.1, 1e-12);
    timeWarp(project, {10, 1}, 0.25, 4);
    EXPECT_EQ(project.overlays[0].duration, 0.05);
}

TEST(TimeWarp, soundInsideTheRangeIsRetimedAndSoundAcrossItsEndsIsNot) {
    auto project = projectOf(20);
    auto& clips = addTrack(project, AudioRole::microphone,
                           {{.duration = 10},
                            {.start = 10, .sourceStart = 10, .duration = 2, .fadeIn = 0.5},
                            {.start = 11, .duration = 6}})
                      .clips;
    timeWarp(project, {10, 2}, 0.5, 2);
    EXPECT_EQ(spans(clips), "0-10 10-11×2 10.5-16");
    EXPECT_EQ(clips[1].fadeIn, 0.25);
}

TEST(TimeWarp, aVoiceOverSegmentLastsAsLongAsItsAudioThenDoes) {
    auto project = projectOf(20);
    VoiceoverSegment const voiced{.anchor = 11, .audioDuration = 4, .start = 11, .isDirty = false};
    auto before = voiced, unvoiced = voiced;
    before.start = 1;
    unvoiced.audioDuration.reset();
    project.voiceover = VoiceoverPlan{.segments = {voiced, before, unvoiced}};
    timeWarp(project, {10, 3}, 2, 0.5);
    auto const& segments = project.voiceover->segments;
    EXPECT_EQ(segments[0].start, 12);
    EXPECT_EQ(segments[0].anchor, 12);
    EXPECT_EQ(segments[0].audioDuration, 6);
    EXPECT_FALSE(segments[0].isDirty) << "the sound is retimed, the words are the same";
    EXPECT_EQ(segments[1].audioDuration, 4);
    EXPECT_FALSE(segments[2].audioDuration);
}

TEST(TimeWarp, nonsenseChangesNothing) {
    auto const project = withZoom(1, 4);
    constexpr double infinite = std::numeric_limits<double>::infinity();
    for (double const ratio : {0.0, -1.0, 1.0, 1 + 1e-10, std::nan(""), infinite}) {
        auto edited = project;
        timeWarp(edited, {0, 2}, ratio, 1);
        EXPECT_EQ(edited, project) << ratio;
    }
    auto edited = project;
    timeWarp(edited, {0, 0}, 2, 1);
    timeWarp(edited, {0, -1}, 2, 1);
    EXPECT_EQ(edited, project);
}
