#include "TestVoices.h"

#include <Tavaro/Studio/Voice/VoiceDesk.h>

#include <gmock/gmock.h>

#include <atomic>

using namespace tavaro;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class VoiceDeskTest : public testing::Test {
protected:
    explicit VoiceDeskTest(DemoProject project = narrated()) : editor(std::move(project)) {
        desk.offer()->look();
        wait([&] { return !desk.offer()->isLooking(); });
    }
    template<class IsSo> static void wait(IsSo isSo) { TestEditor::waitFor(isSo); }

    void generate() {
        desk.voiceover()->generate();
        wait([&] { return !desk.voiceover()->isRunning(); });
    }
    QString role(int row, char const* name) {
        auto const& lines = *desk.script();
        return lines.index(row).data(lines.roleNames().key(name)).toString();
    }
    std::vector<std::string> stages() {
        std::vector<std::string> all;
        for (int row = 0; row < desk.script()->count(); ++row) all.push_back(role(row, "stage").toStdString());
        return all;
    }
    VoiceoverPlan const& plan() const { return *editor.document().voiceover; }

    TestVoices voices;
    TestEditor editor;
    VoiceDesk desk{editor.queue, *editor.session, voices.means()};
};

}

TEST_F(VoiceDeskTest, onlyWhatChangedIsSpokenAgainAndEachRunIsAStep) {
    auto& run = *desk.voiceover();
    wait([&] { return run.isCostKnown(); });
    EXPECT_EQ(run.lines(), 2);
    EXPECT_FALSE(run.isPaid());
    EXPECT_THAT(stages(), ElementsAre("unspoken", "unspoken"));
    generate();
    EXPECT_THAT(stages(), ElementsAre("spoken", "spoken"));
    EXPECT_EQ(run.lines(), 0);
    EXPECT_EQ(plan().voice.voiceID, "system:tone") << "the project remembers who spoke";
    EXPECT_EQ(editor.project->steps().size(), 1u);

    desk.script()->setText(role(1, "identity"), QStringLiteral("three five"));
    EXPECT_THAT(stages(), ElementsAre("spoken", "changed"));
    EXPECT_EQ(run.lines(), 1);
    generate();
    EXPECT_EQ(voices.studio.timesAsked("one two"), 1);
    EXPECT_EQ(voices.studio.timesAsked("three five"), 1);
    editor->undo(), editor->undo();
    EXPECT_THAT(stages(), ElementsAre("spoken", "spoken")) << "the sound of the text before is still there";
    EXPECT_EQ(run.lines(), 0);
    EXPECT_THAT(editor.told, IsEmpty());
}

TEST_F(VoiceDeskTest, aFailureStaysWithItsLineUntilItIsSpokenOrWrittenOtherwise) {
    std::atomic<bool> isBroken = true;
    voices.studio.mishap = [&](std::string const& text, int) {
        if (isBroken && text == "one two") throw VoiceError(VoiceError::Kind::failed, "The engine broke down.");
    };
    generate();
    EXPECT_EQ(role(0, "failure"), "The engine broke down.");
    EXPECT_THAT(stages(), ElementsAre("unspoken", "spoken")) << "the others go on";
    desk.script()->setText(role(0, "identity"), QStringLiteral("one"));
    EXPECT_EQ(role(0, "failure"), "") << "another text has not failed";
    desk.script()->setText(role(0, "identity"), QStringLiteral("one two"));
    isBroken = false;
    desk.voiceover()->generateLine(role(0, "identity"));
    wait([&] { return !desk.voiceover()->isRunning(); });
    EXPECT_THAT(stages(), ElementsAre("spoken", "spoken"));
    EXPECT_EQ(role(0, "failure"), "");
    EXPECT_EQ(voices.studio.timesAsked("three four"), 1);
}

TEST_F(VoiceDeskTest, aPaidVoiceIsCountedByItsCharactersAndSpeaksNothingWithoutAKey) {
    desk.offer()->choose(QStringLiteral("anna"));
    auto& run = *desk.voiceover();
    wait([&] { return run.isPaid(); });
    EXPECT_EQ(run.characters(), 17);
    EXPECT_EQ(run.cost(), "17 characters of your ElevenLabs account");
    generate();
    EXPECT_EQ(run.failure(), "Add your ElevenLabs API key in Settings to generate voiceover.");
    EXPECT_EQ(voices.studio.count, 0);
    EXPECT_THAT(stages(), ElementsAre("unspoken", "unspoken"));
}

TEST_F(VoiceDeskTest, whatWasSpokenUntilACancelIsKeptAndNotSpokenAgain) {
    editor.session->edit("More", [](DemoProject& project) {
        for (int i = 0; i < 30; ++i) project.voiceover->segments.push_back({.text = "line " + std::to_string(i)});
    });
    desk.voiceover()->generate();
    wait([&] { return desk.voiceover()->done() >= 2 || !desk.voiceover()->isRunning(); });
    desk.voiceover()->cancel();
    wait([&] { return !desk.voiceover()->isRunning(); });
    auto const spoken =
        std::ranges::count_if(plan().segments, [](auto const& line) { return line.audioAsset.has_value(); });
    EXPECT_GE(spoken, 2);
    generate();
    for (auto const& line : plan().segments) EXPECT_LE(voices.studio.timesAsked(line.text), 1) << line.text;
    EXPECT_EQ(desk.voiceover()->lines(), 0);
}

TEST_F(VoiceDeskTest, linesAreEditedAsStepsInTheOrderInWhichTheyBegin) {
    auto& script = *desk.script();
    editor.session->setPlayhead(3);
    auto const added = script.add();
    EXPECT_EQ(role(1, "identity"), added);
    EXPECT_THAT(stages(), ElementsAre("unspoken", "empty", "unspoken"));
    script.setText(added, QStringLiteral(" in\nbetween "));
    EXPECT_EQ(role(1, "text"), "in between");
    script.setStart(added, 7.5);
    EXPECT_EQ(role(2, "identity"), added);
    EXPECT_EQ(plan().segments[1].anchor, 7.5) << "it is pinned there";
    EXPECT_EQ(script.current(), -1);
    editor.session->setPlayhead(7.6);
    EXPECT_EQ(script.current(), 2);
    script.remove(role(0, "identity"));
    EXPECT_EQ(script.count(), 2);
    EXPECT_EQ(editor.project->steps().size(), 4u);
    EXPECT_TRUE(script.paste(QStringLiteral("0:02 three four\n0:06 new")));
    EXPECT_EQ(role(0, "text"), "three four");
    EXPECT_EQ(role(1, "text"), "new");
    EXPECT_FALSE(script.paste(QStringLiteral("  ")));
    EXPECT_EQ(editor.told.size(), 1u) << "why not is told";
}

TEST_F(VoiceDeskTest, aDraftIsForOneOfTheStylesAndReplacesTheScript) {
    auto const styles = ScriptLines::styles();
    ASSERT_EQ(styles.size(), 5);
    EXPECT_EQ(styles.front().toMap().value(QStringLiteral("title")), "Product demo");
    ASSERT_TRUE(desk.script()->draft(QStringLiteral("launch"), QStringLiteral("Paper")));
    EXPECT_TRUE(role(0, "text").startsWith(QStringLiteral("Paper is live today."))) << role(0, "text").toStdString();
    EXPECT_FALSE(desk.script()->draft(QStringLiteral("other"), {}));
}

TEST_F(VoiceDeskTest, aLongLineHoldsTheFrameOnlyWhereThatIsChosen) {
    generate();
    desk.script()->setText(role(0, "identity"), QString(QStringLiteral("word ")).repeated(24));
    generate();
    auto const length = editor.document().duration();
    EXPECT_NEAR(plan().segments[1].start, plan().segments[0].end(), 0.2) << "the next is pushed on";
    desk.script()->setHoldsFrame(true);
    EXPECT_GT(editor.document().duration(), length);
    desk.script()->setHoldsFrame(false);
    EXPECT_NEAR(editor.document().duration(), length, 1e-6);
}

TEST_F(VoiceDeskTest, captionsAreMadeOfWhatIsSpoken) {
    generate();
    desk.voiceover()->makeCaptions();
    auto const& cues = editor.document().captions.cues;
    ASSERT_EQ(cues.size(), 2u);
    EXPECT_EQ(cues[0].text, "one two");
    EXPECT_NEAR(cues[1].start, 5, 0.1);
}

TEST_F(VoiceDeskTest, voicesAreChosenByTheirLanguage) {
    auto& offer = *desk.offer();
    auto const idsOf = [](QVariantList const& rows) {
        std::vector<std::string> ids;
        for (auto const& each : rows) ids.push_back(each.toMap().value(QStringLiteral("id")).toString().toStdString());
        return ids;
    };
    EXPECT_THAT(idsOf(offer.languages()), ElementsAre("service", "en", "de")) << "by their names";
    EXPECT_THAT(idsOf(offer.voices()), ElementsAre("system:tone", "system:low")) << "of the one that speaks";
    offer.setLanguage(QStringLiteral("de"));
    EXPECT_THAT(idsOf(offer.voices()), ElementsAre("system:ton"));
    EXPECT_EQ(offer.voice(), "system:tone") << "looking around chooses nothing";
    offer.choose(QStringLiteral("system:ton"));
    offer.setSpeed(9);
    EXPECT_EQ(plan().voice.voiceName, "Ton");
    EXPECT_EQ(plan().voice.speed, 2);
    EXPECT_EQ(editor.project->steps().size(), 2u);
}

TEST_F(VoiceDeskTest, aSampleIsMadeOnceAndHeardUntilItsEnd) {
    auto& sample = *desk.sample();
    auto const hear = [&] {
        sample.hear();
        wait([&] {
            voices.device->pass(0.2);
            return !sample.isMaking() && !sample.isPlaying();
        });
    };
    hear();
    EXPECT_EQ(voices.studio.count, 1);
    EXPECT_EQ(voices.device->timesOpened(), 1);
    EXPECT_FALSE(voices.device->isOpen());
    hear();
    EXPECT_EQ(voices.studio.count, 1) << "a service is paid for it once";
    EXPECT_EQ(voices.device->timesOpened(), 2);
    EXPECT_EQ(sample.failure(), "");
    voices.device->unplug();
    hear();
    EXPECT_EQ(sample.failure(), "The sound cannot be played: the device was unplugged.");
    EXPECT_TRUE(editor.project->steps().empty());
}

TEST_F(VoiceDeskTest, aSampleThatIsStoppedAndHeardAgainIsMadeOnce) {
    auto& sample = *desk.sample();
    sample.hear();
    EXPECT_TRUE(sample.isMaking());
    sample.stop();
    EXPECT_FALSE(sample.isMaking());
    sample.hear();
    wait([&] {
        voices.device->pass(0.2);
        return !sample.isMaking() && !sample.isPlaying();
    });
    EXPECT_EQ(voices.studio.count, 1) << "a service is paid for each";
    EXPECT_EQ(voices.device->timesOpened(), 1);
}
