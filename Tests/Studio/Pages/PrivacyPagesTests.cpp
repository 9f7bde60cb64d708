#include "../Privacy/FakeScan.h"
#include "ShownPage.h"

#include <Tavaro/Studio/Privacy/PrivacyDesk.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::IsEmpty;

namespace {

struct PrivacyPages : testing::Test {
    PrivacyPages() {
        fake.findings = {finding(SensitiveKind::email, "a•••", 1, 2), finding(SensitiveKind::email, "b•••", 3, 4),
                         finding(SensitiveKind::apiKey, "s•••", 21, 22)};
    }
    ShownPage shown(char const* file) { return {file, shortFilm(), {.scan = fake.scan()}}; }
    /// Once everything has its place.
    static void press(ShownPage& page, QString const& name) {
        page.waitForItem(name);
        page.view->grabWindow();
        page.click(name);
    }
    static std::string hidden(ShownPage const& page) {
        std::string text;
        for (auto const& track : *page.document().redactions) text += track.isEnabled ? track.label : "-";
        return text;
    }

    FakeScan fake;
};

}

TEST_F(PrivacyPages, aScanIsWatchedAndStoppedAndWhatItFoundIsListed) {
    auto page = shown("PrivacyPanel.qml");
    press(page, QStringLiteral("Find private text"));
    page.waitForItem(QStringLiteral("0:12 of 1:00, 1 found"));
    press(page, QStringLiteral("Stop looking for private text"));
    page.waitForItem(QStringLiteral("Stopped early. 2 places were hidden."));
    page.waitForItem(QStringLiteral("Email, 2 of 2 hidden"));
    page.waitForItem(QStringLiteral("Email, b•••, 0:03.00 – 0:04.00, hidden"));
    fake.go();
    press(page, QStringLiteral("Find private text"));
    page.waitForItem(QStringLiteral("Look again"));
    page.waitForItem(QStringLiteral("API key, s•••, 0:07.00 – 0:08.00, hidden"));
    EXPECT_EQ(page.project->steps().size(), 2u);
    EXPECT_THAT(page.warnings, IsEmpty());
}

TEST_F(PrivacyPages, findingsAreLookedThroughByKeys) {
    fake.go();
    auto page = shown("PrivacyPanel.qml");
    press(page, QStringLiteral("Find private text"));
    page.waitForItem(QStringLiteral("API key, s•••, 0:07.00 – 0:08.00, hidden"));
    auto* const list = page.find(QStringLiteral("Findings"));
    list->forceActiveFocus();
    list->setProperty("currentIndex", 0);
    page.press(Qt::Key_Down); // from the heading to the first mail
    page.press(Qt::Key_Delete);
    page.waitForItem(QStringLiteral("Email, a•••, 0:01.00 – 0:02.00, shown"));
    page.press(Qt::Key_Delete); // the next one is in its place
    EXPECT_EQ(hidden(page), "--s•••");
    page.press(Qt::Key_Space);
    page.press(Qt::Key_Up);
    page.press(Qt::Key_Space); // all of the heading
    EXPECT_EQ(hidden(page), "a•••b•••s•••");
    for (int i = 0; i < 4; ++i) page.press(Qt::Key_Down);
    page.press(Qt::Key_Return);
    EXPECT_EQ(page.session().playhead(), 7);
    EXPECT_EQ(page.session().selection().size(), 1u);
    EXPECT_THAT(page.warnings, IsEmpty());
}

TEST_F(PrivacyPages, aHandSwitchesOneOrAKindAndGoesToIt) {
    fake.go();
    auto page = shown("PrivacyPanel.qml");
    press(page, QStringLiteral("Find private text"));
    press(page, QStringLiteral("Hide a•••, 0:01.00 – 0:02.00"));
    EXPECT_EQ(hidden(page), "-b•••s•••");
    press(page, QStringLiteral("Hide all: API key"));
    EXPECT_EQ(hidden(page), "-b•••-");
    page.waitForItem(QStringLiteral("API key, s•••, 0:07.00 – 0:08.00, shown"));
    page.view->grabWindow();
    press(page, QStringLiteral("API key, s•••, 0:07.00 – 0:08.00, shown"));
    EXPECT_EQ(page.session().playhead(), 7);
    EXPECT_THAT(page.warnings, IsEmpty());
}

TEST_F(PrivacyPages, theListStaysWhereAHandIsAndGoesToWhatIsSelectedElsewhere) {
    fake.go();
    auto page = shown("PrivacyPanel.qml");
    press(page, QStringLiteral("Find private text"));
    page.waitForItem(QStringLiteral("API key, s•••, 0:07.00 – 0:08.00, hidden"));
    auto const current = [&] { return page.find(QStringLiteral("Findings"))->property("currentIndex").toInt(); };
    page.session().select(std::vector{page.document().redactions->back().id}); // the key
    EXPECT_EQ(current(), 4);
    press(page, QStringLiteral("Hide b•••, 0:03.00 – 0:04.00"));
    EXPECT_EQ(hidden(page), "a•••-s•••");
    EXPECT_EQ(current(), 2) << "not back to the key";
    EXPECT_THAT(page.warnings, IsEmpty());
}

TEST_F(PrivacyPages, aReaderThatIsMissingIsASentence) {
    fake.failure = "Text on the screen cannot be read: the reader is missing.";
    auto page = shown("PrivacyPanel.qml");
    press(page, QStringLiteral("Find private text"));
    page.waitForItem(QStringLiteral("Text on the screen cannot be read: the reader is missing."));
    page.waitForItem(QStringLiteral("Nothing is hidden."));
    EXPECT_THAT(page.warnings, IsEmpty());
}

TEST_F(PrivacyPages, whatIsToBeFoundIsChosenAndAWrongPatternIsTold) {
    auto page = shown("PrivacyKinds.qml");
    press(page, QStringLiteral("Add to Own patterns"));
    page.type("((\n");
    ASSERT_EQ(page.document().redactionSettings.customPatterns.size(), 1u);
    auto& run = *qobject_cast<PrivacyDesk*>(page.desk->privacy())->run();
    ASSERT_EQ(run.remarks().size(), 1);
    page.waitForItem(run.remarks()[0]);
    EXPECT_THAT(page.warnings, IsEmpty());
}
