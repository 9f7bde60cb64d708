#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Composition/Private/FrameComposer.h>
#include <TavaroRender/Composition/Private/SpanIndex.h>

#include <gtest/gtest.h>

#include <random>

namespace tavaro {

namespace {

DemoProject take(std::vector<RedactionTrack> tracks) {
    DemoProject project;
    project.sourceSize = {1920, 1080};
    project.timeline.clips = {{.asset = "screen.mp4", .sourceStart = 5, .duration = 5, .speed = 2},
                              {.asset = "other.mp4", .start = 5, .duration = 5}};
    project.redactions = std::move(tracks);
    return project;
}

TEST(Redactions, hideTheirRegionAtTheRecordingsOwnTimesWithItsMovement) {
    auto const project = take({{.asset = "screen.mp4",
                                .start = 6,
                                .end = 10,
                                .keyframes = {{6, {0.1, 0.1, 0.2, 0.1}}, {10, {0.5, 0.1, 0.2, 0.1}}},
                                .style = RedactionStyle::blur},
                               {.start = 6, .end = 10, .keyframes = {{6, {0, 0, 1, 1}}}, .isEnabled = false}});
    FrameComposer const composer(project, {1920, 1080});
    EXPECT_TRUE(composer.state(0.4).redactions.empty());
    auto const halfWay = composer.state(1.5).redactions; // at 8 s of the recording
    ASSERT_EQ(halfWay.size(), 1u);
    EXPECT_EQ(halfWay[0].style, RedactionStyle::blur);
    EXPECT_NEAR(halfWay[0].rect.maxX(), 0.5, 1e-9);
    EXPECT_LE(halfWay[0].rect.x, 0.3);
    EXPECT_GT(halfWay[0].rect.x, 0.28) << "only what the frame before may show is hidden as well";
    EXPECT_TRUE(composer.state(2.6).redactions.empty());
    EXPECT_TRUE(composer.state(7).redactions.empty()) << "another recording, at the same time of its own";
}

TEST(Redactions, whereItWasForAMomentIsHiddenWhileThatFrameMayBeShown) {
    auto const project = take({{.start = 6,
                                .end = 8,
                                .keyframes = {{6, {0.1, 0.5, 0.1, 0.1}},
                                              {7, {0.1, 0.5, 0.1, 0.1}},
                                              {7.02, {0.1, 0.1, 0.1, 0.1}},
                                              {7.04, {0.1, 0.5, 0.1, 0.1}}}}});
    FrameComposer const composer(project, {1920, 1080});
    auto const after = composer.state(1.03).redactions; // at 7.06 s of the recording
    ASSERT_EQ(after.size(), 1u);
    EXPECT_NEAR(after[0].rect.y, 0.1, 1e-9);
    EXPECT_NEAR(composer.state(1.1).redactions[0].rect.y, 0.5, 1e-9);
}

TEST(Redactions, aRegionWithoutAnAssetHidesInAll) {
    auto const project = take({{.start = 0, .end = 20, .keyframes = {{0, {0.4, 0.4, 0.1, 0.1}}}}});
    FrameComposer const composer(project, {1920, 1080});
    EXPECT_EQ(composer.state(1).redactions.size(), 1u);
    EXPECT_EQ(composer.state(7).redactions.size(), 1u);
}

TEST(SpanIndex, findsWhatAWalkOverAllFinds) {
    std::mt19937 random(7);
    auto const upTo = [&](double limit) { return std::uniform_real_distribution(0.0, limit)(random); };
    for (int round = 0; round < 30; ++round) {
        std::vector<TimeRange> ranges(random() % 40);
        for (auto& range : ranges) range = {upTo(10), random() % 4 ? upTo(2) : upTo(10) - 1};
        SpanIndex const index(ranges);
        for (double t = -1; t < 12; t += 0.25) {
            std::vector<std::size_t> expected;
            for (std::size_t i = 0; i < ranges.size(); ++i) {
                if (ranges[i].contains(t)) expected.push_back(i);
            }
            EXPECT_EQ(index.holding(t), expected);
        }
    }
}

}

}
