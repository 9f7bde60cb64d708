#include <TavaroVision/Scanning/PrivacyScan.h>
#include <TavaroVision/Scanning/Private/FindingJoins.h>

#include <gtest/gtest.h>

namespace tavaro {

namespace {

/// From its first place on to the end; places are tops of boxes a tenth of the picture high.
ScreenFinding finding(double start, double end, std::vector<std::pair<double, double>> const& tops,
                      double width = 0.2) {
    ScreenFinding made{.textHash = "same", .start = start, .end = end};
    for (auto const& [t, top] : tops) made.keyframes.push_back({t, {0.1, top, width, 0.1}});
    return made;
}

double topAt(ScreenFinding const& finding, double seconds) {
    RedactionTrack track;
    track.keyframes = finding.keyframes;
    return track.areaAt(seconds).y;
}

}

TEST(FindingJoins, whatGoesOnElsewhereStaysUntilItDoes) {
    auto const joined = joinedFindings({finding(0, 1, {{0, 0.50}}), finding(1, 2, {{1, 0.53}})});
    ASSERT_EQ(joined.size(), 1U);
    EXPECT_DOUBLE_EQ(topAt(joined[0], 0.99), 0.5);
    EXPECT_DOUBLE_EQ(topAt(joined[0], 1), 0.53);
}

TEST(FindingJoins, whatIsNotSeenForAMomentIsCoveredOnItsWay) {
    auto const joined = joinedFindings({finding(0, 1, {{0, 0.5}}), finding(1.2, 2, {{1.2, 0.6}})});
    ASSERT_EQ(joined.size(), 1U);
    EXPECT_NEAR(topAt(joined[0], 1.1), 0.55, 1e-9);
    EXPECT_EQ(joinedFindings({finding(0, 1, {{0, 0.5}}), finding(1.2, 2, {{1.2, 0.8}})}).size(), 2U) << "far away";
    EXPECT_EQ(joinedFindings({finding(0, 1, {{0, 0.5}}), finding(3, 4, {{3, 0.5}})}).size(), 2U) << "long after";
}

TEST(FindingJoins, whatIsReadDifferentlyIsCoveredInBetween) {
    auto other = finding(1.3, 2, {{1.3, 0.56}});
    other.textHash = "misread";
    auto const bridged = joinedFindings({finding(0, 1, {{0, 0.5}}), other});
    ASSERT_EQ(bridged.size(), 2U) << "it may be another text";
    EXPECT_DOUBLE_EQ(bridged[0].end, 1.3);
    EXPECT_NEAR(topAt(bridged[0], 1.15), 0.53, 0.002);
    EXPECT_DOUBLE_EQ(topAt(bridged[0], 0.9), 0.5);
    other.keyframes[0].rect.y = 0.9;
    EXPECT_DOUBLE_EQ(joinedFindings({finding(0, 1, {{0, 0.5}}), other})[0].end, 1) << "it is elsewhere";
}

TEST(FindingJoins, theSameTextAtTwoPlacesIsTwo) {
    auto const joined = joinedFindings({finding(0, 2, {{0, 0.5}}), finding(1, 3, {{1, 0.6}})});
    ASSERT_EQ(joined.size(), 2U);
    EXPECT_DOUBLE_EQ(topAt(joined[0], 1.5), 0.5);
}

TEST(FindingJoins, whatAnotherHoldsUntilItsEndIsAPartOfIt) {
    auto const typed = withoutParts({finding(0, 2, {{0, 0.5}}, 0.1), finding(1, 2, {{1, 0.5}}, 0.3)});
    ASSERT_EQ(typed.size(), 1U);
    EXPECT_DOUBLE_EQ(typed[0].start, 0);
    EXPECT_DOUBLE_EQ(typed[0].keyframes.back().rect.width, 0.3);
    auto const parted = withoutParts({finding(0, 2, {{0, 0.5}}, 0.1), finding(1, 2, {{1, 0.5}, {2, 0.9}}, 0.3)});
    EXPECT_EQ(parted.size(), 2U) << "it goes away alone";
    auto const longer = withoutParts({finding(0, 3, {{0, 0.5}}, 0.1), finding(1, 2, {{1, 0.5}}, 0.3)});
    EXPECT_EQ(longer.size(), 2U) << "it is seen longer";
}

}
