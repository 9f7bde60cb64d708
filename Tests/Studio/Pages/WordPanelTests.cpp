#include "ShownPage.h"

#include "../../Core/Speech/SpokenFilm.h"

#include <Tavaro/Model/Project/OpenProjects.h>
#include <Tavaro/Studio/Editor/CaptionEditor.h>
#include <Tavaro/Studio/Editor/StepList.h>
#include <Tavaro/Studio/Editor/TranscriptModel.h>

#include <TavaroCore/Editing/TranscriptEdits.h>

#include <gmock/gmock.h>

#include <array>

using namespace tavaro;
using ::testing::IsEmpty;

namespace {

DemoProject counting() {
    auto project =
        spokenFilm({{"one", 1, 1.5}, {"two", 2, 2.4}, {"um", 2.5, 2.9}, {"three", 3, 3.5}, {"four", 6, 6.5}}, 10);
    project.assetDurations["screen.mp4"] = 10;
    return project;
}

std::string textsOf(DemoProject const& project) {
    std::string texts;
    for (auto const& cue : project.captions.cues) texts += "[" + cue.text + "]";
    return texts;
}

}

TEST(TranscriptPanel, aClickMovesThePlayheadAndKeysSelectCutRestoreAndCorrect) {
    ShownPage page("TranscriptPanel.qml", counting());
    auto& words = *qobject_cast<TranscriptModel*>(page.model("transcript"));
    page.waitForItem(QStringLiteral("one two um three 2.5s"));
    auto const* const paragraph = page.find(QStringLiteral("one two um three 2.5s"));
    page.clickAt(*paragraph, {8, 8});
    EXPECT_EQ(words.caret(), 0);
    EXPECT_EQ(page.session().playhead(), 1);
    page.press(Qt::Key_Right);
    EXPECT_EQ(page.session().playhead(), 2);
    page.press(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(words.selectedText(), QStringLiteral("two um"));
    EXPECT_EQ(page.session().playhead(), 2) << "selecting leaves it";
    page.press(Qt::Key_Delete);
    EXPECT_EQ(words.cutWords(), 2);
    page.click(QStringLiteral("Restore"));
    EXPECT_EQ(words.cutWords(), 1) << "the word at the caret";
    page.clickAt(*page.find(QStringLiteral("one two um three 2.5s")), {8, 8});
    page.press(Qt::Key_Down);
    EXPECT_EQ(words.textOf(words.caret()), QStringLiteral("four")) << "the line below is the next paragraph's";
    page.press(Qt::Key_F2);
    page.waitForItem(QStringLiteral("The word as it is written"));
    page.type("five\n");
    EXPECT_EQ(words.textOf(words.entryCount() - 1), QStringLiteral("five"));
    EXPECT_THAT(page.warnings, IsEmpty());
}

TEST(TranscriptPanel, whatIsTypedForAWordIsNotWrittenToAnotherWhenSomebodyElseEdits) {
    ShownPage page("TranscriptPanel.qml", counting());
    auto& words = *qobject_cast<TranscriptModel*>(page.model("transcript"));
    words.setShowsCutWords(false);
    page.waitForItem(QStringLiteral("one two um three 2.5s"));
    page.clickAt(*page.find(QStringLiteral("one two um three 2.5s")), {8, 8});
    page.press(Qt::Key_F2);
    page.waitForItem(QStringLiteral("The word as it is written"));
    page.project->edit("Theirs", [](DemoProject& project) {
        deleteWords(project, std::array{project.transcript.value()->words.front().id});
    });
    ASSERT_EQ(words.textOf(0), QStringLiteral("two"));
    page.type("eins\n");
    for (int i = 0; i < words.entryCount(); ++i) EXPECT_NE(words.textOf(i), QStringLiteral("eins"));
}

TEST(TranscriptPanel, theSearchGoesToWhatIsFoundAndAllFillersGoAtOnce) {
    ShownPage page("TranscriptPanel.qml", counting());
    auto& words = *qobject_cast<TranscriptModel*>(page.model("transcript"));
    page.click(QStringLiteral("Search the transcript"));
    page.type("thr\n");
    EXPECT_EQ(words.selectedText(), QStringLiteral("three"));
    EXPECT_EQ(page.session().playhead(), 3);
    page.click(QStringLiteral("Remove 1 filler word"));
    EXPECT_EQ(words.fillers(), 0);
    page.click(QStringLiteral("Tighten 1 pause"));
    EXPECT_EQ(words.pauses(), 0);
    EXPECT_EQ(page.project->steps().size(), 2u);
    EXPECT_THAT(page.warnings, IsEmpty());
}

TEST(TranscriptPanel, withoutATranscriptItSaysWhatCanBeDone) {
    ShownPage const page("TranscriptPanel.qml", shortFilm());
    page.waitForItem(QStringLiteral("Import captions…"));
    EXPECT_THAT(page.warnings, IsEmpty());
}

TEST(StepsPanel, aStepThatIsChosenIsGoneBackToInOneGo) {
    ShownPage page("StepsPanel.qml", shortFilm());
    page.session().rename(QStringLiteral("A"));
    for (auto const* name : {"addZoom", "addCaption"}) page.session().command(QString::fromUtf8(name))->trigger();
    commitFor(*page.project.open(), "claude-code", "Cut", [](DemoProject& project) { project.name = "D"; });
    auto& steps = *qobject_cast<StepList*>(page.model("steps"));
    ASSERT_EQ(steps.count(), 4);
    auto const nameOf = [&](int row) {
        auto const role = [&](char const* name) {
            return steps.index(row).data(steps.roleNames().key(name)).toString();
        };
        auto const who = row == 3 ? QStringLiteral("claude-code") : QStringLiteral("You");
        auto const state = row == steps.current() ? QStringLiteral(", present")
                           : steps.index(row).data(steps.roleNames().key("isUndone")).toBool()
                               ? QStringLiteral(", undone")
                               : QString();
        return role("name") + QStringLiteral(", ") + who + QStringLiteral(", ") + role("when") + state;
    };
    page.waitForItem(nameOf(3));
    page.click(nameOf(1));
    EXPECT_EQ(page.document().name, "A");
    EXPECT_EQ(page.document().zoomEvents.size(), 4u);
    EXPECT_EQ(page.document().captions.cues.size(), 1u);
    page.press(Qt::Key_Tab);
    page.press(Qt::Key_Down), page.press(Qt::Key_Down);
    page.press(Qt::Key_Return);
    EXPECT_EQ(page.document().name, "D");
    page.click(QStringLiteral("As it was opened"));
    EXPECT_EQ(page.document().name, "Film");
    EXPECT_THAT(page.warnings, IsEmpty());
}

TEST(StepsPanel, whatWasDoneBeforeTheWindowWasThereHasItsMakerAndNoTime) {
    TestProject const project(shortFilm());
    commitFor(*project.open(), "claude-code", "Cut", [](DemoProject& edited) { edited.name = "D"; });
    MainQueue queue;
    QueueInLoop const loop(queue);
    EditorSession session(queue, project.open());
    session.rename(QStringLiteral("E"));
    auto const& steps = *qobject_cast<StepList*>(session.stepsModel());
    auto const role = [&](int row, char const* name) {
        return steps.index(row).data(steps.roleNames().key(name)).toString();
    };
    ASSERT_EQ(steps.count(), 2);
    EXPECT_EQ(role(0, "maker"), "agent");
    EXPECT_EQ(role(0, "agent"), "claude-code");
    EXPECT_EQ(role(0, "when"), "") << "nobody saw when";
    EXPECT_EQ(role(1, "maker"), "person");
    EXPECT_TRUE(QTime::fromString(role(1, "when"), u"HH:mm:ss").isValid());
}

TEST(CaptionsPanel, textsAndTimesAreEditedInPlaceAndFollowThePlayhead) {
    auto document = shortFilm();
    document.captions.cues = {{.start = 1, .duration = 2, .text = "one two"},
                              {.start = 4, .duration = 1, .text = "three"}};
    ShownPage page("CaptionsPanel.qml", document);
    page.click(QStringLiteral("Text of the caption at 0:01.00"));
    EXPECT_EQ(page.session().playhead(), 1) << "the film shows what is edited";
    page.press(Qt::Key_End);
    page.type(" and\n");
    EXPECT_EQ(textsOf(page.document()), "[one two and][three]");
    EXPECT_EQ(page.project->steps().size(), 1u) << "what is typed is one step";
    page.type("x");
    page.press(Qt::Key_Escape);
    EXPECT_EQ(textsOf(page.document()), "[one two and][three]");
    page.press(Qt::Key_Home);
    for (int i = 0; i < 3; ++i) page.press(Qt::Key_Right);
    page.press(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(textsOf(page.document()), "[one][two and][three]");
    page.click(QStringLiteral("Start of “three”"));
    page.press(Qt::Key_A, Qt::ControlModifier);
    page.type("6,5\n");
    EXPECT_EQ(page.document().captions.cues[2].start, 6.5);
    page.click(QStringLiteral("Later"));
    EXPECT_EQ(page.document().captions.cues[2].start, 7);
    EXPECT_EQ(page.document().captions.cues[0].start, 1.5);
    auto const& editor = *qobject_cast<CaptionEditor*>(page.session().captionEditor());
    page.session().setPlayhead(7.2);
    EXPECT_EQ(editor.current(), 2);
    EXPECT_THAT(page.warnings, IsEmpty());
}
