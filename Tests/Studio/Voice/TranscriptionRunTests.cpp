#include "TestVoices.h"

#include <Tavaro/Studio/Voice/VoiceDesk.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::IsEmpty;

namespace {

DemoProject recorded() {
    auto project = shortFilm();
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 3}};
    project.audioTracks = {{.role = AudioRole::microphone, .clips = {{.asset = "mic.caf", .duration = 3}}}};
    project.assetDurations = {{"screen.mp4", 3}, {"mic.caf", 3}};
    return project;
}

class TranscriptionRunTest : public testing::Test {
protected:
    TranscriptionRunTest() {
        addSpeech(editor.project.package());
        voices.hears({"hello", "there", "again"});
        run.setLocale(QStringLiteral("en-US"));
        look();
    }
    void look() {
        run.look();
        TestEditor::waitFor([&] { return !run.isLooking(); });
    }
    void end() {
        TestEditor::waitFor([&] { return !run.isRunning(); });
    }

    TestVoices voices;
    TestEditor editor{recorded()};
    VoiceDesk desk{editor.queue, *editor.session, voices.means()};
    TranscriptionRun& run = *desk.transcription();
};

}

TEST_F(TranscriptionRunTest, wordsComeWhileItRunsAndTheTranscriptIsOneStepBesideOthers) {
    EXPECT_EQ(run.engine(), "whisper");
    EXPECT_EQ(run.tracks().size(), 1);
    QString heard;
    QObject::connect(&run, &TranscriptionRun::changed, [&] {
        if (run.words() == 3 && run.isRunning()) heard = run.heard();
    });
    run.start();
    EXPECT_TRUE(run.isRunning());
    EXPECT_FALSE(run.canStart());
    editor->rename(QStringLiteral("Meanwhile"));
    voices.go();
    end();
    EXPECT_EQ(run.failure(), "");
    EXPECT_EQ(heard, "hello there again");
    ASSERT_TRUE(editor.document().transcript.has_value());
    EXPECT_EQ(editor.document().transcript.value()->words.size(), 3u);
    EXPECT_EQ(editor.document().name, "Meanwhile");
    editor->undo();
    EXPECT_FALSE(editor.document().transcript.has_value());
    EXPECT_EQ(editor.document().name, "Meanwhile");
}

TEST_F(TranscriptionRunTest, aCancelLeavesTheProjectAsItWasAndIsNoFailure) {
    run.start();
    TestEditor::waitFor([&] { return run.isRunning(); });
    run.cancel();
    EXPECT_TRUE(run.isStopping());
    end();
    EXPECT_EQ(run.failure(), "");
    EXPECT_FALSE(editor.document().transcript.has_value());
    EXPECT_TRUE(editor.project->steps().empty());
    EXPECT_TRUE(run.canStart());
}

TEST_F(TranscriptionRunTest, whyNothingWasHeardIsASentence) {
    voices.hears({});
    voices.go();
    run.start();
    end();
    EXPECT_EQ(run.failure(), "No speech was found.");
    run.setLocale(QStringLiteral("not a language"));
    run.start();
    end();
    EXPECT_TRUE(run.failure().startsWith(QStringLiteral("On-device transcription doesn't support")));
    EXPECT_THAT(editor.told, IsEmpty()) << "it is said where it happened";
}

TEST_F(TranscriptionRunTest, withoutAnEngineOrASoundItCannotBegin) {
    voices.places = {};
    look();
    EXPECT_FALSE(run.canStart());
    EXPECT_FALSE(run.engines().empty()) << "what could be had is listed";
    for (auto const& engine : run.engines())
        EXPECT_GT(engine.toMap().value(QStringLiteral("about")).toString().size(), 40);
    voices.hears({"hello"});
    look();
    EXPECT_TRUE(run.canStart());
    editor.session->edit("Silence", [](DemoProject& project) { project.audioTracks.clear(); });
    EXPECT_FALSE(run.canStart());
}
