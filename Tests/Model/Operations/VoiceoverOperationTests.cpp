#include <Tavaro/Model/Operations/Perform.h>

#include <TavaroCore/Project/DemoProject.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::HasSubstr;

namespace {

DemoProject film(double seconds) {
    DemoProject project;
    project.mode = DemoMode::desktopApp;
    if (seconds > 0) project.timeline.clips = {{.asset = "screen.mp4", .duration = seconds}};
    return project;
}

std::string refusal(DemoProject project, Operation const& operation) {
    try {
        return "made: " + perform(project, operation).summary;
    } catch (Error const& error) {
        return error.what();
    }
}

}

TEST(VoiceoverOperations, draftingAgainChangesNothingAndKeepsVoiceAndAudio) {
    auto project = film(20);
    EXPECT_EQ(perform(project, operations::DraftScript{"Geany"}).summary,
              "Drafted a script of 3 lines, 0:09.62 spoken");
    project.voiceover->voice.voiceID = "system:slt";
    project.voiceover->segments[0].audioAsset = "one.m4a";
    project.voiceover->segments[0].isDirty = false;
    auto const before = project;
    EXPECT_FALSE(perform(project, operations::DraftScript{"Geany"}).isChanged);
    EXPECT_EQ(project.voiceover, before.voiceover);

    perform(project, operations::DraftScript{"Geany", AutoDirectorScript::Style::social});
    EXPECT_EQ(project.voiceover->voice.voiceID, "system:slt");
    EXPECT_EQ(project.voiceover->segments[0].audioAsset, std::nullopt) << "it says something else";
    perform(project, operations::SetScript{"Let me show you Geany."});
    EXPECT_EQ(project.voiceover->segments.size(), 1u);
}

TEST(VoiceoverOperations, sayWhatCannotBeAScript) {
    EXPECT_EQ(refusal(film(0), operations::DraftScript{}),
              "The video shows nothing yet, so there is nothing to narrate.");
    EXPECT_EQ(refusal(film(9), operations::SetScript{.script = "--"}),
              "This text cannot be the script: There is no text to speak in it.");
    EXPECT_EQ(refusal(film(9), operations::SetScript{"0:10 Late", "mine.txt"}),
              "“mine.txt” cannot be the script: “Late” is to begin at 0:10.00, but the video ends at 0:09.00.");
    EXPECT_EQ(refusal(film(1), operations::SetScript{.script = "One two three four five six seven eight nine."}),
              "made: Took a script of 1 line, 0:03.33 spoken; its last line goes on 2.3 s past the end of the video");
    EXPECT_THAT(refusal(film(9), operations::DraftScript{std::string(61, 'x')}), HasSubstr("60 characters at most"));
}
