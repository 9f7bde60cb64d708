#include "../Privacy/FakeScan.h"
#include "TestExports.h"

#include <Tavaro/Model/Privacy/DueScan.h>
#include <Tavaro/Model/Privacy/FilmCheck.h>
#include <Tavaro/Model/Privacy/NewTakeScans.h>
#include <Tavaro/Studio/Exports/ExportForm.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

/// Exports of a film that hides a card and shows a mail that somebody rejected.
class FilmReadingTest : public ExportsTest {
protected:
    FilmReadingTest() {
        take.project.redactions =
            std::vector{found(SensitiveKind::card, "4•••", 0, 1), found(SensitiveKind::email, "a•••", 0, 1, false)};
        take.package.save(take.project);
    }
    ExportQueue::Settings readingSettings() {
        auto reading = settings();
        reading.scan = fake.scan();
        return reading;
    }
    ExportOrder readOrder(std::string const& name) const {
        auto made = order(name);
        made.checksFilm = true;
        return made;
    }
    static QString shown(ExportQueue const& exports, ExportQueue::Role role) {
        return exports.index(0).data(role).toString();
    }
    /// Until the film is there and being read.
    static void waitForReading(ExportQueue const& exports) {
        waitFor([&] { return shown(exports, ExportQueue::statusRole) == "Reading it again · 0:12 of 1:00"; });
    }
    std::string verdictOnFilm() {
        ExportQueue exports(queue, application, readingSettings());
        exports.add(readOrder("film.mp4"));
        waitFor([&] { return exports.isIdle(); });
        EXPECT_EQ(listed(exports), "film.mp4 done") << "whatever is read in it";
        EXPECT_TRUE(std::filesystem::exists(exports.record(0).path));
        return exports.record(0).checked;
    }

    FakeScan fake;
};

}

TEST_F(FilmReadingTest, whatCanStillBeReadIsToldAndTheNextFilmWaitsForThat) {
    fake.findings = {finding(SensitiveKind::email, "a•••", 0, 1), finding(SensitiveKind::token, "t•••", 0.5, 1),
                     finding(SensitiveKind::card, "4•••", 0.25, 0.5)};
    ExportQueue exports(queue, application, readingSettings());
    std::vector<std::string> told;
    QObject::connect(&exports, &ExportQueue::ended, [&](int row) { told.push_back(exports.record(row).checked); });
    exports.add(readOrder("film.mp4"));
    exports.add(order("next.mp4"));
    waitForReading(exports);
    EXPECT_EQ(listed(exports), "film.mp4 running, next.mp4 waiting");
    EXPECT_EQ(exports.summary(), "Reading “Tour” again, 1 more to come");
    EXPECT_GT(exports.share(), 0.6);
    EXPECT_LT(exports.share(), 0.9);
    EXPECT_FALSE(exports.isIdle()) << "the program stays until it is done";
    fake.go();
    waitFor([&] { return exports.isIdle(); });
    EXPECT_EQ(listed(exports), "next.mp4 done, film.mp4 done");
    EXPECT_EQ(exports.record(1).checked,
              "2 private texts can be read in it.\n"
              "0:00.25–0:00.50: Card number 4•••, hidden in the project, and legible all the same\n"
              "0:00.50–0:01.00: Token t•••");
    EXPECT_TRUE(exports.index(1).data(ExportQueue::legibleRole).toBool());
    EXPECT_EQ(exports.record(0).checked, "") << "it was not to be read";
    EXPECT_EQ(told, (std::vector<std::string>{exports.record(1).checked, ""}));
    EXPECT_EQ(bytesIn(take.output("film.mp4")), exported(order("film.mp4")));
}

TEST_F(FilmReadingTest, whatWasRejectedIsMeantToBeRead) {
    fake.findings = {finding(SensitiveKind::email, "a•••", 0, 1)};
    fake.go();
    EXPECT_EQ(verdictOnFilm(), "Nothing private can be read in it.");
}

TEST_F(FilmReadingTest, aReadingThatIsStoppedOrImpossibleSaysSoAndTheFilmIsThere) {
    fake.failure = "Text on the screen cannot be read: the reader is missing.";
    EXPECT_EQ(verdictOnFilm(), "The film could not be read again: " + *fake.failure);
    fake.failure.reset();
    ExportQueue exports(queue, application, readingSettings());
    exports.add(readOrder("stopped.mp4"));
    waitForReading(exports);
    exports.cancel(0);
    waitFor([&] { return exports.isIdle(); });
    EXPECT_EQ(exports.record(0).state, ExportState::done);
    EXPECT_EQ(exports.record(0).checked, "The check was stopped. So nothing can be said about the film.");
    EXPECT_FALSE(exports.record(0).isLegible);
    EXPECT_EQ(take.filesLeft(), 2);
}

TEST_F(FilmReadingTest, aFilmWhoseReadingTheProgramDidNotSurviveIsDone) {
    {
        ExportQueue exports(queue, application, readingSettings());
        exports.add(readOrder("film.mp4"));
        waitForReading(exports);
    }
    ExportQueue exports(queue, application, readingSettings());
    waitFor([&] { return exports.count() == 1; });
    EXPECT_EQ(listed(exports), "film.mp4 done");
    EXPECT_EQ(exports.record(0).checked, "Tavaro ended before the film was read again.");
    EXPECT_EQ(take.filesLeft(), 1);
}

TEST(FilmVerdict, ofManyTextsTheFirstAreNamed) {
    std::vector<LegibleText> texts(7, {.kind = SensitiveKind::email, .masked = "m•••", .start = 1, .end = 2});
    texts[0].isRejectedInProject = true;
    auto const verdict = verdictOn(texts);
    EXPECT_TRUE(verdict.isLegible);
    EXPECT_THAT(verdict.said, StartsWith("6 private texts can be read in it.\n0:01.00–0:02.00: Email m•••\n"));
    EXPECT_THAT(verdict.said, HasSubstr("\nand 2 more"));
    EXPECT_EQ(std::ranges::count(verdict.said, '\n'), 5);
}

TEST_F(FilmReadingTest, theDialogOffersItWhereSomethingIsHiddenAndRemembersTheAnswer) {
    std::shared_ptr<OpenProject> open;
    application.projects().open(take.package.url(), [&](auto const& outcome) { open = outcome.value(); });
    waitFor([&] { return open != nullptr; });
    EditorSession session(queue, open);
    ExportQueue exports(queue, application, readingSettings());
    ExportForm form(queue, application.preferences(), exports);
    fake.go();
    form.begin(&session);
    EXPECT_TRUE(form.canCheck());
    EXPECT_TRUE(form.checksFilm()) << "unless somebody said no";
    form.setPlace("captions");
    EXPECT_FALSE(form.canCheck());
    form.setPlace("custom");
    form.setWidth(160);
    form.setFolderUrl(QUrl::fromLocalFile(QString::fromStdString((folder / "films").string())));
    ASSERT_TRUE(form.submit()) << form.problem().toStdString();
    EXPECT_TRUE(exports.record(0).checksFilm);
    form.setChecksFilm(false);
    ASSERT_TRUE(form.submit());
    EXPECT_FALSE(exports.record(1).checksFilm);
    form.begin(&session);
    EXPECT_FALSE(form.checksFilm());
    session.edit("Show", [](DemoProject& project) {
        for (auto& track : project.redactions.edit()) track.isEnabled = false;
    });
    EXPECT_FALSE(form.canCheck()) << "nothing is hidden any more";
    waitFor([&] { return exports.isIdle(); });
}

TEST_F(FilmReadingTest, aTakeThatIsYetToBeLookedAtWaitsUnlessSomebodyWillNotAndOthersGoFirst) {
    take.project.redactions = std::vector<RedactionTrack>();
    take.package.save(take.project);
    DueScan::note(take.package.url());
    application.newTakes().scanBy(fake.scan());
    fake.findings = {finding(SensitiveKind::card, "4•••", 0, 1)};
    auto waiting = settings();
    waiting.scanTick = 20;
    ExportQueue exports(queue, application, waiting);
    auto due = order("due.mp4"), bare = order("bare.mp4");
    due.awaitsScan = true;
    exports.add(due);
    exports.add(bare);
    waitFor([&] { return exports.activeCount() == 1; });
    EXPECT_EQ(listed(exports), "due.mp4 waiting, bare.mp4 done");
    EXPECT_EQ(shown(exports, ExportQueue::statusRole), "Waiting until private text is hidden");
    EXPECT_EQ(bytesIn(take.output("bare.mp4")), exported(bare));

    fake.go();
    waitFor([&] { return exports.isIdle(); });
    EXPECT_EQ(listed(exports), "due.mp4 done, bare.mp4 done");
    due.document = take.package.load();
    EXPECT_EQ(due.document.redactions->size(), 1u);
    EXPECT_EQ(bytesIn(take.output("due.mp4")), exported(due));
    EXPECT_NE(bytesIn(take.output("due.mp4")), bytesIn(take.output("bare.mp4")));

    DueScan::note(take.package.url());
    auto never = order("never.mp4");
    never.awaitsScan = true;
    exports.add(never);
    waitFor([&] { return exports.isIdle(); });
    EXPECT_EQ(exports.record(0).state, ExportState::done) << "all of it was looked at";
}
