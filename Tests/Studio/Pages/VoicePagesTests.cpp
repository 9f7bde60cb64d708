#include "../Voice/TestVoices.h"
#include "ShownPage.h"

#include <Tavaro/Studio/Voice/VoiceDesk.h>

#include <gmock/gmock.h>

#include <atomic>

using namespace tavaro;
using ::testing::IsEmpty;

namespace {

struct VoicePages : testing::Test {
    ShownPage shown(char const* file, DemoProject project) {
        return {file, std::move(project), {.properties = {}, .assets = {}, .voices = voices.means()}};
    }
    static VoiceDesk& deskOf(ShownPage const& page) { return *qobject_cast<VoiceDesk*>(page.desk->voice()); }
    /// Once everything has its place.
    static void press(ShownPage& page, QString const& name) {
        page.waitForItem(name);
        page.view->grabWindow();
        page.click(name);
    }
    static void waitForRun(ShownPage const& page) {
        TestEditor::waitFor([&] { return !deskOf(page).voiceover()->isRunning(); });
    }

    TestVoices voices;
};

std::string textsOf(DemoProject const& project) {
    std::string texts;
    for (auto const& line : project.voiceover->segments) texts += "[" + line.text + "]";
    return texts;
}

}

TEST_F(VoicePages, linesAreWrittenInPlaceAndSpokenByTheButtonThatTellsThePrice) {
    auto page = shown("ScriptPanel.qml", narrated());
    press(page, QStringLiteral("Text of line 2"));
    EXPECT_EQ(page.session().playhead(), 5) << "the film shows what is spoken over it";
    page.press(Qt::Key_End);
    page.type(" five\n");
    EXPECT_EQ(textsOf(page.document()), "[one two][three four five]");
    press(page, QStringLiteral("Start of line 2"));
    page.press(Qt::Key_A, Qt::ControlModifier);
    page.type("6.5\n");
    EXPECT_EQ(page.document().voiceover->segments[1].anchor, 6.5);
    press(page, QStringLiteral("Generate 2 lines · free"));
    waitForRun(page);
    page.waitForItem(QStringLiteral("All lines are spoken"));
    page.waitForItem(QStringLiteral("one two, spoken"));
    press(page, QStringLiteral("Text of line 1"));
    page.type("x\n");
    page.waitForItem(QStringLiteral("Generate 1 line · free"));
    EXPECT_EQ(page.project->steps().size(), 4u);
    EXPECT_THAT(page.warnings, IsEmpty());
}

TEST_F(VoicePages, whatAPaidVoiceCostsIsReadHoweverNarrowThePage) {
    auto project = narrated();
    project.voiceover->voice.voiceID = "anna";
    auto page = shown("ScriptPanel.qml", project);
    page.view->resize(240, 500);
    auto const sentence = QStringLiteral("Anna. 17 characters of your ElevenLabs account");
    page.waitForItem(sentence);
    page.waitForItem(QStringLiteral("Generate 2 lines · 17 characters"));
    page.view->grabWindow();
    auto const* price = page.find(sentence);
    auto const* button = page.find(QStringLiteral("Generate 2 lines · 17 characters"));
    ASSERT_TRUE(price && button);
    EXPECT_GT(price->height(), 25) << "it takes two lines";
    EXPECT_LE(price->mapToScene({0, price->height()}).y(), button->mapToScene({}).y());
    EXPECT_LE(button->mapToScene({0, button->height()}).y(), 500);
    EXPECT_THAT(page.warnings, IsEmpty());
}

TEST_F(VoicePages, whyALineCouldNotBeSpokenIsBesideItWithAnotherTry) {
    std::atomic<bool> isBroken = true;
    voices.studio.mishap = [&](std::string const& text, int) {
        if (isBroken && text == "one two")
            throw VoiceError(VoiceError::Kind::failed, "The voice broke down in the middle of this line.");
    };
    auto page = shown("ScriptPanel.qml", narrated());
    press(page, QStringLiteral("Generate 2 lines · free"));
    page.waitForItem(QStringLiteral("The voice broke down in the middle of this line."));
    waitForRun(page);
    isBroken = false;
    press(page, QStringLiteral("Try line 1 again"));
    waitForRun(page);
    page.waitForItem(QStringLiteral("one two, spoken"));
    EXPECT_EQ(page.find(QStringLiteral("Try line 1 again")), nullptr);
    EXPECT_THAT(page.warnings, IsEmpty());
}

TEST_F(VoicePages, aScriptIsDraftedWithANameAndPastedAsAWhole) {
    auto page = shown("ScriptPanel.qml", shortFilm());
    press(page, QStringLiteral("Draft a script"));
    page.waitForItem(QStringLiteral("Name of the product"));
    page.type("Paper");
    press(page, QStringLiteral("Draft"));
    page.waitForItem(QStringLiteral("Text of line 1"));
    EXPECT_NE(textsOf(page.document()).find("Paper"), std::string::npos) << textsOf(page.document());
    press(page, QStringLiteral("Edit or paste the whole script…"));
    page.waitForItem(QStringLiteral("Use this script"));
    page.press(Qt::Key_A, Qt::ControlModifier);
    page.type("0:01 first");
    press(page, QStringLiteral("Use this script"));
    EXPECT_EQ(textsOf(page.document()), "[first]");
    EXPECT_EQ(page.project->steps().size(), 2u);
    EXPECT_THAT(page.warnings, IsEmpty());
}

TEST_F(VoicePages, theVoiceIsHeardAndChosenAndWhatItDoesToTheFilmToo) {
    auto page = shown("VoicePanel.qml", narrated());
    auto& sample = *deskOf(page).sample();
    press(page, QStringLiteral("Hear Tone · flite first"));
    TestEditor::waitFor([&] {
        voices.device->pass(0.2);
        return voices.studio.count == 1 && !sample.isMaking() && !sample.isPlaying();
    });
    EXPECT_EQ(sample.failure(), "");
    press(page, QStringLiteral("Hold the frame"));
    EXPECT_TRUE(page.document().voiceover->stretchesVideoToFit);
    press(page, QStringLiteral("Quieten other sound"));
    EXPECT_FALSE(page.document().voiceover->ducksOtherAudio);
    page.find(QStringLiteral("Voice that speaks"))->forceActiveFocus();
    page.press(Qt::Key_Down);
    EXPECT_EQ(page.document().voiceover->voice.voiceID, "system:low");
    EXPECT_THAT(page.warnings, IsEmpty());
}

TEST_F(VoicePages, theTranscriptIsMadeWhereThereIsNoneAndItsWordsAppear) {
    voices.hears({"hello", "there", "again"});
    auto project = shortFilm();
    project.audioTracks = {{.role = AudioRole::microphone, .clips = {{.asset = "mic.caf", .duration = 3}}}};
    auto page = shown("TranscriptPanel.qml", project);
    addSpeech(page.project.package());
    auto& run = *deskOf(page).transcription();
    run.setLocale(QStringLiteral("en-US"));
    TestEditor::waitFor([&] { return run.canStart(); });
    press(page, QStringLiteral("Transcribe"));
    press(page, QStringLiteral("Stop transcribing"));
    TestEditor::waitFor([&] { return !run.isRunning(); });
    press(page, QStringLiteral("Transcribe"));
    voices.go();
    page.waitForItem(QStringLiteral("hello there again"));
    EXPECT_EQ(page.project->steps().size(), 1u);
    press(page, QStringLiteral("Transcribe anew…"));
    page.waitForItem(QStringLiteral("What can hear"));
    EXPECT_THAT(page.warnings, IsEmpty());
}
