#include <Tavaro/Model/Privacy/NewTakeScans.h>

#include "../../Core/Package/TemporaryFolder.h"
#include "../Answered.h"

#include <Tavaro/Model/Privacy/KeptScan.h>
#include <Tavaro/Model/Project/ProjectCatalogue.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <thread>

using namespace tavaro;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
namespace fs = std::filesystem;

namespace {

/// What an application has of it.
struct Program {
    explicit Program(TemporaryFolder const& folder)
        : projects(queue)
        , catalogue(queue, {folder / "library"}, folder / "index.json")
        , scans(queue, projects, catalogue) {}

    void finish() {
        queue.runUntil([&] { return !scans.isBusy(); });
    }

    MainQueue queue;
    OpenProjects projects;
    ProjectCatalogue catalogue;
    NewTakeScans scans;
};

/// Takes of a minute in which a scan finds a secret in each ten seconds, once it may go beyond the first twenty.
class NewTakeScansTest : public testing::Test {
protected:
    NewTakeScansTest() { setenv("XDG_STATE_HOME", folder.path().c_str(), 1); }
    ~NewTakeScansTest() override { unsetenv("XDG_STATE_HOME"); }

    ProjectPackage take(std::string const& name) const {
        ProjectPackage package(folder / "library" / (name + ".recproj"));
        DemoProject project;
        project.name = name;
        project.timeline.clips.push_back({.asset = "screen.mp4", .duration = 60});
        project.assetDurations["screen.mp4"] = 60;
        package.createDirectories();
        package.save(project);
        DueScan::note(package.url());
        return package;
    }
    MovieScan scan() {
        return [this](ScanRequest const& request, auto const& told, std::stop_token const& stop) {
            auto const range = request.ranges.empty() ? TimeRange{0, 60} : request.ranges.front();
            asked.push_back(range);
            double t = range.start;
            ScanOutcome outcome;
            for (; t < range.end() && !stop.stop_requested(); t += 10) {
                outcome.findings.push_back({.masked = "s•••",
                                            .textHash = std::to_string(t),
                                            .start = t,
                                            .end = t + 1,
                                            .keyframes = {{t, {0.1, 0.1, 0.2, 0.1}}}});
                told({t + 10, 60, outcome.findings.size()});
                while (t >= 10 && !mayGoOn && !stop.stop_requested())
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            outcome.ranges = {{range.start, std::min(t, range.end()) - range.start}};
            outcome.isStopped = stop.stop_requested();
            return outcome;
        };
    }
    static std::size_t covers(ProjectPackage const& package) { return package.load().redactions->size(); }
    void waitFor(Program& program, std::function<bool()> const& isSo) {
        auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        program.queue.runUntil([&] { return isSo() || std::chrono::steady_clock::now() > end; });
        EXPECT_TRUE(isSo());
    }

    TemporaryFolder const folder;
    std::atomic<bool> mayGoOn = true;
    std::vector<TimeRange> asked; // by each scan, after it ended
};

}

TEST_F(NewTakeScansTest, takesThatAreDueAreLookedAtOneAfterTheOtherAndOthersAreNot) {
    auto const one = take("One"), two = take("Two"), imported = take("Imported");
    DueScan::forget(imported);
    Program program(folder);
    program.scans.scanBy(scan());
    program.scans.add(imported.url());
    EXPECT_FALSE(program.scans.isBusy());
    program.scans.takeUp();
    std::vector<std::string> over;
    waitFor(program, [&] { return program.scans.isExpected(one.url()) && program.scans.isExpected(two.url()); });
    for (auto const& each : {one, two})
        program.scans.whenOver(each.url(), [&over, each](std::exception_ptr const& failure) {
            EXPECT_FALSE(failure);
            over.push_back(each.url().stem());
        });
    double last = 0;
    auto const observation = program.scans.observe([&](auto const& progress) { last = progress.scan.seconds; });
    program.finish();
    EXPECT_EQ(over.size(), 2u);
    EXPECT_EQ(last, 60);
    EXPECT_EQ(asked.size(), 2u);
    EXPECT_EQ(covers(one), 6u);
    EXPECT_EQ(covers(two), 6u);
    EXPECT_EQ(covers(imported), 0u);
    EXPECT_FALSE(DueScan::isNoted(one.url()));
    EXPECT_EQ(program.projects.find(two.load().id)->undoName(), privacyScanStep) << "who has it open can undo it";
}

TEST_F(NewTakeScansTest, whatAnEndCutsOffIsKeptAndTheNextProgramGoesOnFromThere) {
    auto const package = take("Cut");
    mayGoOn = false;
    {
        Program program(folder);
        program.scans.scanBy(scan());
        program.scans.add(package.url());
        bool isFailed = false, isUnderWay = false;
        program.scans.whenOver(package.url(), [&](auto const& failure) { isFailed = failure != nullptr; });
        auto const observation =
            program.scans.observe([&](auto const& progress) { isUnderWay = progress.scan.seconds == 20; });
        waitFor(program, [&] { return isUnderWay; });
        program.scans.end();
        program.finish();
        EXPECT_TRUE(isFailed);
        EXPECT_EQ(covers(package), 2u);
        EXPECT_TRUE(DueScan::isDue(package, package.load()));
    }
    mayGoOn = true;
    Program next(folder);
    next.scans.scanBy(scan());
    next.scans.takeUp();
    waitFor(next, [&] { return next.scans.isBusy(); });
    next.finish();
    ASSERT_EQ(asked.size(), 2u);
    EXPECT_GT(asked[1].start, 10) << "not all of it once more";
    EXPECT_FALSE(DueScan::isNoted(package.url()));
    EXPECT_THAT(unscannedRanges(package.load(), {}), IsEmpty());
}

TEST_F(NewTakeScansTest, whatDiesWithItsProgramIsDueStill) {
    auto const package = take("Killed");
    {
        Program program(folder);
        mayGoOn = false;
        program.scans.scanBy(scan());
        program.scans.add(package.url());
        bool isUnderWay = false;
        auto const observation = program.scans.observe([&](auto const&) { isUnderWay = true; });
        waitFor(program, [&] { return isUnderWay; });
        EXPECT_FALSE(DueScan::claim(package, package.load())) << "it is looked at";
    }
    EXPECT_EQ(covers(package), 0u);
    EXPECT_TRUE(DueScan::claim(package, package.load()));
}

TEST_F(NewTakeScansTest, nothingIsLookedAtWhileSomethingElseNeedsTheMachine) {
    auto const package = take("Held");
    Program program(folder);
    mayGoOn = false;
    program.scans.scanBy(scan());
    bool isUnderWay = false;
    auto const observation =
        program.scans.observe([&](auto const& progress) { isUnderWay = progress.scan.seconds == 20; });
    program.scans.add(package.url());
    waitFor(program, [&] { return isUnderWay; });
    program.scans.hold(true);
    waitFor(program, [&] { return covers(package) == 2; });
    EXPECT_EQ(asked.size(), 1u);
    EXPECT_TRUE(program.scans.isBusy());
    mayGoOn = true;
    program.scans.hold(false);
    program.finish();
    EXPECT_EQ(asked.size(), 2u);
    EXPECT_FALSE(DueScan::isNoted(package.url()));
}

TEST_F(NewTakeScansTest, aTakeThatSomebodyElseLooksAtIsLeftToThem) {
    auto const package = take("Window");
    Program program(folder);
    program.scans.scanBy(scan());
    auto window = DueScan::claim(package, package.load());
    ASSERT_TRUE(window);
    program.scans.add(package.url());
    program.finish();
    EXPECT_THAT(asked, IsEmpty());
    EXPECT_TRUE(DueScan::isNoted(package.url()));
    window->settle();
    EXPECT_FALSE(DueScan::isNoted(package.url()));
}

TEST_F(NewTakeScansTest, aProjectThatAnotherProgramHasIsWaitedForAndOneThatCannotBeReadIsDueStill) {
    auto const package = take("Used"), bad = take("Bad");
    std::ofstream(bad.projectFileURL()) << "{";
    Program program(folder);
    program.scans.scanBy(scan());
    auto lock = std::optional(package.lockForEditing());
    program.scans.add(package.url());
    waitFor(program, [&] { return asked.size() == 1; });
    lock.reset();
    program.scans.add(bad.url());
    bool isFailed = false;
    program.scans.whenOver(bad.url(), [&](auto const& failure) { isFailed = failure != nullptr; });
    program.finish();
    EXPECT_EQ(covers(package), 6u);
    EXPECT_TRUE(isFailed);
    EXPECT_TRUE(DueScan::isNoted(bad.url()));
}

TEST_F(NewTakeScansTest, whatWasFoundUntilNothingCouldBeReadAnyMoreIsKeptAndTheRestIsDue) {
    auto const package = take("Broken");
    Program program(folder);
    program.scans.scanBy([whole = scan()](auto const& request, auto const& told, auto const& stop) {
        auto outcome = whole(request, told, stop);
        outcome.ranges = {{0, 30}};
        outcome.isStopped = true;
        outcome.failure = "The reader broke down.";
        return outcome;
    });
    std::exception_ptr why;
    program.scans.add(package.url());
    program.scans.whenOver(package.url(), [&](auto const& failure) { why = failure; });
    program.finish();
    EXPECT_EQ(covers(package), 6u);
    EXPECT_TRUE(why);
    EXPECT_TRUE(DueScan::isDue(package, package.load()));
    EXPECT_THAT(unscannedRanges(package.load(), {}), ElementsAre(TimeRange{30, 30}));
}
