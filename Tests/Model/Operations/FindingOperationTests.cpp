#include <Tavaro/Model/Operations/Perform.h>

#include <TavaroCore/Project/DemoProject.h>

#include <gmock/gmock.h>

using namespace tavaro;

namespace {

/// Two keys and a mail that a scan found, and an area that somebody hid.
DemoProject film() {
    DemoProject project;
    project.sourceSize = {1000, 500};
    project.timeline.clips = {{.asset = "screen.mp4", .sourceStart = 10, .duration = 4},
                              {.asset = "screen.mp4", .start = 4, .sourceStart = 14, .duration = 4, .speed = 2},
                              {.asset = "screen.mp4", .start = 8, .sourceStart = 40, .duration = 4}};
    auto const id = [](char const* text) { return UUID::parse(text).value(); };
    using enum SensitiveKind;
    project.redactions.edit() = {
        {.id = id("AAAAAAA1-0000-4000-8000-000000000000"), .kind = apiKey, .textHash = "1", .isAutomatic = true},
        {.id = id("AAAAAAA2-0000-4000-8000-000000000000"), .kind = apiKey, .textHash = "2", .isAutomatic = true},
        {.id = id("BBBBBBBB-0000-4000-8000-000000000000"), .kind = email, .textHash = "3", .isAutomatic = true},
        {.id = id("CCCCCCCC-0000-4000-8000-000000000000"), .label = "Area"}};
    return project;
}

/// "+" where it is hidden, in capitals where a scan may replace it.
std::string drawn(DemoProject const& project) {
    std::string text;
    for (auto const& track : *project.redactions)
        text += track.isAutomatic ? track.isEnabled ? "A" : "R" : track.isEnabled ? "+" : "-";
    return text;
}

std::string failure(Operation const& operation) {
    auto const before = film();
    auto project = before;
    try {
        perform(project, operation);
        return "none";
    } catch (OperationError const& error) {
        EXPECT_TRUE(project == before) << "a refused edit changes nothing";
        return error.what();
    }
}

}

TEST(FindingOperations, findingsAreNamedByBeginningsKindsOrAll) {
    auto project = film();
    EXPECT_EQ(perform(project, operations::RejectFindings{{"aaaaaaa1", "email"}}).summary, "Rejected 2 findings");
    EXPECT_EQ(drawn(project), "RAR+");
    EXPECT_EQ(perform(project, operations::AcceptFindings{{"BBBB"}}).summary, "Accepted 1 finding");
    EXPECT_EQ(drawn(project), "RA++");
    perform(project, operations::RejectFindings{{"all"}});
    EXPECT_EQ(drawn(project), "RR-+") << "what was hidden by hand is no finding";
    perform(project, operations::RejectFindings{{"CCCC"}});
    EXPECT_EQ(drawn(project), "RR--") << "but may be named";
    EXPECT_FALSE(perform(project, operations::AcceptFindings{{"card"}}).isChanged);

    EXPECT_EQ(failure(operations::AcceptFindings{{"AAAA"}}), "Several findings have an id that begins with “AAAA”.");
    EXPECT_EQ(failure(operations::AcceptFindings{{"all", "DDDD"}}), "There is no finding “DDDD”.");
    EXPECT_EQ(failure(operations::AcceptFindings{{""}}), "There is no finding “”.");
}

TEST(FindingOperations, anAreaIsHiddenInWhatTheFilmShowsThen) {
    auto project = film();
    project.redactions.edit().clear();
    perform(project, operations::HideArea{.start = 3, .end = 9, .x = 900, .y = 100, .width = 300, .height = 50});
    auto const& tracks = *project.redactions;
    ASSERT_EQ(tracks.size(), 2U) << "two clips of which one goes on with the other, and one after a cut";
    EXPECT_EQ(tracks[0].start, 13);
    EXPECT_EQ(tracks[0].end, 22);
    EXPECT_EQ(tracks[1].start, 40);
    EXPECT_EQ(tracks[1].end, 41);
    EXPECT_EQ(tracks[1].areaAt(40), (NormalizedRect{0.9, 0.2, 0.1, 0.1})) << "no wider than the recording";
    EXPECT_TRUE(tracks[1].textHash.empty() && !tracks[1].isAutomatic);

    EXPECT_THAT(failure(operations::HideArea{.start = 3, .end = 90, .width = 5, .height = 5}),
                testing::HasSubstr("past the end"));
    EXPECT_EQ(failure(operations::HideArea{.end = 1, .x = 1000, .width = 5, .height = 5}),
              "The area is outside of the recording, which has 1000 × 500 pixels.");
    EXPECT_EQ(failure(operations::HideArea{.end = 1, .width = 0, .height = 5}), "width must be 1–65536.");
}

TEST(FindingOperations, aCoverThatSomebodyChangesByAPatchIsLeftAsItIsByLaterScans) {
    auto project = film();
    auto const set = [&](std::string const& change) { perform(project, operations::SetFields{{change}}); };
    set("redactions.0.end=7");
    EXPECT_EQ(drawn(project), "+AA+");
    set("redactions.1.isEnabled=false");
    EXPECT_EQ(drawn(project), "+RA+") << "which decides about the text, wherever it is";
    set("redactions.2.isAutomatic=false");
    set("redactions.2.isAutomatic=true");
    EXPECT_EQ(drawn(project), "+RA+");
}
