#include "ProcessFixture.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <gmock/gmock.h>

using namespace tavaro;
namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

/// Works on a project of ten seconds, made without any movie: captions need none.
class CaptionsCommand : public ProcessFixture {
protected:
    void save(std::vector<TranscriptWord> words, double introSeconds = 0) {
        DemoProject project;
        project.timeline.clips = {{.asset = "screen.mp4", .duration = 10}};
        if (!words.empty()) project.transcript = Transcript{.words = std::move(words)};
        if (introSeconds > 0) project.intro = TitleCard{.duration = introSeconds};
        ProjectPackage const package(path("tour.recproj"));
        package.createDirectories();
        package.save(project);
    }
    std::vector<CaptionCue> cues() { return ProjectPackage(path("tour.recproj")).load().captions.cues; }
    Outcome captions(Arguments words) {
        words.insert(words.begin(), {"captions", path("tour.recproj")});
        return tavaro(words);
    }
    void expectRefusal(Arguments const& words, int exitCode, std::string const& sentence) {
        auto const before = read("tour.recproj/project.json");
        auto const outcome = captions(words);
        EXPECT_EQ(outcome.exitCode, exitCode) << sentence;
        EXPECT_THAT(outcome.error, HasSubstr(sentence));
        EXPECT_EQ(read("tour.recproj/project.json"), before);
    }

    std::vector<TranscriptWord> const spoken = {{.text = "Um,", .start = 0.5, .end = 1},
                                                {.text = "Click", .start = 1, .end = 1.5},
                                                {.text = "here.", .start = 1.5, .end = 2},
                                                {.text = "Done.", .start = 4, .end = 4.5}};
};

}

TEST_F(CaptionsCommand, aTranscriptBecomesCaptionsAndASubtitleFile) {
    save(spoken, 2);
    auto const made = captions({"--from-transcript", "-o", path("tour.srt")});
    EXPECT_EQ(made.exitCode, 0) << made.error;
    EXPECT_EQ(made.out, "Made 2 captions from the transcript\nWrote 2 captions to " + path("tour.srt") + "\n");
    EXPECT_EQ(read("tour.srt"), "1\n00:00:03,000 --> 00:00:05,000\nClick here.\n\n"
                                "2\n00:00:06,000 --> 00:00:06,500\nDone.\n\n")
        << "times of the film, which begins with a title card";
    EXPECT_TRUE(ProjectPackage(path("tour.recproj")).load().captions.isEnabled);
    EXPECT_EQ(captions({}).out, "0:01.00–0:03.00  Click here.\n0:04.00–0:04.50  Done.\n");

    EXPECT_EQ(captions({"--from-transcript", "--max-characters", "6", "--break-on-pause", "0.2"}).out,
              "Made 3 captions from the transcript\n");
    auto const json = captions({"--json", "-o", path("tour.vtt")});
    EXPECT_THAT(json.out, StartsWith("{\"count\":3,\"cues\":[{"));
    EXPECT_THAT(json.out, HasSubstr("\"path\":\"" + path("tour.vtt") + "\""));
    EXPECT_THAT(read("tour.vtt"), StartsWith("WEBVTT\n\n00:00:03.000 --> "));
}

TEST_F(CaptionsCommand, subtitlesComeBackAsTheyWereWritten) {
    save(spoken, 2);
    captions({"--from-transcript", "-o", path("tour.vtt")});
    auto const before = cues();
    EXPECT_EQ(captions({"--import", path("tour.vtt")}).out, "Made 2 captions from the subtitles\n");
    auto const after = cues();
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < after.size(); ++i) {
        EXPECT_EQ(after[i].text, before[i].text);
        EXPECT_NEAR(after[i].start, before[i].start, 1e-9);
        EXPECT_NEAR(after[i].duration, before[i].duration, 1e-9);
        EXPECT_NEAR(after[i].words[0].start, before[i].words[0].start, 1e-9);
    }
}

TEST_F(CaptionsCommand, aScriptIsSpreadOverTheEdit) {
    save({});
    write("script.txt", "Welcome to the tour.\nHere we go.\n");
    EXPECT_EQ(captions({"--from-script", path("script.txt"), "--max-characters", "20"}).out,
              "Made 2 captions from the script\n");
    EXPECT_NEAR(cues()[1].range().end(), 10, 1e-9);
    EXPECT_EQ(captions({"--from-script", path("script.txt"), "--start", "8", "--duration", "60"}).exitCode, 0);
    EXPECT_EQ(cues()[0].start, 8);
    EXPECT_EQ(cues()[0].range().end(), 10);
}

TEST_F(CaptionsCommand, aFileThatIsThereIsOnlyReplacedWhereThatIsAskedFor) {
    save(spoken);
    write("tour.srt", "mine");
    fs::create_symlink("nowhere", folder / "link.srt");
    for (auto const* const name : {"tour.srt", "link.srt"})
        expectRefusal({"--from-transcript", "-o", path(name)}, 1,
                      "Could not write “" + path(name) + "”: something with that name exists already. --overwrite ");
    EXPECT_EQ(read("tour.srt"), "mine");
    EXPECT_EQ(captions({"--from-transcript", "-o", path("tour.srt"), "--overwrite"}).exitCode, 0);
    EXPECT_THAT(read("tour.srt"), HasSubstr("Click here."));
}

TEST_F(CaptionsCommand, whatCannotBeCaptionedIsExplainedAndChangesNothing) {
    save({});
    write("blank.txt", " \n");
    write("bad.srt", "1\n00:00:01,000 --> later\nHello\n");
    write("late.srt", "1\n00:01:00,000 --> 00:01:01,000\nHello\n");
    expectRefusal({}, 1, "The project has neither captions nor a transcript to make them from");
    expectRefusal({"--from-transcript"}, 1, "The project has no transcript to make captions from.");
    expectRefusal({"--from-script", path("blank.txt")}, 1, "There is no text in “" + path("blank.txt") + "”.");
    expectRefusal({"--from-script", path("none.txt")}, 1, "There is no file “" + path("none.txt") + "”.");
    expectRefusal({"--import", path("bad.srt")}, 1, "bad.srt”: Line 2: “00:00:01,000 --> later” gives no times");
    expectRefusal({"--import", path("late.srt")}, 1, "None of the 1 captions in");
    expectRefusal({"-o", path("tour.txt")}, 2, "captions are written as .srt or .vtt");
    expectRefusal({"--from-transcript", "--import", path("bad.srt")}, 2, "excludes");
    expectRefusal({"--from-transcript", "--break-on-pause", "nan"}, 2, "--break-on-pause");
    save({{.text = "Um", .start = 1, .end = 2}});
    expectRefusal({}, 1, "--from-transcript makes them");
    expectRefusal({"--from-transcript"}, 1, "The edit shows no words of the transcript");
    save(spoken);
    write("file", "in the way");
    expectRefusal({"--from-transcript", "-o", path("file/tour.srt")}, 1, "file/tour.srt");
}
