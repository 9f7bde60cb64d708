#include <TavaroCore/Timeline/Timeline.h>

#include <gtest/gtest.h>

#include <random>
#include <string>

#include <fmt/format.h>

using namespace tavaro;

namespace {

/// Clips of an asset of which each shows source [from, to), end to end.
Timeline showing(std::vector<std::pair<double, double>> const& parts) {
    Timeline timeline;
    double start = 0;
    for (auto const& [from, to] : parts) {
        timeline.clips.push_back({.asset = "a.mp4", .start = start, .sourceStart = from, .duration = to - from});
        start += to - from;
    }
    return timeline;
}

/// "0-4:10 4-6:20×2": each clip's output, the source it begins with, and its speed.
std::string drawn(Timeline const& timeline) {
    std::string text;
    for (auto const& clip : timeline.clips) {
        text += fmt::format("{}{:g}-{:g}:{:g}", text.empty() ? "" : " ", clip.start, clip.end(), clip.sourceStart);
        if (clip.speed != 1) text += fmt::format("×{:g}", clip.speed);
    }
    return text;
}

}

TEST(TimelineSplit, theSecondPartContinuesTheSourceUnderANewId) {
    auto timeline = showing({{10, 14}, {20, 22}});
    timeline.clips[0].speed = 3;
    timeline.clips[0].isMuted = true;
    auto const id = timeline.clips[0].id;
    EXPECT_TRUE(timeline.split(1.5));
    EXPECT_EQ(drawn(timeline), "0-1.5:10×3 1.5-4:14.5×3 4-6:20");
    EXPECT_EQ(timeline.clips[0].id, id);
    EXPECT_NE(timeline.clips[1].id, id);
    EXPECT_TRUE(timeline.clips[1].isMuted);
}

TEST(TimelineSplit, nothingIsSplitAtAnEdgeOrOutside) {
    auto const timeline = showing({{0, 4}, {6, 8}});
    for (double const at : {0.0005, 3.9995, 0.0, 4.0, 4.0005, 6.0, 9.0, -1.0, std::nan("")}) {
        auto split = timeline;
        EXPECT_FALSE(split.split(at)) << at;
        EXPECT_EQ(split, timeline) << at;
    }
}

TEST(TimelineRemove, theCutIsGoneAndTheRestMovesUp) {
    auto const cut = [](double start, double duration) {
        auto timeline = showing({{0, 4}, {6, 8}, {8, 10}});
        timeline.remove(start, duration);
        return drawn(timeline);
    };
    EXPECT_EQ(cut(1, 2), "0-1:0 1-2:3 2-4:6 4-6:8");
    EXPECT_EQ(cut(3, 4), "0-3:0 3-4:9");
    EXPECT_EQ(cut(4, 2), "0-4:0 4-6:8");
    EXPECT_EQ(cut(-1, 3), "0-2:2 2-4:6 4-6:8");
    EXPECT_EQ(cut(7, 100), "0-4:0 4-6:6 6-7:8");
    EXPECT_EQ(cut(0, 8), "");
    EXPECT_EQ(cut(2, 0), "0-4:0 4-6:6 6-8:8");
    EXPECT_EQ(cut(4.0005, 1.9999), "0-4:0 4-6:8") << "ends near an edge mean the edge";
    EXPECT_EQ(cut(2, 0.0005), "0-2:0 2-3.9995:2.0005 3.9995-5.9995:6 5.9995-7.9995:8");
}

TEST(TimelineCloseGaps, clipsAreLaidEndToEndInTheOrderOfTheirStarts) {
    Timeline timeline;
    timeline.clips = {{.start = 9, .sourceStart = 1, .duration = 2}, {.start = 3, .sourceStart = 2, .duration = 1}};
    timeline.closeGaps();
    EXPECT_EQ(drawn(timeline), "0-1:2 1-3:1");
}

TEST(TimelineTrim, onlyTheRangeIsLeft) {
    auto const trimmed = [](double start, double duration) {
        auto timeline = showing({{0, 4}, {6, 8}});
        timeline.trim(start, duration);
        return drawn(timeline);
    };
    EXPECT_EQ(trimmed(1, 4), "0-3:1 3-4:6");
    EXPECT_EQ(trimmed(0, 3), "0-3:0");
    EXPECT_EQ(trimmed(5, 50), "0-1:7");
    EXPECT_EQ(trimmed(0, 6), "0-4:0 4-6:6");
}

TEST(TimelineRemove, randomCutsTakeExactlyTheirLengthAndKeepThePictureInOrder) {
    for (unsigned seed = 1; seed <= 500; ++seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> unit(0, 1);
        std::vector<std::pair<double, double>> parts(1 + random() % 6);
        double source = 0;
        for (auto& [from, to] : parts) {
            from = source + unit(random);
            to = source = from + 0.5 + 3 * unit(random);
        }
        auto timeline = showing(parts);
        for (auto& clip : timeline.clips) clip.speed = random() % 3 ? 1 : 0.5 + unit(random);
        timeline.closeGaps();
        auto const before = timeline;
        double const start = timeline.nearestEdge(before.duration() * unit(random));
        double const end = timeline.nearestEdge(start + (before.duration() - start) * unit(random));
        timeline.remove(start, end - start);
        EXPECT_NEAR(timeline.duration(), before.duration() - (end - start), 1e-9) << "seed " << seed;
        for (double t = 0.01; t < timeline.duration(); t += 0.09) {
            auto const shown = timeline.sourceTime(t);
            auto const wanted = before.sourceTime(t < start ? t : t + end - start);
            ASSERT_TRUE(shown && wanted) << "seed " << seed << " at " << t;
            EXPECT_NEAR(*shown, *wanted, 1e-6) << "seed " << seed << " at " << t;
        }
    }
}
