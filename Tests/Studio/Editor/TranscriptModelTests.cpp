#include "TestEditor.h"

#include "../../Core/Speech/SpokenFilm.h"

#include <Tavaro/Studio/Editor/TranscriptModel.h>

#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Editing/TimelineEdits.h>

#include <QAbstractItemModelTester>
#include <QTextDocument>

using namespace tavaro;

namespace {

/// "one" at 1, "two" at 2 …, each half a second long, in ten seconds. Two seconds and a half before "four".
DemoProject counting() {
    return spokenFilm({{"one", 1, 1.5}, {"two", 2, 2.4}, {"um", 2.5, 2.9}, {"three", 3, 3.5}, {"four", 6, 6.5}}, 10);
}

/// A row a line: words, [pauses], -words that are cut-.
std::string drawn(TranscriptModel const& model) {
    std::string text;
    for (int row = 0; row < model.rowCount(); ++row) {
        auto const role = [&](char const* name) { return model.index(row).data(model.roleNames().key(name)).toInt(); };
        for (int i = role("first"); i < role("first") + role("entries"); ++i) {
            auto const word = model.textOf(i).toStdString();
            text += !model.isCorrectable(i) ? "[" + word + "] " : model.isCut(i) ? "-" + word + "- " : word + " ";
        }
        text.back() = '\n';
    }
    return text;
}

struct OpenTranscript {
    explicit OpenTranscript(DemoProject project) : editor(std::move(project)) {}

    TestEditor editor;
    TranscriptModel model{*editor.session};
    QAbstractItemModelTester const tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

}

TEST(TranscriptModel, deletedWordsCutTheFilmAndAreStruckOutUntilTheyAreRestored) {
    OpenTranscript open(counting());
    auto& model = open.model;
    ASSERT_EQ(drawn(model), "one two um three [2.5s]\nfour\n");
    model.place(1);
    model.selectTo(2);
    EXPECT_TRUE(model.canDelete());
    EXPECT_FALSE(model.canRestore());
    EXPECT_TRUE(model.deleteSelected());
    EXPECT_EQ(drawn(model), "one -two- -um- three [2.5s]\nfour\n");
    EXPECT_LT(open.editor->duration(), 9.2);
    EXPECT_EQ(open.editor->undoName(), QStringLiteral("Delete Words"));
    EXPECT_EQ(model.cutWords(), 2);
    model.place(1);
    EXPECT_TRUE(model.restoreSelected());
    EXPECT_EQ(drawn(model), "one two -um- three [2.5s]\nfour\n");
    model.selectAll();
    EXPECT_TRUE(model.restoreSelected());
    EXPECT_EQ(drawn(model), "one two um three [2.5s]\nfour\n");
    EXPECT_NEAR(open.editor->duration(), 10, 0.05);
    open.editor.run("undo"), open.editor.run("undo"), open.editor.run("undo");
    EXPECT_DOUBLE_EQ(open.editor->duration(), 10);
}

TEST(TranscriptModel, aPauseIsShortenedAndGoesWhereTheWordsBesideItGo) {
    OpenTranscript open(counting());
    auto& model = open.model;
    model.place(4);
    EXPECT_TRUE(model.deleteSelected());
    EXPECT_EQ(open.editor->undoName(), QStringLiteral("Shorten Pauses"));
    EXPECT_NEAR(open.editor->duration(), 7.75, 1e-9);
    open.editor.run("undo");
    model.place(3);
    model.selectTo(5);
    EXPECT_TRUE(model.deleteSelected());
    EXPECT_EQ(drawn(model), "one two um -three- -four-\n");
    EXPECT_LT(open.editor->duration(), 6.6) << "the pause between them is gone with them";
}

TEST(TranscriptModel, theWordThatIsSpokenFollowsThePlayheadAndTheSelectionItsWords) {
    OpenTranscript open(counting());
    auto& model = open.model;
    open.editor->setPlayhead(0.5);
    EXPECT_EQ(model.spoken(), -1);
    open.editor->setPlayhead(2.45);
    EXPECT_EQ(model.textOf(model.spoken()), QStringLiteral("two"));
    open.editor->setPlayhead(5);
    EXPECT_EQ(model.textOf(model.spoken()), QStringLiteral("three")) << "of a pause, the word before it";
    model.place(3);
    open.editor->edit("Cut", [](DemoProject& project) { removeTimeRange(project, 0, 1.8); });
    model.setShowsCutWords(false);
    EXPECT_EQ(model.textOf(model.caret()), QStringLiteral("three"));
    EXPECT_EQ(drawn(model), "two um three [2.5s]\nfour\n");
}

TEST(TranscriptModel, charactersOfAParagraphLeadToItsWordsWhateverIsInThem) {
    OpenTranscript open(spokenFilm({{" <b>&amp;  x", 1, 1.5}, {"\"um\",", 2, 2.5}, {"日本", 3, 3.5}}, 10));
    auto& model = open.model;
    QTextDocument document;
    document.setHtml(model.index(0).data(model.roleNames().key("html")).toString());
    auto const text = document.toPlainText();
    EXPECT_EQ(text, model.index(0).data().toString());
    for (int i = 0; i < model.entryCount(); ++i) {
        EXPECT_EQ(text.mid(model.positionOf(i), model.endOf(i) - model.positionOf(i)), model.textOf(i));
        for (int at = model.positionOf(i); at < model.endOf(i); ++at) EXPECT_EQ(model.entryAt(0, at), i);
    }
}

TEST(TranscriptModel, aCorrectionChangesTheWordAndNotTheFilm) {
    OpenTranscript open(counting());
    auto& model = open.model;
    EXPECT_TRUE(model.correct(1, QStringLiteral(" Too ")));
    EXPECT_EQ(drawn(model), "one Too um three [2.5s]\nfour\n");
    EXPECT_DOUBLE_EQ(open.editor->duration(), 10);
    EXPECT_FALSE(model.correct(1, QStringLiteral("  ")));
    EXPECT_FALSE(model.correct(4, QStringLiteral("a pause"))) << "is no word";
    EXPECT_FALSE(model.correct(77, QStringLiteral("nothing")));
    open.editor.project.editOutside([](DemoProject& project) { project.transcript.reset(); });
    EXPECT_NO_THROW(model.correct(0, QStringLiteral("won"))) << "another program saved a film without words";
}

TEST(TranscriptModel, aWordThatIsShownTwiceIsThereTwiceAndDeletedTwice) {
    OpenTranscript open(counting());
    open.editor->edit("Duplicate", [](DemoProject& project) { duplicateClip(project, project.timeline.clips[0].id); });
    EXPECT_EQ(drawn(open.model), "one two um three [2.5s]\nfour [4.5s]\none two um three [2.5s]\nfour\n");
    open.model.place(0);
    EXPECT_TRUE(open.model.deleteSelected());
    EXPECT_EQ(drawn(open.model), "-one- two um three [2.5s]\nfour [4.5s]\ntwo um three [2.5s]\nfour\n")
        << "what was said before all that is left comes first";
}

TEST(TranscriptModel, theSearchGoesRoundAndSelectsWholeWords) {
    OpenTranscript open(counting());
    auto& model = open.model;
    model.setSought(QStringLiteral("O"));
    EXPECT_EQ(model.matches(), 3);
    std::string found;
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(model.seek(1));
        found += model.selectedText().toStdString() + " ";
    }
    EXPECT_EQ(found, "one two four one ");
    EXPECT_TRUE(model.seek(-1));
    EXPECT_EQ(model.selectedText(), QStringLiteral("four"));
    model.setSought(QStringLiteral("two um"));
    EXPECT_TRUE(model.seek(-1));
    EXPECT_EQ(model.selectedText(), QStringLiteral("two um"));
    model.setSought(QStringLiteral("nine"));
    EXPECT_FALSE(model.seek(1));
}

TEST(TranscriptModel, longSpeechWithoutPausesHasParagraphs) {
    std::vector<Said> words;
    for (int i = 0; i < 2000; ++i) words.push_back({i % 9 == 8 ? "end." : "word", i * 0.3, i * 0.3 + 0.3});
    OpenTranscript open(spokenFilm(words, 600));
    EXPECT_GT(open.model.rowCount(), 12);
    for (int row = 0; row < open.model.rowCount(); ++row)
        EXPECT_LE(open.model.index(row).data().toString().count(u' '), 90) << row;
}
