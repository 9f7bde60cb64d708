#include "TestExports.h"

#include <QAbstractItemModelTester>

#include <vector>

using namespace tavaro;
namespace fs = std::filesystem;

using ExportQueueTest = ExportsTest;

TEST_F(ExportQueueTest, filmsAreWrittenOneAfterTheOtherAndOneThatIsCancelledStopsNoOther) {
    ExportQueue exports(queue, application, settings());
    QAbstractItemModelTester const tester(&exports, QAbstractItemModelTester::FailureReportingMode::Fatal);
    auto third = order("third.mp4", {320, 180});
    third.choices.range = TimeRange{0.25, 0.5};
    for (auto const& each : {order("first.mp4"), order("second.mp4"), third}) exports.add(each);
    EXPECT_EQ(exports.summary().toStdString(), "Exporting “Tour”, 2 more to come");
    waitFor([&] { return exports.record(0).state == ExportState::running; });
    exports.cancel(1);
    EXPECT_EQ(listed(exports), "first.mp4 running, third.mp4 waiting, second.mp4 cancelled");
    waitFor([&] { return exports.isIdle(); });
    EXPECT_EQ(listed(exports), "third.mp4 done, first.mp4 done, second.mp4 cancelled");
    EXPECT_EQ(take.filesLeft(), 2);
    EXPECT_EQ(bytesIn(take.output("first.mp4")), exported(order("first.mp4")));
    EXPECT_EQ(bytesIn(take.output("third.mp4")), exported(third));
    EXPECT_EQ(exports.measures().size(), 2u);
    EXPECT_EQ(exports.measures()[1].frames, 30) << "half a second at 60";

    exports.remove(1);
    exports.removeEnded();
    EXPECT_EQ(exports.count(), 0);
    EXPECT_EQ(take.filesLeft(), 2) << "the films stay";
}

TEST_F(ExportQueueTest, whatCannotBeExportedSaysWhyAndTheNextGoesOn) {
    ExportQueue exports(queue, application, settings());
    auto gone = order("gone.mp4");
    gone.document.timeline.clips[0].asset = "gone.mp4";
    auto nowhere = order("nowhere.mp4");
    std::ofstream(take.output("file")) << "no folder";
    nowhere.choices.output = (take.output("file") / "nowhere.mp4").string();
    auto impossible = order("impossible.mp4");
    impossible.choices.range = TimeRange{0.5, 0};
    std::vector<std::string> told;
    QObject::connect(&exports, &ExportQueue::ended, [&](int row) { told.push_back(exports.record(row).title); });
    for (auto const& each : {gone, nowhere, order("film.mp4")}) exports.add(each);
    EXPECT_THROW(exports.add(impossible), Error);
    waitFor([&] { return exports.isIdle(); });
    EXPECT_EQ(listed(exports), "film.mp4 done, nowhere.mp4 failed, gone.mp4 failed");
    EXPECT_EQ(exports.record(2).sentence, "Missing asset 'gone.mp4' in the project.");
    EXPECT_EQ(exports.record(1).sentence.rfind("Could not write the export: ", 0), 0u) << exports.record(1).sentence;
    EXPECT_EQ(told, (std::vector<std::string>{"gone.mp4", "nowhere.mp4", "film.mp4"}));
    EXPECT_EQ(take.filesLeft(), 2) << "the film, and the file that is no folder";
}

TEST_F(ExportQueueTest, aFilmThatIsCancelledWhileItIsDrawnLeavesNoFileAndATakenNameIsNumbered) {
    auto impatient = settings();
    impatient.patience = 0;
    ExportQueue exports(queue, application, impatient);
    exports.add(order("film.mp4", {1280, 720}));
    waitFor([&] { return exports.share() > 0.1; });
    auto const warning = exports.index(0).data(ExportQueue::warningRole).toString().toStdString();
    EXPECT_EQ(warning.rfind("No progress for ", 0), 0u) << warning;
    EXPECT_TRUE(warning.ends_with(" The frame at 0:00 is being drawn.")) << warning;
    EXPECT_EQ(exports.index(0).data(ExportQueue::statusRole).toString().toStdString().rfind("Rendering", 0), 0u);
    exports.cancel(0);
    waitFor([&] { return exports.isIdle(); });
    EXPECT_EQ(listed(exports), "film.mp4 cancelled");
    EXPECT_EQ(take.filesLeft(), 0);

    std::ofstream(take.output("film.mp4")) << "somebody else's";
    exports.again(0);
    waitFor([&] { return exports.count() == 2 && exports.record(0).state == ExportState::running; });
    exports.cancel(0);
    waitFor([&] { return exports.isIdle(); });
    exports.add(order("film.mp4"));
    waitFor([&] { return exports.isIdle(); });
    EXPECT_EQ(exports.record(0).path, take.output("film 2.mp4"));
    EXPECT_EQ(bytesIn(take.output("film.mp4")), "somebody else's");
}

TEST_F(ExportQueueTest, captionsAreWrittenBesideTheFilmInItsTimesAndAlone) {
    ExportQueue exports(queue, application, settings());
    take.project.captions.cues = {{.start = 0.1, .duration = 0.3, .text = "before"},
                                  {.start = 0.4, .duration = 0.3, .text = "inside"}};
    auto part = order("part.mp4");
    part.choices.range = TimeRange{0.5, 0.5};
    part.writesCaptions = true;
    exports.add(part);
    auto whole = order("whole.srt");
    exports.addCaptions(whole, take.output("whole.srt"));
    waitFor([&] { return exports.isIdle(); });
    EXPECT_EQ(bytesIn(take.output("part.srt")), "1\n00:00:00,000 --> 00:00:00,200\ninside\n\n");
    EXPECT_EQ(bytesIn(take.output("whole.srt")),
              "1\n00:00:00,100 --> 00:00:00,400\nbefore\n\n2\n00:00:00,400 --> 00:00:00,700\ninside\n\n");
    EXPECT_THROW(exports.addCaptions({.package = take.package}, take.output("none.srt")), Error);
}

TEST_F(ExportQueueTest, whatWasExportedIsRememberedAndWhatDidNotEndIsOfferedAgain) {
    {
        ExportQueue exports(queue, application, settings());
        exports.add(order("first.mp4"));
        waitFor([&] { return exports.isIdle(); });
        exports.add(order("second.mp4", {1280, 720}));
        exports.add(order("third.mp4"));
        waitFor([&] { return exports.share() > 0.05; });
    }
    application.exporter().cancel();
    waitFor([&] { return !application.exporter().isExporting(); });
    ExportQueue exports(queue, application, settings());
    waitFor([&] { return exports.count() == 3; });
    EXPECT_EQ(listed(exports), "second.mp4 interrupted, third.mp4 interrupted, first.mp4 done");
    EXPECT_EQ(exports.measures().size(), 1u);
    exports.again(1);
    waitFor([&] { return exports.count() == 4 && exports.isIdle(); });
    EXPECT_EQ(listed(exports), "third.mp4 done, second.mp4 interrupted, third.mp4 interrupted, first.mp4 done");
    EXPECT_EQ(take.filesLeft(), 2);
}

TEST_F(ExportQueueTest, anAgentsExportGoesFirstWhereItCameFirst) {
    auto const agents = order("agent.mp4");
    bool isOver = false;
    application.exporter().start({agents.package, agents.document, agents.choices, EncoderChoice::software},
                                 {.over = [&](auto const&) { isOver = true; }});
    ExportQueue exports(queue, application, settings());
    exports.add(order("film.mp4"));
    waitFor([&] { return exports.record(0).state == ExportState::running; });
    EXPECT_TRUE(isOver);
    waitFor([&] { return exports.isIdle(); });
    EXPECT_EQ(listed(exports), "film.mp4 done");
}

TEST_F(ExportQueueTest, aListThatIsDamagedBeginsAnewAndALongOneForgetsTheOldest) {
    std::ofstream(folder / "exports.json") << "{\"exports\": 7}";
    auto few = settings();
    few.remembered = 2;
    ExportQueue exports(queue, application, few);
    for (auto const* const name : {"a.mp4", "b.mp4", "c.mp4"}) exports.add(order(name, {32, 32}));
    waitFor([&] { return exports.isIdle(); });
    EXPECT_EQ(listed(exports), "c.mp4 done, b.mp4 done");
}
