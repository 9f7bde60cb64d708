#include "TestEditor.h"

#include <Tavaro/Studio/Editor/CaptionEditor.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <fmt/format.h>

#include <fstream>

using namespace tavaro;

namespace {

/// "start-end text", one a caption, with the words' times where they have any.
std::string listed(DemoProject const& project) {
    std::string text;
    for (auto const& cue : project.captions.cues) {
        text += fmt::format("{:.4g}-{:.4g} {}", cue.start, cue.range().end(), cue.text);
        for (auto const& word : cue.words) text += fmt::format(" <{} {:.4g}>", word.text, word.start);
        text += '\n';
    }
    return text;
}

DemoProject captioned() {
    auto project = shortFilm();
    project.captions.cues = {
        {.start = 1, .duration = 2, .text = "one two", .words = {{"one", 1, 1.5}, {"two", 2, 2.5}}},
        {.start = 4, .duration = 1, .text = "three four"},
        {.start = 6, .duration = 1, .text = "five", .words = {{"five", 6, 7}}}};
    return project;
}

class CaptionEditorTest : public testing::Test {
protected:
    QString id(std::size_t index) const { return toQString(editor.document().captions.cues[index].id.text()); }
    std::string now() const { return listed(editor.document()); }

    TestEditor editor{captioned()};
    CaptionEditor& captions = *qobject_cast<CaptionEditor*>(editor->captionEditor());
};

}

TEST_F(CaptionEditorTest, aCaptionIsSplitWhereItsWordsAreSpokenAndJoinedAgain) {
    auto const before = now();
    EXPECT_TRUE(captions.split(id(0), 4));
    EXPECT_EQ(now(), "1-2 one <one 1>\n2-3 two <two 2>\n4-5 three four\n6-7 five <five 6>\n");
    EXPECT_TRUE(captions.joinWithNext(id(0)));
    EXPECT_EQ(now(), before);
    EXPECT_TRUE(captions.split(id(1), 5)) << "without timed words, by their length";
    EXPECT_EQ(now(), "1-3 one two <one 1> <two 2>\n4-4.556 three\n4.556-5 four\n6-7 five <five 6>\n");
    EXPECT_FALSE(captions.split(id(3), 0)) << "nothing is before it";
    EXPECT_FALSE(captions.split(id(3), 4));
    EXPECT_FALSE(captions.joinWithNext(id(3))) << "nothing comes after it";
}

TEST_F(CaptionEditorTest, aNewTextKeepsTheTimesOfAsManyWords) {
    EXPECT_TRUE(captions.setText(id(0), QStringLiteral(" One too ")));
    EXPECT_TRUE(captions.setText(id(2), QStringLiteral("five and six")));
    EXPECT_EQ(now(), "1-3 One too <One 1> <too 2>\n4-5 three four\n6-7 five and six\n");
    EXPECT_EQ(editor.project->steps().size(), 2u);
    EXPECT_FALSE(captions.setText(id(0), QStringLiteral("One too"))) << "nothing is changed";
}

TEST_F(CaptionEditorTest, captionsMoveWithTheirWordsAndStayInTheFilm) {
    EXPECT_TRUE(captions.setStart(id(0), 2));
    EXPECT_TRUE(captions.setEnd(id(1), 5.5));
    EXPECT_EQ(now(), "2-4 one two <one 2> <two 3>\n4-5.5 three four\n6-7 five <five 6>\n");
    EXPECT_TRUE(captions.shift(-100));
    EXPECT_EQ(now(), "0-2 one two <one 0> <two 1>\n2-3.5 three four\n4-5 five <five 4>\n");
    EXPECT_TRUE(captions.remove(id(1)));
    EXPECT_EQ(now(), "0-2 one two <one 0> <two 1>\n4-5 five <five 4>\n");
}

TEST_F(CaptionEditorTest, thePresentCaptionFollowsThePlayhead) {
    std::string seen;
    QObject::connect(&captions, &CaptionEditor::currentChanged,
                     [&] { seen += fmt::format("{} ", captions.current()); });
    for (double const time : {0.5, 1.5, 2.0, 3.5, 4.5, 6.5}) editor->setPlayhead(time);
    EXPECT_EQ(seen, "0 -1 1 2 ");
    EXPECT_EQ(captions.rowBefore(3.5), 0);
    EXPECT_EQ(captions.rowBefore(0.5), -1);
}

TEST_F(CaptionEditorTest, timesAreReadAsTheyAreWritten) {
    for (double const seconds : {0.0, 4.2, 62.5, 3723.75})
        EXPECT_NEAR(CaptionEditor::timeOf(CaptionEditor::timeText(seconds)), seconds, 0.005);
    EXPECT_DOUBLE_EQ(CaptionEditor::timeOf(QStringLiteral(" 1:02,5 ")), 62.5);
    for (auto const* text : {"", "x", "1:2:3:4", "-1", "1:", "nan", "inf"})
        EXPECT_LT(CaptionEditor::timeOf(QString::fromUtf8(text)), 0) << text;
}

TEST_F(CaptionEditorTest, writtenCaptionsAreReadAgainAndFailuresAreSaid) {
    TemporaryFolder const folder;
    auto const before = now();
    for (auto const* name : {"film.srt", "film.vtt"}) {
        std::string written;
        auto const watch = QObject::connect(&captions, &CaptionEditor::written,
                                            [&](QString const& file) { written = file.toStdString(); });
        captions.exportTo(QUrl::fromLocalFile(toQString((folder / name).string())));
        TestEditor::waitFor([&] { return !written.empty(); });
        QObject::disconnect(watch);
        EXPECT_EQ(written, name);
        EXPECT_TRUE(captions.remove(id(0)));
        captions.importFrom(QUrl::fromLocalFile(toQString((folder / name).string())));
        TestEditor::waitFor([&] { return editor.document().captions.cues.size() == 3; });
        EXPECT_EQ(editor.document().captions.cues[1].text, "three four");
        EXPECT_EQ(editor->undoName(), QStringLiteral("Import Captions"));
    }
    std::ofstream(folder / "none.srt") << "nothing";
    for (auto const* name : {"none.srt", "missing.srt"}) {
        editor.told.clear();
        captions.importFrom(QUrl::fromLocalFile(toQString((folder / name).string())));
        TestEditor::waitFor([&] { return !editor.told.empty(); });
        EXPECT_NE(editor.told[0].find(name), std::string::npos) << editor.told[0];
    }
    EXPECT_EQ(editor.document().captions.cues.size(), 3u);
}
