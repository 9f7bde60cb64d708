#include "TestEditor.h"

#include "../../Core/Speech/SpokenFilm.h"

#include <Tavaro/Studio/Editor/TranscriptModel.h>

#include <TavaroCore/Editing/ClipEdits.h>

#include <QAbstractItemModelTester>

using namespace tavaro;

namespace {

/// "one" at 1, "two" at 2 …, each half a second long, in ten seconds.
DemoProject counting() {
    return spokenFilm({{"one", 1, 1.5}, {"two", 2, 2.5}, {"um", 3, 3.5}, {"three", 4, 4.5}, {"four", 7, 7.5}}, 10);
}

}

TEST(TranscriptModel, deletingWordsCutsTheFilmAndUndoBringsThemBack) {
    TestEditor editor(counting());
    TranscriptModel words(*editor.session);
    QAbstractItemModelTester const tester(&words, QAbstractItemModelTester::FailureReportingMode::Fatal);
    ASSERT_EQ(words.text(), QStringLiteral("one two um three four"));
    QPersistentModelIndex const three(words.index(3));
    EXPECT_TRUE(words.deleteWords(1, 2));
    EXPECT_EQ(words.text(), QStringLiteral("one three four"));
    EXPECT_LT(editor->duration(), 9);
    EXPECT_EQ(three.row(), 1);
    EXPECT_EQ(editor->undoName(), QStringLiteral("Delete Words"));
    editor.run("undo");
    EXPECT_EQ(words.text(), QStringLiteral("one two um three four"));
    EXPECT_FALSE(words.deleteWords(7, 9));
}

TEST(TranscriptModel, rowsAreFoundByTimeAndKnowFillersAndParagraphs) {
    TestEditor editor(counting());
    TranscriptModel const words(*editor.session);
    EXPECT_EQ(words.rowAt(0.5), -1);
    EXPECT_EQ(words.rowAt(2.1), 1);
    EXPECT_EQ(words.rowAt(2.9), 1);
    EXPECT_EQ(words.rowAt(9), 4);
    auto const role = [&](char const* name) { return words.roleNames().key(name); };
    EXPECT_TRUE(words.index(2).data(role("isFiller")).toBool());
    EXPECT_FALSE(words.index(3).data(role("beginsParagraph")).toBool());
    EXPECT_TRUE(words.index(4).data(role("beginsParagraph")).toBool());
}

TEST(TranscriptModel, aCorrectionChangesTheWordAndNotTheFilm) {
    TestEditor editor(counting());
    TranscriptModel words(*editor.session);
    EXPECT_TRUE(words.correct(1, QStringLiteral(" Too ")));
    EXPECT_EQ(words.text(), QStringLiteral("one Too um three four"));
    EXPECT_DOUBLE_EQ(editor->duration(), 10);
    EXPECT_FALSE(words.correct(1, QStringLiteral("  ")));
    EXPECT_TRUE(words.setText(QStringLiteral("one Too three five")));
    EXPECT_EQ(words.text(), QStringLiteral("one Too three five"));
}

TEST(TranscriptModel, aWordThatIsShownTwiceHasTwoRows) {
    TestEditor editor(counting());
    TranscriptModel const words(*editor.session);
    editor->edit("Duplicate", [](DemoProject& project) { duplicateClip(project, project.timeline.clips[0].id); });
    EXPECT_EQ(words.text(), QStringLiteral("one two um three four one two um three four"));
    EXPECT_EQ(words.index(5).data(words.roleNames().key("from")).toDouble(), 11);
}
