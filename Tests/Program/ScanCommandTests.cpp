#include "ProcessFixture.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSONValue.h>
#include <TavaroMedia/Frames/PNG.h>

#include <gmock/gmock.h>

using namespace tavaro;
namespace fs = std::filesystem;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

namespace {

constexpr auto key = "AAAA1111-0000-4000-8000-000000000000", mail = "BBBB2222-0000-4000-8000-000000000000";

/// A project of a recording of four seconds, all of which was looked at before: a key was found, and a mail.
class ScanCommand : public ProcessFixture {
protected:
    ScanCommand() {
        ffmpeg({"-f", "lavfi", "-i", "color=white:size=640x360:rate=10:duration=4", "-pix_fmt", "yuv420p",
                path("clip.mp4")});
        EXPECT_EQ(tavaro({"import", path("clip.mp4"), "-o", path("tour")}).exitCode, 0);
        auto project = package.load();
        auto const& asset = project.timeline.clips.at(0).asset;
        auto const found = [&](char const* id, SensitiveKind kind, double start, NormalizedRect const& area) {
            project.redactions.edit().push_back({.id = UUID::parse(id).value(),
                                                 .kind = kind,
                                                 .label = "s••• (20 bytes)",
                                                 .textHash = id,
                                                 .asset = asset,
                                                 .start = start,
                                                 .end = start + 1.5,
                                                 .keyframes = {{start, area}},
                                                 .isAutomatic = true});
        };
        found(key, SensitiveKind::apiKey, 0.5, {0.4, 0.4, 0.2, 0.1});
        found(mail, SensitiveKind::email, 2, {0.1, 0.8, 0.2, 0.1});
        project.redactionScan = RedactionScanInfo{.ranges = {{0, 4}}};
        package.save(project);
    }
    Outcome redact(Arguments words) {
        words.insert(words.begin(), {"redact", path("tour.recproj")});
        return tavaro(words);
    }
    Outcome scan(Arguments words) {
        words.insert(words.begin(), {"scan", path("tour.recproj")});
        return tavaro(words);
    }
    bool isShown(std::size_t finding) { return !package.load().redactions->at(finding).isEnabled; }

    ProjectPackage const package{path("tour.recproj")};
};

}

TEST_F(ScanCommand, whatWasFoundIsListedAndDecidedByTheIdsOfTheList) {
    auto const listed = redact({"--list"});
    EXPECT_EQ(listed.exitCode, 0) << listed.error;
    EXPECT_THAT(listed.out,
                StartsWith("AAAA  API key       s••• (20 bytes)           0:00.50–0:02.00        hidden\n"));
    EXPECT_EQ(redact({}).out, listed.out);

    EXPECT_EQ(redact({"--reject", "bbbb"}).out, "Rejected 1 finding\n");
    EXPECT_TRUE(!isShown(0) && isShown(1));
    EXPECT_THAT(redact({"--list"}).out, HasSubstr("rejected\n"));
    EXPECT_EQ(redact({"--accept", "email", "AAAA"}).out, "Accepted 2 findings\n");
    EXPECT_TRUE(!isShown(0) && !isShown(1) && !package.load().redactions->at(0).isAutomatic);

    fs::remove(package.thumbnailURL());
    EXPECT_EQ(redact({"--add", "1,2.5,64,36,128,72", "--blur"}).exitCode, 0);
    auto const added = package.load().redactions->back();
    EXPECT_EQ(added.style, RedactionStyle::blur);
    EXPECT_TRUE(fs::exists(package.thumbnailURL())) << "the library's picture is drawn anew";
    EXPECT_EQ(added.areaAt(1), (NormalizedRect{0.1, 0.1, 0.2, 0.2}));
    EXPECT_THAT(redact({"--list"}).out, HasSubstr("0:01.00–0:02.50        by hand\n"));

    auto const before = read("tour.recproj/project.json");
    EXPECT_EQ(redact({"--reject", "FFFF"}).error, "There is no finding “FFFF”.\n");
    EXPECT_EQ(redact({"--add", "1,2,3"}).exitCode, 2);
    EXPECT_EQ(redact({"--blur"}).exitCode, 2);
    EXPECT_EQ(redact({"--accept", "all", "--reject", "all"}).exitCode, 2);
    EXPECT_EQ(read("tour.recproj/project.json"), before);
}

TEST_F(ScanCommand, whatWasLookedAtBeforeIsNotLookedAtAgainAndReviewedByPicturesThatShowNothing) {
    auto const scanned = scan({"--review", path("review")});
    EXPECT_EQ(scanned.exitCode, 0) << scanned.error;
    EXPECT_THAT(scanned.out, AllOf(HasSubstr("All of it was looked at before"), HasSubstr(path("review/AAAA.png"))));
    EXPECT_EQ(names(path("review")), (std::vector<std::string>{"AAAA.png", "BBBB.png"}));
    auto const picture = readPNG(path("review/AAAA.png"));
    auto const* const middle = picture.row(picture.height() / 2) + std::ptrdiff_t{4} * (picture.width() / 2);
    EXPECT_NE(middle[1], 255) << "it is covered";
    EXPECT_GT(picture.row(2)[9], 250) << "what is around it is shown";

    auto const report = JSONValue::parse(scan({"--json"}).out);
    EXPECT_EQ(report.find<JSONValue::Array>("findings")->size(), 2U);
    EXPECT_FALSE(*report.find<bool>("isStopped"));
    EXPECT_TRUE(*report.find<bool>("isNothingNew"));
    EXPECT_TRUE(report.find<JSONValue::Array>("unscanned")->empty());
}

TEST_F(ScanCommand, whatCannotBeScannedIsSaidAndTheProjectStays) {
    auto const before = read("tour.recproj/project.json");
    auto const film = tavaro({"scan", path("clip.mp4")});
    EXPECT_EQ(film.exitCode, 1);
    EXPECT_THAT(film.error, AllOf(HasSubstr("is no project"), HasSubstr("--check")));
    EXPECT_EQ(scan({"--kinds", "novel"}).exitCode, 2);
    EXPECT_EQ(scan({"--project", path("tour")}).exitCode, 2) << "that goes with --check";
    EXPECT_EQ(scan({"--check", "--again"}).exitCode, 2);
    EXPECT_EQ(tavaro({"scan", path("none.mp4"), "--check"}).exitCode, 1);
    EXPECT_THAT(scan({"--check"}).error, HasSubstr("is a project. --check reads a finished film"));
    EXPECT_THAT(scan({"--pattern", "("}).error, StartsWith("“(” is no regular expression"));
    EXPECT_EQ(scan({"--word", ""}).exitCode, 2);
    EXPECT_THAT(scan({"--again", "--review", path("clip.mp4")}).error, StartsWith("Could not write “"))
        << "before the scan";
    EXPECT_EQ(read("tour.recproj/project.json"), before);
}

// Takes some ten seconds: what is drawn on a film is recorded, so to say, found, hidden and looked for again.
TEST_F(ScanCommand, aMailOnTheScreenIsFoundHiddenAndNotLegibleInTheFilm) {
    auto project = package.load();
    project.redactions.edit().clear();
    project.intro.emplace();
    project.intro->text = "Mail ada.lovelace@example.com";
    project.intro->duration = 2;
    package.save(project);
    Arguments const form{"--size", "1280x720", "--fps", "10", "--no-watermark"};
    auto const film = [&](std::string const& from, std::string const& to) {
        Arguments words{"export", path(from), "-o", path(to)};
        words.insert(words.end(), form.begin(), form.end());
        return tavaro(words);
    };
    ASSERT_EQ(film("tour", "screen.mp4").exitCode, 0);
    ASSERT_EQ(tavaro({"import", path("screen.mp4"), "-o", path("take")}).exitCode, 0);
    fs::remove(ProjectPackage(path("take.recproj")).thumbnailURL());
    auto const scanned = tavaro({"scan", path("take"), "--json"});
    if (scanned.exitCode == 1) GTEST_SKIP() << "Nothing reads text here: " << scanned.error;
    auto const report = JSONValue::parse(scanned.out);
    ASSERT_FALSE(report.find<JSONValue::Array>("findings")->empty());
    EXPECT_EQ(*report.find<JSONValue::Array>("findings")->front().find<std::string>("kind"), "email");
    EXPECT_THAT(read("take.recproj/project.json"), Not(HasSubstr("lovelace")));
    EXPECT_TRUE(fs::exists(ProjectPackage(path("take.recproj")).thumbnailURL())) << "it is drawn anew";

    auto const open = tavaro({"scan", path("screen.mp4"), "--check", "--project", path("take")});
    EXPECT_EQ(open.exitCode, 1);
    EXPECT_THAT(open.out, HasSubstr("hidden in the project, and legible all the same"));
    EXPECT_THAT(open.error, HasSubstr("can be read in it."));
    auto const exported = film("take", "film.mp4");
    EXPECT_THAT(exported.error, HasSubstr("--check --project"));
    auto const checked = tavaro({"scan", path("film.mp4"), "--check", "--project", path("take")});
    EXPECT_EQ(checked.exitCode, 0) << checked.out << checked.error;
    EXPECT_EQ(checked.out, "Nothing private can be read in it.\n");
}
