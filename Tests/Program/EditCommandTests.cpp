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
        auto const outcome = tavaro({"frame", project(), "--at", seconds, "--max-width", "160", "-o", path("f.png")});
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
    expectEdit({"speed-up-typing", "4"}, "Sped 1 stretch of typing up 4 times: 0:05.00 → 0:03.50");
    EXPECT_EQ(document().silences.at(0).start, 2.5);
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
    expectRefusal({"cut", "0", "6"}, 1, "The cut would leave nothing of the video; choose a shorter span.");
    expectRefusal({"split", "6"}, 1, "There is nothing to split at 6 s: a clip begins or ends there.");
    expectRefusal({"insert", "7", "1"}, 1, "7 s is past the end of the video, which lasts 6.00 s.");
    expectRefusal({"volume", "music", "1"}, 1, "This project has no music track.");
    expectRefusal({"mute", "6BA7B810-9DAD-11D1-80B4-00C04FD430C8"}, 1, "The project has no clip 6BA7B810");
    expectRefusal({"speed", "0", "2", "17"}, 2, "a rate is a number from 0.25 to 16, not '17'");
    expectRefusal({"speed", "0", "2", "nan"}, 2, "a rate is a number from 0.25 to 16, not 'nan'");
    expectRefusal({"cut", "-1", "2"}, 2, "a time is a number of seconds from 0 on, not '-1'");
    expectRefusal({"cut", "1", "inf"}, 2, "a time is a number of seconds from 0 on, not 'inf'");
    expectRefusal({"insert", "1", "0"}, 2, "the inserted time is a number of seconds from 0.001 to 86400, not '0'");
    expectRefusal({"mute", "me"}, 2, "what is muted is a track");
    expectRefusal({"volume", "microphone", "3"}, 2, "a gain is a number from 0 to 2, not '3'");
    expectRefusal({"speed-up-typing", "0.5"}, 2, "a factor is a number from 1 to 16, not '0.5'");
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
