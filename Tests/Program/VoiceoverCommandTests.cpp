#include "ProcessFixture.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSONValue.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

namespace {

/// Works on a project of eight seconds, made without any movie, with a script of three lines.
class VoiceoverCommand : public ProcessFixture {
protected:
    VoiceoverCommand() {
        DemoProject project;
        project.timeline.clips = {{.asset = "screen.mp4", .duration = 8}};
        project.voiceover.emplace().segments = {{.text = "Let me show you how it works.", .anchor = 0},
                                                {.text = "I click here.", .anchor = 1},
                                                {.text = "That's all there is to it.", .anchor = 7.5}};
        save(project);
    }
    void save(DemoProject const& project) {
        package.createDirectories();
        package.save(project);
    }
    Outcome voiceover(Arguments words) {
        words.insert(words.begin(), {"voiceover", path("tour.recproj")});
        return tavaro(words);
    }

    ProjectPackage const package{path("tour.recproj")};
};

}

TEST_F(VoiceoverCommand, speaksTheScriptLaysItOnTheFilmAndMakesCaptions) {
    auto const made = voiceover({"--voice", "system:flite/slt", "--hold-frame", "--captions"});
    EXPECT_EQ(made.exitCode, 0) << made.error;
    EXPECT_THAT(made.out,
                AllOf(HasSubstr("   1  0:00.00–0:0"), HasSubstr("I click here.\n"), HasSubstr("3 lines by ")));
    auto const project = package.load();
    auto const& plan = project.voiceover.value();
    EXPECT_EQ(plan.voice.voiceID, "system:flite/slt");
    EXPECT_TRUE(plan.stretchesVideoToFit);
    EXPECT_GT(plan.segments[1].start, 1.2) << "the frame waits for the first line";
    EXPECT_DOUBLE_EQ(plan.segments[1].start, plan.segments[1].anchor.value());
    EXPECT_GE(project.duration(), plan.segments[2].end() - 0.01);
    EXPECT_EQ(project.captions.cues.size(), 3u);

    auto const again = JSONValue::parse(voiceover({"--json"}).out);
    EXPECT_EQ(*again.find<std::int64_t>("newlySpoken"), 0);
    EXPECT_EQ(package.load().voiceover, plan);
    auto const cost = JSONValue::parse(voiceover({"--estimate", "--json", "--speed", "1.5", "--only", "2"}).out);
    EXPECT_EQ(*cost.find<std::int64_t>("lines"), 1);
    EXPECT_EQ(*cost.find<std::int64_t>("characters"), 13);
}

TEST_F(VoiceoverCommand, saysWhoPaysAndWhichLinesAreLeft) {
    auto const paid = voiceover({"--estimate", "--voice", "a-voice-of-mine"});
    EXPECT_EQ(paid.out, "3 lines, 68 characters to be spoken by a-voice-of-mine, from your ElevenLabs account\n");
    EXPECT_THAT(paid.error, HasSubstr("“a-voice-of-mine” is none of the voices known here"));
    auto const free = voiceover({"--estimate", "--voice", "system:flite/slt"});
    EXPECT_EQ(free.out, "3 lines, 68 characters to be spoken by system:flite/slt\n");
    EXPECT_EQ(free.error, "");

    EXPECT_THAT(voiceover({"--voice", "system:flite/slt"}).out, Not(HasSubstr("to be spoken")));
    EXPECT_THAT(voiceover({"--voice", "system:flite/rms", "--only", "2"}).out,
                AllOf(HasSubstr("I click here.\n"), HasSubstr("That's all there is to it.  (to be spoken)\n"),
                      HasSubstr("2 more lines are to be spoken in this voice.\n")));
}

TEST_F(VoiceoverCommand, saysWhatIsWrongAndKeepsTheProject) {
    auto const before = read("tour.recproj/project.json");
    auto const noLine = voiceover({"--only", "4"});
    EXPECT_EQ(noLine.exitCode, 1);
    EXPECT_THAT(noLine.error, HasSubstr("There is no line 4: the script has 3 lines."));
    EXPECT_EQ(voiceover({"--push", "--hold-frame"}).exitCode, 2);
    EXPECT_EQ(voiceover({"--speed", "9"}).exitCode, 2);
    EXPECT_EQ(voiceover({"--only", "0"}).exitCode, 2);
    auto const noKey = voiceover({"--voice", "21m00Tcm4TlvDq8ikWAM"});
    EXPECT_THAT(noKey.error, HasSubstr("Add your ElevenLabs API key in Settings to generate voiceover."));
    EXPECT_EQ(read("tour.recproj/project.json"), before);
    save({});
    EXPECT_THAT(voiceover({}).error, HasSubstr("The project has no script to speak yet"));
}
