#include <TavaroCore/Timeline/Private/TimelineMath.h>

#include <gtest/gtest.h>

#include <random>

using namespace tavaro;
using TimelineMath::MediaSpan;

namespace {

TimeRange span(double from, double to) { return {from, to - from}; }

/// Where [from, to) is after the cut, as {from, to}; {0, 0} when it is gone.
std::pair<double, double> mapped(TimeRange item, TimeRange cut) {
    auto const left = TimelineMath::map(item, cut);
    return left ? std::pair{left->start, left->end()} : std::pair{0.0, 0.0};
}

}

TEST(TimelineMath, anItemLosesWhatLiesInTheCut) {
    using Times = std::pair<double, double>;
    EXPECT_EQ(mapped(span(1, 4), span(2, 3)), (Times{1, 3})) << "inside";
    EXPECT_EQ(mapped(span(1, 4), span(0, 2)), (Times{0, 2})) << "its beginning";
    EXPECT_EQ(mapped(span(1, 4), span(3, 9)), (Times{1, 3})) << "its end";
    EXPECT_EQ(mapped(span(1, 4), span(0, 10)), (Times{0, 0})) << "all of it";
    EXPECT_EQ(mapped(span(1, 4), span(4, 5)), (Times{1, 4})) << "ends where the cut begins";
    EXPECT_EQ(mapped(span(3, 4), span(1, 3)), (Times{1, 2})) << "begins where the cut ends";
    EXPECT_NEAR(mapped(span(1, 2), span(1.9995, 4)).second, 1.9995, 1e-12);
    EXPECT_EQ(mapped(span(1, 2), span(1.0009, 4)), (Times{0, 0})) << "0.0009 s are too little to keep";
    EXPECT_EQ(mapped(span(1, 2), span(0, 1.9991)), (Times{0, 0}));
}

TEST(TimelineMath, aPointInsideTheCutMovesToItsStart) {
    EXPECT_EQ(TimelineMath::map(2.5, span(2, 3)), 2);
    EXPECT_EQ(TimelineMath::map(2, span(2, 3)), 2);
    EXPECT_EQ(TimelineMath::map(3, span(2, 3)), 2);
    EXPECT_EQ(TimelineMath::map(1.5, span(2, 3)), 1.5);
    EXPECT_EQ(TimelineMath::map(4, span(2, 3)), 3);
}

TEST(TimelineMath, mediaIsCutInTwoAndTheTailSkipsTheSource) {
    MediaSpan const item{10, 100, 8};
    auto pieces = TimelineMath::split(item, 2, span(12, 15));
    EXPECT_EQ(pieces.head, (MediaSpan{10, 100, 2}));
    EXPECT_EQ(pieces.tail, (MediaSpan{12, 110, 3}));
    pieces = TimelineMath::split(item, 1, span(8, 15));
    EXPECT_FALSE(pieces.head);
    EXPECT_EQ(pieces.tail, (MediaSpan{8, 105, 3}));
    pieces = TimelineMath::split(item, 1, span(10.0009, 17.9991));
    EXPECT_FALSE(pieces.head || pieces.tail) << "pieces under 0.001 s are dropped";
    EXPECT_EQ(TimelineMath::split(item, 1, span(18, 20)).head, item);
    EXPECT_EQ(TimelineMath::split(item, 1, span(4, 10)).head, (MediaSpan{4, 100, 8}));
}

TEST(TimelineMath, whatIsLeftAndWhatIsCutMakeTheWholeItem) {
    for (unsigned seed = 1; seed <= 2000; ++seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> time(0, 10);
        TimeRange const item{time(random), time(random)}, cut{time(random), time(random)};
        double const inside = std::max(std::min(item.end(), cut.end()) - std::max(item.start, cut.start), 0.0);
        auto const left = TimelineMath::map(item, cut);
        double const kept = item.duration - inside;
        if (left) {
            EXPECT_NEAR(left->duration, kept, 1e-9) << "seed " << seed;
            EXPECT_NEAR(left->start, TimelineMath::map(item.start, cut), 1e-9) << "seed " << seed;
        } else {
            EXPECT_LE(kept, TimelineMath::shortestPiece + 1e-9) << "seed " << seed;
        }
        auto const pieces = TimelineMath::split({item.start, 0, item.duration}, 1, cut);
        double played = 0;
        for (auto const& piece : {pieces.head, pieces.tail}) {
            if (!piece) continue;
            played += piece->duration;
            EXPECT_GE(piece->sourceStart, 0) << "seed " << seed;
            EXPECT_LE(piece->sourceStart + piece->duration, item.duration + 1e-9) << "seed " << seed;
        }
        EXPECT_NEAR(played, kept, 2 * TimelineMath::shortestPiece) << "seed " << seed;
    }
}
