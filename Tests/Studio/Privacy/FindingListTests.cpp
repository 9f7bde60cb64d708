#include "../Editor/TestEditor.h"
#include "FakeScan.h"

#include <Tavaro/Studio/Privacy/FindingList.h>

using namespace tavaro;

namespace {

/// Two mails, of which the first is shown; a key that the film shows at 7 s; a token in what was cut out; an area.
DemoProject filmOfFindings() {
    auto project = shortFilm();
    project.redactions =
        std::vector{found(SensitiveKind::email, "a•••", 1, 2, false), found(SensitiveKind::email, "b•••", 3, 4),
                    found(SensitiveKind::apiKey, "s•••", 21, 22), found(SensitiveKind::token, "t•••", 10, 12),
                    RedactionTrack{.label = "Area", .start = 2, .end = 3, .keyframes = {{2, {}}}}};
    return project;
}

class FindingListTest : public testing::Test {
protected:
    FindingListTest() {
        QObject::connect(&list, &QAbstractItemModel::modelReset, [this] { ++resets; });
    }
    QVariant at(int row, char const* role) const {
        return list.data(list.index(row), list.roleNames().key(QByteArray(role)));
    }
    /// "[Email 1/2] b••• (a•••) …": what is shown in brackets.
    std::string drawn() const {
        std::string text;
        for (int row = 0; row < list.count(); ++row) {
            auto const title = at(row, "title").toString().toStdString();
            auto const counts =
                std::to_string(at(row, "hiddenCount").toInt()) + "/" + std::to_string(at(row, "count").toInt());
            if (!text.empty()) text += " ";
            if (at(row, "isHeading").toBool())
                text += "[" + title + " " + counts + "]";
            else
                text += at(row, "isHidden").toBool() ? title : "(" + title + ")";
        }
        return text;
    }
    int row(std::string const& title) const {
        for (int row = 0; row < list.count(); ++row)
            if (at(row, "title").toString().toStdString() == title) return row;
        ADD_FAILURE() << title << " is not in " << drawn();
        return -1;
    }
    std::size_t steps() const { return editor.project->steps().size(); }

    TestEditor editor{filmOfFindings()};
    FindingList list{*editor.session};
    int resets = 0;
};

std::string const all = "[Email 1/2] b••• (a•••) [API key 1/1] s••• [Token 1/1] t••• [Hidden by hand 1/1] Area";

}

TEST_F(FindingListTest, isGroupedByKindWithWhatIsShownAtTheEndOfItsKind) {
    EXPECT_EQ(drawn(), all);
    EXPECT_EQ(list.findings(), 4);
    EXPECT_EQ(list.hidden(), 3);
    EXPECT_EQ(at(row("s•••"), "span").toString(), "0:07.00 – 0:08.00");
    EXPECT_EQ(at(row("t•••"), "span").toString(), "") << "it was cut out";
}

TEST_F(FindingListTest, aRejectionIsOneStepMovesOneRowAndUndoBringsItBack) {
    list.reject(row("b•••"));
    EXPECT_EQ(drawn(), "[Email 0/2] (a•••) (b•••) [API key 1/1] s••• [Token 1/1] t••• [Hidden by hand 1/1] Area");
    EXPECT_FALSE(list.reject(row("b•••"))) << "it is shown already";
    EXPECT_EQ(steps(), 1u);
    editor->undo();
    EXPECT_EQ(drawn(), all);
    EXPECT_EQ(resets, 0) << "views keep their rows";
}

TEST_F(FindingListTest, aHeadingDecidesAllOfItsKindInOneStep) {
    EXPECT_TRUE(list.setHidden(row("Email"), true));
    EXPECT_EQ(drawn(), "[Email 2/2] a••• b••• [API key 1/1] s••• [Token 1/1] t••• [Hidden by hand 1/1] Area");
    EXPECT_TRUE(list.toggle(row("Email")));
    EXPECT_TRUE(list.toggle(row("Hidden by hand")));
    EXPECT_EQ(drawn(), "[Email 0/2] (a•••) (b•••) [API key 1/1] s••• [Token 1/1] t••• [Hidden by hand 0/1] (Area)");
    EXPECT_EQ(steps(), 3u);
    EXPECT_EQ(list.hidden(), 2);
}

TEST_F(FindingListTest, whatWasHiddenByHandIsRemovedAndNothingOfTheScan) {
    EXPECT_FALSE(list.reject(row("Hidden by hand")));
    EXPECT_TRUE(list.reject(row("Area")));
    EXPECT_EQ(drawn(), "[Email 1/2] b••• (a•••) [API key 1/1] s••• [Token 1/1] t•••");
    EXPECT_TRUE(list.reject(row("Token")));
    EXPECT_EQ(editor.document().redactions->size(), 4u);
}

TEST_F(FindingListTest, showingOneSelectsItAndGoesToItsFirstFrame) {
    list.show(row("s•••"));
    EXPECT_EQ(editor->playhead(), 7);
    EXPECT_EQ(list.current(), row("s•••"));
    list.show(row("t•••"));
    EXPECT_EQ(editor->playhead(), 7) << "the film does not show it";
    EXPECT_EQ(list.current(), row("t•••"));
    list.show(row("Email"));
    EXPECT_EQ(drawn(), "[Email 1/2] [API key 1/1] s••• [Token 1/1] t••• [Hidden by hand 1/1] Area");
    list.fold(row("Email"));
    EXPECT_EQ(drawn(), all);
    EXPECT_EQ(steps(), 0u);
}

TEST_F(FindingListTest, followsCutsAndWhatOthersChange) {
    editor->edit("Cut", [](DemoProject& project) { project.timeline.clips.pop_back(); });
    EXPECT_EQ(at(row("s•••"), "span").toString(), "");
    editor->undo();
    EXPECT_EQ(at(row("s•••"), "span").toString(), "0:07.00 – 0:08.00");
    editor.project->edit("Others", [](DemoProject& project) { project.redactions.edit().pop_back(); });
    EXPECT_EQ(drawn(), "[Email 1/2] b••• (a•••) [API key 1/1] s••• [Token 1/1] t•••");
}
