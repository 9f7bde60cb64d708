#include <Tavaro/Model/Privacy/KeptScan.h>

#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Model/Operations/Perform.h>
#include <Tavaro/Model/Privacy/PrivacyScanJob.h>
#include <Tavaro/Model/Project/OpenProject.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSON.h>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <iterator>

using namespace tavaro;
using ::testing::ElementsAre;

namespace {

constexpr NormalizedRect above{0.1, 0.1, 0.3, 0.05}, below{0.1, 0.8, 0.3, 0.05};

ScreenFinding finding(std::string const& text, double start, double end, NormalizedRect const& place = above) {
    return {.kind = SensitiveKind::apiKey,
            .label = "API key",
            .masked = text.substr(0, 1) + "•••",
            .textHash = findingHash(text, {}),
            .start = start,
            .end = end,
            .keyframes = {{start, place}}};
}

/// A film of a minute's recording.
DemoProject film() {
    DemoProject project;
    project.timeline.clips.push_back({.asset = "screen.mp4", .duration = 60});
    project.assetDurations["screen.mp4"] = 60;
    return project;
}

MadePrivacyScan scan(std::vector<ScreenFinding> findings, std::vector<TimeRange> ranges = {{0, 60}}) {
    return {.recordings = {{"screen.mp4", {.findings = std::move(findings), .ranges = std::move(ranges)}}}};
}

/// "2–10 hidden above", each, by their times.
std::vector<std::string> drawn(DemoProject const& project) {
    auto tracks = *project.redactions;
    std::ranges::stable_sort(tracks, {}, &RedactionTrack::start);
    std::vector<std::string> lines;
    for (auto const& track : tracks) {
        auto const place = track.areaAt(track.start) == above   ? "above"
                           : track.areaAt(track.start) == below ? "below"
                                                                : "elsewhere";
        lines.push_back(fmt::format("{:g}–{:g} {} {}", track.start, track.end,
                                    isFinding(track) ? nameOf(stateOf(track)) : "by hand", place));
    }
    return lines;
}

void decide(DemoProject& project, Operation const& operation) { perform(project, operation); }

UUID idAt(DemoProject const& project, double start) {
    for (auto const& track : *project.redactions)
        if (track.start == start) return track.id;
    return {};
}

}

TEST(KeptScan, findingsBecomeTracksAndGiveWayToThoseOfTheNextScanWhileHandsStay) {
    auto project = film();
    project.redactions.edit().push_back({.label = "Area", .start = 5, .end = 6, .keyframes = {{5, below}}});
    auto const kept = keepPrivacyScan(project, scan({finding("one", 2, 10), finding("two", 20, 30, below)}));
    EXPECT_EQ(kept.hidden, 2U);
    EXPECT_THAT(drawn(project), ElementsAre("2–10 hidden above", "5–6 by hand below", "20–30 hidden below"));
    auto const& track = project.redactions->back();
    EXPECT_EQ(track.label, "t•••");
    EXPECT_EQ(track.asset, "screen.mp4");
    EXPECT_TRUE(track.isAutomatic);
    EXPECT_EQ(project.redactionScan->ranges, (std::vector<TimeRange>{{0, 60}}));

    auto const id = idAt(project, 20);
    keepPrivacyScan(project, scan({finding("two", 19, 31, below)}));
    EXPECT_THAT(drawn(project), ElementsAre("5–6 by hand below", "19–31 hidden below"));
    EXPECT_EQ(idAt(project, 19), id) << "it is known by the name that it had";
}

TEST(KeptScan, whatTheUserDecidedOfATextStaysWhateverIsFoundAgain) {
    auto project = film();
    keepPrivacyScan(project, scan({finding("wrong", 2, 10), finding("right", 20, 30, below)}));
    decide(project, operations::RejectFindings{{idAt(project, 2).text().substr(0, 8)}});
    decide(project, operations::AcceptFindings{{idAt(project, 20).text()}});
    project.redactions.edit().back().keyframes = {{20, {0.05, 0.8, 0.5, 0.05}}}; // made wider by hand

    auto const kept = keepPrivacyScan(project, scan({finding("wrong", 1, 11), finding("wrong", 40, 50, below),
                                                     finding("right", 20, 30, below), finding("new", 55, 58)}));
    EXPECT_THAT(drawn(project), ElementsAre("1–11 rejected above", "20–30 accepted elsewhere", "40–50 rejected below",
                                            "55–58 hidden above"));
    EXPECT_EQ(kept.rejected, 2U);

    keepPrivacyScan(project, scan({finding("right", 18, 30, below)}));
    EXPECT_THAT(drawn(project), ElementsAre("1–11 rejected above", "18–20 hidden below", "20–30 accepted elsewhere",
                                            "40–50 rejected below"))
        << "what shows before is covered, what was rejected is remembered";
}

TEST(KeptScan, whatSomebodyUncoveredByTrimmingStaysUncovered) {
    auto project = film();
    keepPrivacyScan(project, scan({finding("key", 2, 10), finding("key", 20, 30, below)}));
    for (auto& track : project.redactions.edit()) {
        (track.start == 2 ? track.start : track.end) += track.start == 2 ? 2 : -5;
        track.isAutomatic = false;
    }
    keepPrivacyScan(project, scan({finding("key", 2, 3.5), finding("key", 3.6, 10), finding("key", 19, 33, below),
                                   finding("key", 40, 41)}));
    EXPECT_THAT(drawn(project), ElementsAre("4–10 accepted above", "19–20 hidden below", "20–25 accepted below",
                                            "30–33 hidden below", "40–41 hidden above"))
        << "what was not covered before is none of that";
}

TEST(KeptScan, whatAScanDidNotLookForStaysHidden) {
    auto project = film();
    auto mail = finding("mail", 2, 10), word = finding("fox", 20, 30, below);
    mail.kind = SensitiveKind::email;
    word.kind = SensitiveKind::custom;
    auto first = scan({mail, word});
    first.settings.customWords = {"fox"};
    keepPrivacyScan(project, first);
    auto phones = scan({});
    phones.settings.kinds = {SensitiveKind::phone};
    keepPrivacyScan(project, phones);
    EXPECT_THAT(drawn(project), ElementsAre("2–10 hidden above", "20–30 hidden below"));
    auto again = scan({word});
    again.recordings[0].outcome.findings[0].start = 19;
    keepPrivacyScan(project, again);
    EXPECT_THAT(drawn(project), ElementsAre("19–30 hidden below")) << "there is no mail, and the word is found again";
}

TEST(KeptScan, aTextThatIsRejectedAtOnePlaceOnlyIsHiddenAtTheOthers) {
    auto project = film();
    keepPrivacyScan(project, scan({finding("same", 2, 10), finding("same", 20, 30, below)}));
    decide(project, operations::RejectFindings{{idAt(project, 2).text()}});
    keepPrivacyScan(project, scan({finding("same", 2, 10), finding("same", 20, 30, below), finding("same", 40, 41)}));
    EXPECT_THAT(drawn(project), ElementsAre("2–10 rejected above", "20–30 hidden below", "40–41 hidden above"));
}

TEST(KeptScan, aScanThatGoesOnJoinsWhatItFindsToWhatWasFoundBefore) {
    auto project = film();
    keepPrivacyScan(project, scan({finding("long", 5, 20), finding("early", 1, 3, below)}, {{0, 20}}));
    EXPECT_THAT(unscannedRanges(project, project.redactionSettings), ElementsAre(TimeRange{20, 40}));
    keepPrivacyScan(project, scan({finding("long", 18, 35)}, {{18, 24}}));
    EXPECT_THAT(drawn(project), ElementsAre("1–3 hidden below", "5–35 hidden above"));
    auto const& track = project.redactions->back();
    EXPECT_TRUE(std::ranges::is_sorted(track.keyframes, {}, &RedactionKeyframe::t));
    for (double t = 5; t <= 35; t += 0.5) EXPECT_EQ(track.areaAt(t), above) << t;
    EXPECT_EQ(project.redactionScan->ranges, (std::vector<TimeRange>{{0, 42}}));

    keepPrivacyScan(project, scan({finding("early", 1, 2.5, below), finding("long", 10, 22)}, {{0, 2}, {10, 4}}));
    EXPECT_THAT(drawn(project), ElementsAre("1–3 hidden below", "5–35 hidden above"))
        << "what is found beyond what counts as looked at is there once";
    EXPECT_EQ(project.redactions->size(), 2U);

    auto other = project.redactionSettings;
    other.customWords = {"Tavaro"};
    EXPECT_THAT(unscannedRanges(project, other), ElementsAre(TimeRange{0, 60})) << "nobody looked for that";
    other = project.redactionSettings;
    other.prefersBlur = true;
    EXPECT_THAT(unscannedRanges(project, other), ElementsAre(TimeRange{42, 18}));
}

TEST(KeptScan, whatStandsStillBeforeAScanGoesOnIsCoveredWhereItIs) {
    auto project = film();
    constexpr NormalizedRect lower{0.1, 0.13, 0.3, 0.05};
    keepPrivacyScan(project, scan({finding("key", 0, 10)}, {{0, 10}}));
    keepPrivacyScan(project, scan({finding("key", 9.05, 20, lower)}, {{9, 51}}));
    ASSERT_EQ(project.redactions->size(), 1U);
    auto const& track = project.redactions->front();
    for (double const at : {0.0, 5.0, 9.04}) EXPECT_EQ(track.areaAt(at), above) << at;
    EXPECT_EQ(track.areaAt(9.05), lower);
    EXPECT_EQ(track.areaAt(15), lower);
}

TEST(KeptScan, whatWasTypedIntoHiddenTextLeavesTheLogAndNeverComesBackToTheDisk) {
    TemporaryFolder const folder;
    ProjectPackage const package(folder / "take.recproj");
    auto project = film();
    auto& log = project.metadata.edit();
    for (int i = 0; i < 40; ++i) log.keystrokes.push_back({.t = i * 1.0, .keys = {i % 2 ? "⇧" : "q", "Z"}});
    log.keystrokes.push_back({.t = 12.5, .keys = {"⌃", "V"}, .isShortcut = true});
    log.clicks.push_back({.t = 1, .application = "Mail (me@example.com)"});
    package.createDirectories();
    package.save(project);

    OpenProject open(package.url());
    auto mail = finding("me@example.com", 2, 3);
    auto typed = finding("sk-1", 10, 20), rejected = finding("sk-2", 30, 35, below);
    typed.typed = TimeRange{11, 3};
    open.edit("Reject", [&](DemoProject& edited) {
        keepPrivacyScan(edited, scan({rejected}));
        decide(edited, operations::RejectFindings{{"all"}});
        rejected.typed = TimeRange{30, 3};
        keepPrivacyScan(edited, scan({rejected, typed, mail}));
    });
    auto const& strokes = open.document().metadata->keystrokes;
    EXPECT_THAT(strokes[12].keys, ElementsAre("•", "•"));
    EXPECT_THAT(strokes[13].keys, ElementsAre("⇧", "•")) << "modifiers stay";
    EXPECT_EQ(strokes[13].t, 13);
    EXPECT_THAT(strokes[5].keys, ElementsAre("⇧", "Z"));
    EXPECT_THAT(strokes[31].keys, ElementsAre("⇧", "Z")) << "what was rejected is no secret";
    EXPECT_THAT(strokes.back().keys, ElementsAre("⌃", "V"));
    EXPECT_EQ(open.document().metadata->clicks[0].application, "•");

    open.save();
    auto const masks = [](DemoProject const& read) { return read.metadata->keystrokes[12].keys.back() == "•"; };
    EXPECT_TRUE(masks(package.load()));
    EXPECT_TRUE(masks(package.loadBackup())) << "nor does the backup tell it";
    open.undo();
    open.save();
    EXPECT_TRUE(package.load().redactions->empty());
    EXPECT_TRUE(masks(package.load())) << "undone, the letters stay away";
    EXPECT_TRUE(masks(package.loadBackup()));
}
