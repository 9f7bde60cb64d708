#include <TavaroVision/Tracking/Private/ChangedTiles.h>
#include <TavaroVision/Tracking/Private/TrackedText.h>
#include <Tests/Vision/Drawing/DrawnScreen.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tavaro {

namespace {

constexpr int width = 480, height = 400;

struct Line {
    std::string text;
    int y = 0;
};

/// Where a text that is at `y` is on the next picture, which has these lines, after it went up by two pixels; the
/// screen moved by these shifts before.
TrackedText followed(std::string const& sought, int y, std::vector<Line> const& lines,
                     std::vector<Shift> const& shifts) {
    auto const shot = [](std::vector<Line> const& shown) {
        DrawnScreen screen(width, height);
        screen.fill({0, 0, width, height}, {30, 32, 40});
        for (auto const& line : shown) screen.write(line.text, 40, line.y, {}, {220, 220, 220});
        return screen.gray();
    };
    auto const before = shot({{sought, 100}}), now = shot(lines);
    GrayView const picture{now.data(), width, height, width};
    ChangedTiles tiles(width, height);
    tiles.compare({before.data(), width, height, width}, 0);
    tiles.compare(picture, 0.03);
    TrackedText text{.x = 40, .y = y};
    text.patch = std::make_shared<TextPatch const>(GrayView{before.data(), width, height, width},
                                                   PixelBox{40, 100, 160, 22}, 10);
    text.since.assign(static_cast<std::size_t>(text.patch->cells()), 0.0);
    text.velocity = {0, -2};
    text.isPrivate = true;
    TrackedText* const texts[] = {&text};
    follow(texts, {picture, tiles, 0, 0.03}, shifts);
    return text;
}

}

TEST(Follow, whatIsAlikeFarAwayIsNoPlaceForATextThatIsFoundNearby) {
    auto const text =
        followed("user18@acme.io", 100, {{"user19@acme.io", 98}, {"user18@acme.io", 330}}, {{0, 230}, {0, -2}});
    EXPECT_EQ(text.y, 98);
    EXPECT_TRUE(text.presence.isMost());
    auto const gone = followed("user18@acme.io", 100, {{"nothing", 98}, {"user18@acme.io", 330}}, {{0, 230}, {0, -2}});
    EXPECT_EQ(gone.y, 330) << "it may jump";
}

TEST(Follow, aTextThatLeavesThePictureIsNotTakenForOneThatComesIn) {
    std::vector<Line> const lines{{"user18@acme.io", -14}, {"user18@acme.io", 300}};
    auto const leaving = followed("user18@acme.io", -12, lines, {{0, -2}, {0, 312}});
    EXPECT_LE(leaving.y, -12);
}

}
