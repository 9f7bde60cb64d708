#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Editing/Private/EditError.h>
#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Project/DemoProject.h>

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include <fmt/format.h>

using namespace tavaro;

namespace {

/// Twenty seconds of recording of which 2…6 and 10…16 are shown, with their sound, a zoom over each, and music.
DemoProject twoClips() {
    DemoProject project;
    project.assetDurations = {{"screen.mp4", 20}, {"mic.m4a", 18}, {"music.mp3", 60}};
    project.timeline.clips = {{.asset = "screen.mp4", .sourceStart = 2, .duration = 4},
                              {.asset = "screen.mp4", .start = 4, .sourceStart = 10, .duration = 6}};
    project.audioTracks = {{.role = AudioRole::microphone,
                            .clips = {{.asset = "mic.m4a", .sourceStart = 2, .duration = 4},
                                      {.asset = "mic.m4a", .start = 4, .sourceStart = 10, .duration = 6}}},
                           {.role = AudioRole::music, .clips = {{.asset = "music.mp3", .duration = 10}}}};
    project.zoomEvents = {{.start = 1, .duration = 1}, {.start = 5, .duration = 2}};
    return project;
}

/// "0-4:2 4-10:10×2": output, source start, and speed where it is not 1.
template<class Clip> std::string drawn(std::vector<Clip> const& clips) {
    std::string text;
    for (auto const& clip : clips) {
        text +=
            fmt::format("{}{:g}-{:g}:{:g}", text.empty() ? "" : " ", clip.start, clip.range().end(), clip.sourceStart);
        if (clip.speed != 1) text += fmt::format("×{:g}", clip.speed);
    }
    return text;
}

std::string zooms(DemoProject const& project) {
    std::string text;
    for (auto const& zoom : project.zoomEvents) text += fmt::format("{:g}-{:g} ", zoom.start, zoom.end());
    return text;
}

UUID clipID(DemoProject const& project, std::size_t index) { return project.timeline.clips.at(index).id; }

EditError::Kind failureOf(auto const& edit) {
    try {
        edit();
    } catch (EditError const& error) {
        EXPECT_GT(std::string(error.what()).size(), 20u);
        return error.kind();
    }
    ADD_FAILURE() << "the edit was made";
    return {};
}

constexpr double infinite = std::numeric_limits<double>::infinity();

}

TEST(TrimClip, inwardItCutsAndTheClipKeepsItsName) {
    auto project = twoClips();
    auto const first = clipID(project, 0), second = clipID(project, 1);
    EXPECT_EQ(trimClip(project, second, ClipEdge::leading, 6), -2);
    EXPECT_EQ(drawn(project.timeline.clips), "0-4:2 4-8:12");
    EXPECT_EQ(drawn(project.audioTracks[0].clips), "0-4:2 4-8:12");
    EXPECT_EQ(zooms(project), "1-2 4-5 ");
    EXPECT_EQ(trimClip(project, first, ClipEdge::trailing, 3), -1);
    EXPECT_EQ(drawn(project.timeline.clips), "0-3:2 3-7:12");
    EXPECT_EQ(clipID(project, 0), first);
    EXPECT_EQ(clipID(project, 1), second);
}

TEST(TrimClip, outwardItRevealsMediaAndTheRecordedSoundComesAlong) {
    auto project = twoClips();
    EXPECT_EQ(trimClip(project, clipID(project, 1), ClipEdge::leading, 3), 1);
    EXPECT_EQ(drawn(project.timeline.clips), "0-4:2 4-11:9");
    EXPECT_EQ(drawn(project.audioTracks[0].clips), "0-4:2 4-11:9");
    EXPECT_EQ(drawn(project.audioTracks[1].clips), "0-10:0") << "music that plays across goes on";
    EXPECT_EQ(zooms(project), "1-2 6-8 ");
    EXPECT_EQ(trimClip(project, clipID(project, 0), ClipEdge::trailing, 6), 2);
    EXPECT_EQ(drawn(project.timeline.clips), "0-6:2 6-13:9");
    EXPECT_EQ(drawn(project.audioTracks[0].clips), "0-6:2 6-13:9");
    EXPECT_EQ(zooms(project), "1-2 8-10 ");
}

TEST(TrimClip, anEdgeGoesNoFurtherThanItsMediaAndTheShortestClip) {
    auto project = twoClips();
    auto const bounds = [&](ClipEdge edge) {
        auto const [earliest, latest] = trimBounds(project, clipID(project, 1), edge);
        return fmt::format("{:g}…{:g}", earliest, latest);
    };
    EXPECT_EQ(bounds(ClipEdge::leading), "-6…9.95");
    EXPECT_EQ(bounds(ClipEdge::trailing), "4.05…14");
    EXPECT_EQ(trimClip(project, clipID(project, 1), ClipEdge::trailing, 1000), 4);
    EXPECT_EQ(drawn(project.timeline.clips), "0-4:2 4-14:10");
    EXPECT_EQ(drawn(project.audioTracks[0].clips), "0-4:2 4-12:10") << "the microphone stopped earlier";
    EXPECT_NEAR(trimClip(project, clipID(project, 1), ClipEdge::leading, 1000), -9.95, 1e-9);
    EXPECT_NEAR(project.timeline.clips[1].duration, shortestClip, 1e-9);
    EXPECT_EQ(trimClip(project, clipID(project, 0), ClipEdge::leading, -1000), 2);
    EXPECT_EQ(project.timeline.clips[0].sourceStart, 0);
}

TEST(TrimClip, aFastClipHasRoomAtItsOwnSpeedAndAHeldFrameWithoutEnd) {
    auto project = twoClips();
    setSpeed(project, clipID(project, 1), 2);
    EXPECT_EQ(drawn(project.timeline.clips), "0-4:2 4-7:10×2");
    auto const room = headroom(project, clipID(project, 1));
    EXPECT_EQ(room.leading, 5);
    EXPECT_EQ(room.trailing, 2);
    insertTime(project, 4, 1);
    auto const held = clipID(project, 1);
    EXPECT_EQ(headroom(project, held).leading, infinite);
    EXPECT_EQ(trimClip(project, held, ClipEdge::leading, -20), 24);
    EXPECT_EQ(trimClip(project, held, ClipEdge::trailing, 5), -24);
    EXPECT_EQ(drawn(project.timeline.clips), "0-4:2 4-5:10×0 5-8:10×2");
    EXPECT_EQ(drawn(project.audioTracks[0].clips), "0-4:2 5-8:10×2");
    project.assetDurations.clear();
    EXPECT_EQ(headroom(project, clipID(project, 2)).trailing, 0) << "of media that nobody measured";
}

TEST(SetSpeed, theClipItsSoundAndItsItemsAreRetimed) {
    auto project = twoClips();
    auto const id = clipID(project, 0);
    setSpeed(project, id, 0.5);
    EXPECT_EQ(drawn(project.timeline.clips), "0-8:2×0.5 8-14:10");
    EXPECT_EQ(clipID(project, 0), id);
    EXPECT_EQ(drawn(project.audioTracks[0].clips), "0-8:2×0.5 8-14:10");
    EXPECT_EQ(drawn(project.audioTracks[1].clips), "0-8:0×0.5 8-14:4");
    EXPECT_EQ(zooms(project), "2-4 9-11 ");
    setSpeed(project, id, 1000);
    EXPECT_EQ(project.timeline.clips[0].speed, fastestRate);
    EXPECT_EQ(project.timeline.clips[0].duration, 0.25);
    setSpeed(project, id, 0);
    EXPECT_EQ(project.timeline.clips[0].speed, slowestRate);
    EXPECT_NEAR(project.timeline.clips[0].duration, 16, 1e-9);
}

TEST(ClipEdits, whatIsNotThereIsRefusedAndTheDocumentStays) {
    auto project = twoClips();
    insertTime(project, 10, 2);
    auto const before = project;
    UUID const nobody{}, held = clipID(project, 2);
    using Kind = EditError::Kind;
    EXPECT_EQ(failureOf([&] { trimClip(project, nobody, ClipEdge::leading, 1); }), Kind::noSuchClip);
    EXPECT_EQ(failureOf([&] { setSpeed(project, nobody, 1); }), Kind::noSuchClip);
    EXPECT_EQ(failureOf([&] { setMuted(project, nobody, true); }), Kind::noSuchClip);
    EXPECT_EQ(failureOf([&] { growAudio(project, nobody, ClipEdge::leading, 1); }), Kind::noSuchClip);
    EXPECT_EQ(failureOf([&] { (void)headroom(project, nobody); }), Kind::noSuchClip);
    EXPECT_EQ(failureOf([&] { setSpeed(project, held, 2); }), Kind::heldFrame);
    EXPECT_EQ(failureOf([&] { trimClip(project, held, ClipEdge::leading, std::nan("")); }), Kind::badNumber);
    EXPECT_EQ(failureOf([&] { keepTimeRange(project, {13, 4}); }), Kind::nothingShown);
    EXPECT_EQ(failureOf([&] { insertTime(project, 12.5, 1); }), Kind::nothingShown);
    EXPECT_EQ(failureOf([&] { insertTime(project, -1, 1); }), Kind::nothingShown);
    EXPECT_EQ(failureOf([&] { changeSpeed(project, {0, infinite}, 2); }), Kind::badNumber);
    EXPECT_FALSE(splitClip(project, 4));
    EXPECT_EQ(trimClip(project, held, ClipEdge::trailing, 12.0005), 0);
    EXPECT_EQ(project, before);
}

TEST(GrowAudio, anEdgeStopsAtItsMediaItsNeighbourAndTheEndsOfTheEdit) {
    auto project = twoClips();
    auto& sound = project.audioTracks[0].clips;
    sound[1].start = 6;
    sound[1].duration = 3;
    sound[1].fadeOut = 2;
    EXPECT_EQ(growAudio(project, sound[0].id, ClipEdge::trailing, 10), 2) << "up to the next clip";
    EXPECT_EQ(growAudio(project, sound[0].id, ClipEdge::leading, 10), 0) << "nothing before the start of the edit";
    EXPECT_EQ(growAudio(project, sound[1].id, ClipEdge::trailing, 10), 1) << "up to the end of the edit";
    EXPECT_EQ(growAudio(project, sound[1].id, ClipEdge::leading, -1), -1);
    EXPECT_EQ(drawn(sound), "0-6:2 7-10:11");
    EXPECT_EQ(growAudio(project, sound[1].id, ClipEdge::leading, 0.25), 0.25);
    EXPECT_NEAR(growAudio(project, sound[1].id, ClipEdge::trailing, -50), -3.2, 1e-9);
    EXPECT_NEAR(sound[1].fadeOut, shortestClip, 1e-9);
    sound[0].sourceStart = 0.5;
    sound[0].start = 3;
    EXPECT_EQ(growAudio(project, sound[0].id, ClipEdge::leading, 10), 0.5) << "its media begins there";
    EXPECT_EQ(drawn(project.timeline.clips), "0-4:2 4-10:10");
}

TEST(ClipEdits, aDuplicatePlaysRightBehindWithItsSoundAndEverythingBehindMoves) {
    auto project = twoClips();
    auto const first = clipID(project, 0);
    duplicateClip(project, first);
    EXPECT_EQ(drawn(project.timeline.clips), "0-4:2 4-8:2 8-14:10");
    EXPECT_EQ(clipID(project, 0), first);
    EXPECT_NE(clipID(project, 1), first);
    EXPECT_EQ(drawn(project.audioTracks[0].clips), "0-4:2 4-8:2 8-14:10");
    EXPECT_EQ(drawn(project.audioTracks[1].clips), "0-10:0") << "music plays on";
    EXPECT_EQ(zooms(project), "1-2 9-11 ");

    auto joined = twoClips();
    joined.timeline.clips = {{.asset = "screen.mp4", .duration = 4},
                             {.asset = "screen.mp4", .start = 4, .sourceStart = 4, .duration = 4}};
    joined.audioTracks[0].clips = {{.asset = "mic.m4a", .duration = 8}};
    duplicateClip(joined, clipID(joined, 1));
    EXPECT_EQ(drawn(joined.timeline.clips), "0-4:0 4-8:4 8-12:4");
    EXPECT_EQ(drawn(joined.audioTracks[0].clips), "0-4:0 4-8:4 8-12:4") << "of sound that runs on, what the clip shows";
    EXPECT_EQ(failureOf([&] { duplicateClip(project, UUID::random()); }), EditError::Kind::noSuchClip);
}
