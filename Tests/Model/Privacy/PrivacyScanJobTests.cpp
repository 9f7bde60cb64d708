#include <Tavaro/Model/Privacy/PrivacyScanJob.h>

#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Model/Privacy/FilmCheck.h>
#include <Tavaro/Model/Privacy/FindingListing.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroVision/Errors/VisionError.h>

#include <gmock/gmock.h>

#include <cstdlib>

using namespace tavaro;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

/// A film of a recording of 60 s, some of it cut, with an imported movie of 10 s in the middle.
DemoProject film() {
    DemoProject project;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 20},
                              {.asset = "other.mp4", .start = 20, .duration = 5},
                              {.asset = "screen.mp4", .start = 25, .sourceStart = 30, .duration = 20}};
    project.assetDurations = {{"screen.mp4", 60}, {"other.mp4", 10}};
    return project;
}

class PrivacyScanJobTest : public testing::Test {
protected:
    PrivacyScanJobTest() { setenv("XDG_STATE_HOME", folder.path().c_str(), 1); }
    ~PrivacyScanJobTest() override { unsetenv("XDG_STATE_HOME"); }

    /// Finds a secret at the beginning of each second, until it is stopped.
    PrivacyScanRequest request(DemoProject const& project, ScanExtent extent = ScanExtent::missing) {
        auto request = privacyScanRequest(project, package, project.redactionSettings, extent);
        request.scan = [this](ScanRequest const& one, auto const& told, std::stop_token const& stop) {
            auto const ranges = one.ranges.empty() ? std::vector<TimeRange>{{0, 10}} : one.ranges;
            seen.emplace_back(one.movie.filename().string(), one.ranges);
            ScanOutcome outcome{.warnings = {"A pattern is odd."}};
            for (auto const& range : ranges) {
                double t = range.start;
                for (; t < range.end() && !stop.stop_requested(); ++t) {
                    outcome.findings.push_back({.masked = "s•••", .textHash = "1", .start = t, .end = t + 1});
                    told({.seconds = t - range.start, .total = 10, .found = outcome.findings.size()});
                    if (stopAfter && outcome.findings.size() == stopAfter) stopNow();
                }
                outcome.ranges.push_back({range.start, t - range.start});
            }
            outcome.isStopped = stop.stop_requested();
            return outcome;
        };
        return request;
    }

    TemporaryFolder folder;
    ProjectPackage package{folder / "film.recproj"};
    MainQueue queue;
    std::vector<std::pair<std::string, std::vector<TimeRange>>> seen;
    std::size_t stopAfter = 0;
    std::function<void()> stopNow;
};

}

TEST_F(PrivacyScanJobTest, eachMovieThatTheFilmShowsIsLookedAtOnceAndWholeHoweverItIsCut) {
    auto job = privacyScanJob(queue, request(film()));
    ScanProgress last;
    job.onProgress([&](ScanProgress const& progress) {
        EXPECT_GE(progress.seconds, last.seconds);
        last = progress;
    });
    job.start();
    auto const& made = job.wait();
    EXPECT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen.at(0).first, "screen.mp4");
    EXPECT_THAT(seen.at(0).second, IsEmpty()) << "all of it";
    EXPECT_EQ(seen.at(1).first, "other.mp4");
    EXPECT_EQ(last.found, 20U);
    EXPECT_NEAR(last.total, 70, 0.1);
    EXPECT_FALSE(made.isStopped);
    EXPECT_THAT(made.warnings, ElementsAre("A pattern is odd."));
}

TEST_F(PrivacyScanJobTest, onlyWhatIsMissingIsLookedAtUnlessAllOfItIsWanted) {
    auto project = film();
    project.timeline.clips.erase(project.timeline.clips.begin() + 1);
    project.redactionScan = RedactionScanInfo{.ranges = {{0, 20}, {30, 10}}};
    auto missing = request(project);
    EXPECT_THAT(missing.recordings.at(0).ranges, ElementsAre(TimeRange{18, 14}, TimeRange{38, 22}))
        << "with some of what is beside it";
    EXPECT_THAT(request(project, ScanExtent::everything).recordings.at(0).ranges, IsEmpty());
    project.redactionScan->ranges = {{0, 59.9}};
    EXPECT_THAT(request(project).recordings, IsEmpty());
    project.redactionScan->ranges = {{0, 90}};
    EXPECT_THAT(request(project).recordings.at(0).ranges, IsEmpty()) << "that was another recording";
    project.timeline.clips.clear();
    EXPECT_THROW(request(project), VisionError);
}

TEST_F(PrivacyScanJobTest, whatWasFoundWhenItIsCancelledIsItsResult) {
    auto job = privacyScanJob(queue, request(film()));
    stopAfter = 3;
    stopNow = [&] { job.cancel(); };
    job.start();
    auto const& made = job.wait();
    EXPECT_TRUE(made.isStopped);
    ASSERT_EQ(made.recordings.size(), 1U) << "the other movie is not begun";
    EXPECT_EQ(made.recordings[0].outcome.findings.size(), 3U);
    EXPECT_THAT(made.recordings[0].outcome.ranges, ElementsAre(TimeRange{0, 3}));
}

TEST_F(PrivacyScanJobTest, aFilmIsComparedWithWhatItsProjectHides) {
    auto project = film();
    project.redactions.edit() = {{.textHash = "hidden"}, {.textHash = "rejected", .isEnabled = false}};
    MadePrivacyScan made;
    made.recordings.push_back({"film.mp4",
                               {.findings = {{.masked = "c", .textHash = "new", .start = 3},
                                             {.masked = "a", .textHash = "hidden", .start = 1},
                                             {.masked = "b", .textHash = "rejected", .start = 2}}}});
    auto const texts = legibleTexts(made, &project);
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_TRUE(texts[0].masked == "a" && texts[0].isHiddenInProject && !texts[0].isRejectedInProject);
    EXPECT_TRUE(texts[1].masked == "b" && !texts[1].isHiddenInProject && texts[1].isRejectedInProject);
    EXPECT_TRUE(texts[2].masked == "c" && !texts[2].isHiddenInProject && !texts[2].isRejectedInProject);
}

TEST(FindingListing, namesAreAsLongAsTheyNeedToBeAndTimesAreTheFilms) {
    auto project = film();
    auto const id = [](char const* text) { return UUID::parse(text).value(); };
    project.redactions.edit() = {{.id = id("ABCDEF00-0000-4000-8000-000000000000"), .start = 22, .end = 24},
                                 {.id = id("ABCDEF01-0000-4000-8000-000000000000"), .start = 32, .end = 34},
                                 {.id = id("12345678-0000-4000-8000-000000000000"),
                                  .textHash = "1",
                                  .asset = "other.mp4",
                                  .start = 4,
                                  .end = 9,
                                  .isEnabled = false}};
    auto const found = listedFindings(project);
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[0].id, "1234");
    EXPECT_THAT(found[0].shown, ElementsAre(TimeRange{24, 1}));
    EXPECT_EQ(found[0].state, FindingState::rejected);
    EXPECT_EQ(found[1].id, "ABCDEF01");
    EXPECT_THAT(found[1].shown, ElementsAre(TimeRange{27, 2}));
    EXPECT_TRUE(found[1].isByHand);
    EXPECT_EQ(found[2].id, "ABCDEF00");
    EXPECT_THAT(found[2].shown, IsEmpty()) << "that was cut out";
    using enum SensitiveKind;
    EXPECT_EQ(countedKinds({apiKey, email, apiKey, card}), "1 email, 2 API keys and 1 card number");
}
