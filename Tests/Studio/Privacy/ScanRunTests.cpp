#include "../Editor/TestEditor.h"
#include "FakeScan.h"

#include <Tavaro/Studio/Privacy/ScanRun.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

class ScanRunTest : public testing::Test {
protected:
    ScanRunTest() {
        fake.findings = {finding(SensitiveKind::email, "a•••", 1, 3), finding(SensitiveKind::apiKey, "s•••", 21, 23)};
    }
    void end() {
        TestEditor::waitFor([&] { return !run.isRunning(); });
    }
    void beUnderWay() {
        run.start();
        TestEditor::waitFor([&] { return run.found() == 1; });
    }

    FakeScan fake;
    TestEditor editor{shortFilm()};
    ScanRun run{editor.queue, *editor.session, fake.scan()};
};

}

TEST_F(ScanRunTest, whatIsFoundIsOneStepBesideOthersAndUndoTakesItBack) {
    EXPECT_EQ(run.lastScan(), "");
    beUnderWay();
    EXPECT_EQ(run.state(), "0:12 of 1:00");
    EXPECT_NEAR(run.progress(), 0.2, 1e-9);
    EXPECT_FALSE(run.canStart());
    editor->rename(QStringLiteral("Meanwhile"));
    fake.go();
    end();
    EXPECT_EQ(run.failure(), "");
    EXPECT_EQ(run.result(), "2 places were hidden.");
    EXPECT_TRUE(run.isWhole());
    EXPECT_EQ(editor.document().redactions->size(), 2u);
    editor->undo();
    EXPECT_THAT(*editor.document().redactions, IsEmpty());
    EXPECT_FALSE(run.wasScanned());
    EXPECT_EQ(editor.document().name, "Meanwhile");
}

TEST_F(ScanRunTest, aStopKeepsWhatWasFoundAndTheNextRunLooksAtTheRest) {
    beUnderWay();
    run.stop();
    EXPECT_TRUE(run.isStopping());
    end();
    EXPECT_EQ(run.failure(), "");
    EXPECT_EQ(run.result(), "Stopped early. 1 place was hidden.");
    EXPECT_EQ(editor.document().redactions->size(), 1u);
    EXPECT_FALSE(run.isWhole());
    EXPECT_THAT(run.lastScan().toStdString(), HasSubstr("Not looked at: 0:06–0:10 of the film."));
    fake.go();
    run.start();
    end();
    ASSERT_EQ(fake.asked.size(), 2u);
    ASSERT_EQ(fake.asked[1].size(), 1u);
    EXPECT_GT(fake.asked[1][0].start, 9) << "what was looked at is not looked at again";
    EXPECT_TRUE(run.isWhole());
    EXPECT_THAT(run.lastScan().toStdString(), testing::Not(HasSubstr("Not looked at")));
    run.start();
    end();
    EXPECT_THAT(fake.asked[2], IsEmpty()) << "all of it, where nothing is left";
}

TEST_F(ScanRunTest, whyItCannotLookIsASentenceWhereItWasAskedFor) {
    fake.failure = "The reader is missing.";
    run.start();
    end();
    EXPECT_EQ(run.failure(), "The reader is missing.");
    EXPECT_THAT(editor.project->steps(), IsEmpty());
    EXPECT_THAT(editor.told, IsEmpty());
    EXPECT_TRUE(run.canStart());
}

TEST_F(ScanRunTest, whatItLooksForIsSaidAndAWrongPatternAtOnce) {
    EXPECT_THAT(run.looksFor().toStdString(), HasSubstr("email, phone number, API key"));
    editor->edit("Own", [](DemoProject& project) {
        project.redactionSettings = {.kinds = {}, .customWords = {"one", "two"}, .customPatterns = {"(("}};
    });
    EXPECT_EQ(run.looksFor(), "Looks for: 2 words of yours and 1 pattern of yours.");
    ASSERT_EQ(run.remarks().size(), 1);
    EXPECT_TRUE(run.remarks()[0].endsWith(QLatin1Char('.')));
    editor->edit("Mend", [](DemoProject& project) { project.redactionSettings.customPatterns = {"a+"}; });
    EXPECT_THAT(run.remarks(), IsEmpty());
}

TEST_F(ScanRunTest, otherThingsToFindMakeThatALookIsDueAgain) {
    fake.go();
    run.start();
    end();
    editor->edit("Words", [](DemoProject& project) { project.redactionSettings.customWords = {"Falcon"}; });
    EXPECT_FALSE(run.isWhole());
    EXPECT_THAT(run.lastScan().toStdString(), HasSubstr("What to find has changed since then."));
}
