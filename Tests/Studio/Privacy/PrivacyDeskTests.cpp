#include "../Editor/TestEditor.h"
#include "FakeScan.h"

#include <Tavaro/Studio/Privacy/PrivacyDesk.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::IsEmpty;

namespace {

/// An editor of a take that has just been made, whose user wants each looked at.
class NewTakeInEditor : public testing::Test {
protected:
    NewTakeInEditor() {
        DueScan::note(package().url());
        fake.findings = {finding(SensitiveKind::email, "a•••", 1, 3), finding(SensitiveKind::apiKey, "s•••", 21, 23)};
    }
    ProjectPackage const& package() const { return editor.project.package(); }
    bool isDue() const { return DueScan::isDue(package(), editor.document()); }
    void beUnderWay() {
        TestEditor::waitFor([&] { return desk.run()->found() == 1; });
    }
    void end() {
        TestEditor::waitFor([&] { return !desk.run()->isRunning(); });
    }

    FakeScan fake;
    TestEditor editor{shortFilm()};
    PrivacyDesk desk{editor.queue, *editor.session, fake.scan()};
};

}

TEST_F(NewTakeInEditor, isLookedAtByItselfWhileItIsEditedAndOnlyOnce) {
    EXPECT_TRUE(desk.takeUp());
    EXPECT_FALSE(desk.takeUp()) << "it is under way";
    beUnderWay();
    EXPECT_EQ(desk.run()->state(), "0:12 of 1:00") << "for whoever looks";
    editor->split(3);
    editor->select(std::vector{editor.document().zoomEvents[0].id});
    editor->removeSelected();
    fake.go();
    end();
    EXPECT_EQ(desk.run()->result(), "2 places were hidden.");
    EXPECT_EQ(desk.findings()->hidden(), 2);
    EXPECT_EQ(editor.document().timeline.clips.size(), 3u) << "what was edited meanwhile stays";
    EXPECT_EQ(editor.document().zoomEvents.size(), 2u);
    EXPECT_FALSE(isDue());
    EXPECT_FALSE(desk.takeUp());
    EXPECT_EQ(fake.asked.size(), 1u);
    EXPECT_THAT(editor.told, IsEmpty());
}

TEST_F(NewTakeInEditor, thatSomebodyStopsIsNotDueAnyMoreAndWhatWasFoundStays) {
    ASSERT_TRUE(desk.takeUp());
    beUnderWay();
    desk.run()->stop();
    end();
    EXPECT_EQ(editor.document().redactions->size(), 1u);
    EXPECT_FALSE(isDue());
}

TEST_F(NewTakeInEditor, thatCouldNotBeReadIsDueAgain) {
    fake.failure = "The reader is missing.";
    desk.takeUp();
    end();
    EXPECT_EQ(desk.run()->failure(), "The reader is missing.");
    EXPECT_TRUE(isDue());
    fake.failure.reset();
    fake.go();
    EXPECT_TRUE(desk.takeUp());
    end();
    EXPECT_FALSE(isDue());
}

TEST_F(NewTakeInEditor, thatIsLookedAtElsewhereOrWasClosedInTheMiddleIsLeftToTheNext) {
    {
        auto const other = DueScan::claim(package(), editor.document());
        ASSERT_TRUE(other);
        EXPECT_FALSE(desk.takeUp());
    }
    {
        PrivacyDesk closed(editor.queue, *editor.session, fake.scan());
        ASSERT_TRUE(closed.takeUp());
        EXPECT_FALSE(desk.takeUp());
    }
    EXPECT_TRUE(isDue());
    fake.go();
    EXPECT_TRUE(desk.takeUp());
    end();
    EXPECT_EQ(editor.document().redactions->size(), 2u);
}
