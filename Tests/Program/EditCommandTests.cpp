#include "ProcessFixture.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::HasSubstr;

namespace {

/// Edits a project of six seconds of moving picture, through the program.
class EditCommand : public ProcessFixture {
protected:
    void SetUp() override {
        ffmpeg(
            {"-f", "lavfi", "-i", "testsrc2=size=320x180:rate=30:duration=6", "-pix_fmt", "yuv420p", path("clip.mp4")});
        ASSERT_EQ(tavaro({"import", path("clip.mp4"), "-o", path("tour")}).exitCode, 0);
    }
    std::string project() { return path("tour.recproj"); }
    DemoProject document() { return ProjectPackage(project()).load(); }
    void change(std::function<void(DemoProject&)> const& edit) {
        auto changed = document();
        edit(changed);
        ProjectPackage(project()).save(changed);
    }

    Outcome edit(Arguments words) {
        words.insert(words.begin(), {"edit", project()});
        return tavaro(words);
    }
    void expectEdit(Arguments const& words, std::string const& line) {
        auto const outcome = edit(words);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        EXPECT_EQ(outcome.out, line + "\n");
    }
    void expectRefusal(Arguments const& words, int exitCode, std::string const& sentence) {
        auto const before = read("tour.recproj/project.json");
        auto const outcome = edit(words);
        EXPECT_EQ(outcome.exitCode, exitCode) << sentence;
        EXPECT_THAT(outcome.error, HasSubstr(sentence));
        EXPECT_EQ(read("tour.recproj/project.json"), before);
    }
    std::string frameAt(std::string const& seconds) {
        auto const outcome =
            tavaro({"frame", project(), "--at", seconds, "--max-width", "160", "-o", path("f.png"), "--overwrite"});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        return read("f.png");
    }
};

}

TEST_F(EditCommand, thePictureMovesAsTheEditSays) {
    auto const second = frameAt("2"), third = frameAt("3"), fourth = frameAt("4"), last = frameAt("6");
    ASSERT_NE(second, third);
    expectEdit({"cut", "0.5", "1.5"}, "Cut 0:00.50–0:01.50: 0:06.00 → 0:05.00");
    EXPECT_EQ(frameAt("1"), second);
    expectEdit({"speed", "2", "4", "2"}, "0:02.00–0:04.00 plays 2 times as fast: 0:05.00 → 0:04.00");
    EXPECT_EQ(frameAt("2.5"), fourth);
    expectEdit({"insert", "2", "1.5"}, "The frame at 0:02.00 is held for 1.5 s: 0:04.00 → 0:05.50");
    EXPECT_EQ(frameAt("2"), third);
    EXPECT_EQ(frameAt("3.4"), third);
    EXPECT_EQ(frameAt("4"), fourth);
    expectEdit({"insert", "5.5", "1"}, "The frame at 0:05.50 is held for 1 s: 0:05.50 → 0:06.50");
    EXPECT_EQ(frameAt("6.2"), last);
    expectEdit({"trim", "1", "6.25"}, "Kept 0:01.00–0:06.25: 0:06.50 → 0:05.25");
    EXPECT_EQ(frameAt("0"), second);

    ASSERT_EQ(tavaro({"export", project(), "--size", "320x180", "--fps", "30", "-o", path("tour.mp4")}).exitCode, 0);
    EXPECT_NEAR(MovieReader(path("tour.mp4")).info().duration, 5.25, 1.0 / 30);
}

TEST_F(EditCommand, editsMadeAtOnceAllCount) {
    std::vector<RunningProcess> running;
    for (auto const at : {"1", "2", "3", "4", "5"})
        running.push_back(start(TAVARO_PROGRAM, {"edit", project(), "split", at}));
    for (auto& edit : running) EXPECT_EQ(edit.wait().exitCode, 0);
    EXPECT_EQ(document().timeline.clips.size(), 6u);
}

TEST_F(EditCommand, eachEditIsSavedWithTheOneBeforeAsBackup) {
    auto const before = read("tour.recproj/project.json");
    expectEdit({"split", "3"}, "Split at 0:03.00");
    EXPECT_EQ(read("tour.recproj/project.previous.json"), before);
    auto const split = document();
    EXPECT_EQ(split.timeline.clips.size(), 2u);
    EXPECT_GT(split.modifiedAt, split.createdAt);

    auto const saved = read("tour.recproj/project.json");
    expectEdit({"remove-silence"}, "There is no silence to remove");
    expectEdit({"speed-up-typing"}, "There is no typing to speed up");
    EXPECT_EQ(read("tour.recproj/project.json"), saved) << "what changes nothing writes nothing";
    EXPECT_EQ(read("tour.recproj/project.previous.json"), before);

    auto const report = edit({"cut", "0", "1", "--json"});
    EXPECT_THAT(report.out, HasSubstr(R"("duration":5,"durationBefore":6,"isChanged":true,"operation":"cut")"));
}

TEST_F(EditCommand, silencesAndTypingThatTheProjectKnowsAreUsed) {
    change([](DemoProject& project) {
        project.silences = {{.start = 0.5, .duration = 1, .isRemoved = true}, {.start = 5, .duration = 0.5}};
        for (int i = 0; i < 9; ++i) project.metadata.edit().keystrokes.push_back({.t = 2 + i * 0.25, .keys = {"a"}});
    });
    expectEdit({"remove-silence"}, "Removed 1 silence: 0:06.00 → 0:05.00");
    expectEdit({"speed-up-typing", "4"}, "Sped up typing 4 times in 1 place: 0:05.00 → 0:03.50");
    EXPECT_EQ(document().silences.at(0).start, 2.5);
}

TEST_F(EditCommand, wordsOfTheTranscriptAreCutWithTheirPicture) {
    expectRefusal({"remove-fillers"}, 1, "This project has no transcript yet.");
    change([](DemoProject& project) {
        Transcript transcript;
        transcript.words = {{.text = "So", .start = 0.5, .end = 0.9},
                            {.text = "um,", .start = 1, .end = 1.5},
                            {.text = "here", .start = 1.6, .end = 2},
                            {.text = "we", .start = 4, .end = 4.4},
                            {.text = "go.", .start = 4.5, .end = 5}};
        project.transcript = transcript;
    });
    expectEdit({"tighten-pauses", "--threshold", "1", "--keep", "0.5"}, "Tightened 1 pause: 0:06.00 → 0:04.50");
    auto const fillers = edit({"remove-fillers"});
    EXPECT_THAT(fillers.out, HasSubstr("Removed 1 filler word: 0:04.50 → 0:0"));
    expectEdit({"remove-fillers"}, "There is no filler word to remove");
    EXPECT_THAT(edit({"delete-words", "--list"}).out, HasSubstr("    1         cut  um,\n"));
    auto const words = edit({"delete-words", "3", "4"});
    EXPECT_THAT(words.out, HasSubstr("Deleted 2 words: "));
    EXPECT_LT(document().duration(), 4);
    expectEdit({"delete-words", "4"}, "The edit shows none of these words");
    expectRefusal({"delete-words", "2", "5"}, 1, "There is no word 5: the words are numbered 0 to 4.");
    expectRefusal({"delete-words", "4", "2"}, 1, "The words have to be named in order: 4 is behind 2.");
    expectRefusal({"delete-words"}, 2, "FROM is required");
    expectRefusal({"tighten-pauses", "--keep", "-1"}, 2, "“-1” is not a number of seconds from 0 to 3600");
}

TEST_F(EditCommand, soundIsMutedByTrackByTimeAndByClip) {
    change([](DemoProject& project) { project.audioTracks = {{.role = AudioRole::microphone}}; });
    ASSERT_EQ(edit({"split", "2"}).exitCode, 0);
    expectEdit({"mute", "microphone"}, "Muted the microphone track");
    expectEdit({"volume", "microphone", "0.5"}, "The microphone track plays at 0.5 times its volume");
    expectEdit({"mute", "2.5"}, "Muted the clip at 0:02.00–0:06.00");
    auto const muted = document();
    EXPECT_TRUE(muted.audioTracks[0].isMuted);
    EXPECT_EQ(muted.audioTracks[0].gain, 0.5);
    EXPECT_FALSE(muted.timeline.clips[0].isMuted);
    EXPECT_TRUE(muted.timeline.clips[1].isMuted);
    expectEdit({"mute", muted.timeline.clips[1].id.text(), "--off"}, "Unmuted the clip at 0:02.00–0:06.00");
    EXPECT_FALSE(document().timeline.clips[1].isMuted);
}

TEST_F(EditCommand, nonsenseIsRefusedWithASentenceAndChangesNothing) {
    expectRefusal({"cut", "3", "2"}, 1, "The end of the span has to come after its start: 2 s is not after 3 s.");
    expectRefusal({"trim", "1", "9"}, 1, "9 s is past the end of the video, which lasts 6.00 s.");
    expectRefusal({"cut", "0", "6"}, 1, "The edit would leave nothing of the video, and is not made.");
    expectRefusal({"split", "6"}, 1, "There is nothing to split at 6 s: a clip begins or ends there.");
    expectRefusal({"insert", "7", "1"}, 1, "7 s is past the end of the video, which lasts 6.00 s.");
    expectRefusal({"volume", "music", "1"}, 1, "This project has no music track.");
    expectRefusal({"mute", "6BA7B810-9DAD-11D1-80B4-00C04FD430C8"}, 1, "The project has no clip 6BA7B810");
    expectRefusal({"speed", "0", "2", "17"}, 2, "“17” is not a rate from 0.25 to 16");
    expectRefusal({"speed", "0", "2", "nan"}, 2, "“nan” is not a rate from 0.25 to 16");
    expectRefusal({"cut", "-1", "2"}, 2, "“-1” is not a number of seconds of 0 or more");
    expectRefusal({"cut", "1", "inf"}, 2, "“inf” is not a number of seconds of 0 or more");
    expectRefusal({"insert", "1", "0"}, 2, "“0” is not a number of seconds from 0.001 to 86400");
    expectRefusal({"mute", "me"}, 2, "“me” is no track");
    expectRefusal({"volume", "microphone", "3"}, 2, "“3” is not a gain from 0 to 2");
    expectRefusal({"speed-up-typing", "0.5"}, 2, "“0.5” is not a factor from 1 to 16");
    expectRefusal({}, 2, "subcommand is required");
}

TEST_F(EditCommand, aGapOfAnotherToolsMakingShowsTheBackgroundAndIsClosedByTheNextCut) {
    change([](DemoProject& project) {
        project.timeline.split(3);
        project.timeline.clips[1].start = 5;
    });
    auto const shown = frameAt("2"), gap = frameAt("4");
    EXPECT_NE(gap, shown);
    EXPECT_EQ(gap, frameAt("4.5"));
    expectEdit({"cut", "0", "1"}, "Cut 0:00.00–0:01.00: 0:08.00 → 0:05.00");
    EXPECT_EQ(frameAt("1"), shown);
}

TEST_F(EditCommand, anyFieldOfTheDocumentCanBeSetOrPatched) {
    expectEdit({"set", "background.preset=midnight", "name=A tour", "cursor.size=2"},
               "Changed name, background, cursor");
    EXPECT_EQ(document().name, "A tour");
    write("style.json", R"({"screen": {"padding": 0.1}, "intro": {"text": "Hello"}})");
    expectEdit({"patch", path("style.json")}, "Changed intro, screen");
    EXPECT_EQ(document().screen.padding, 0.1);
    expectEdit({"patch", path("style.json")}, "The project is that way already");

    expectRefusal({"set", "camera.size=big", "name=B"}, 1, "camera.size: expected a number, found a string.");
    expectRefusal({"set", "nmae=B"}, 1, "\"nmae\" is not a project field.\n");
    expectRefusal({"set", "timeline.clips=[]"}, 1, "\"timeline\" can't be changed.\n");
    expectRefusal({"set", "camera"}, 2, "“camera” is no change; those are PATH=VALUE");
    expectRefusal({"set"}, 2, "FIELD is required");
    write("broken.json", "{\"name\":");
    expectRefusal({"patch", path("broken.json")}, 1, "Could not read the JSON in");
    expectRefusal({"patch", path("none.json")}, 1, "There is no file");
}
