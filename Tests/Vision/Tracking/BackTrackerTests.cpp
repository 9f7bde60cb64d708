#include <TavaroVision/Tracking/Private/ChangedTiles.h>
#include <TavaroVision/Tracking/Private/ScreenHistory.h>
#include <TavaroVision/Tracking/Private/TrackedText.h>
#include <Tests/Vision/Drawing/DrawnScreen.h>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <utility>

namespace tavaro {

namespace {

constexpr int width = 640, height = 400, fps = 20;
constexpr char key[] = "ghp_hT7sQx9Lm2Vb4Zk8";

struct Place {
    int x = 40;
    int y = 0;
    bool isShown = true;
    std::string text = key;
    std::string above = {}; // another text
};

/// The key where `place` says at each time, as it is followed back from the last frame.
TrackedText trackedBack(double seconds, std::function<Place(double)> const& place) {
    ChangedTiles tiles(width, height);
    ScreenHistory history;
    Place last;
    for (int frame = 0; frame <= seconds * fps; ++frame) {
        auto const time = double(frame) / fps;
        DrawnScreen screen(width, height);
        screen.fill({0, 0, width, height}, {30, 32, 40});
        screen.write("nothing that anybody hides", 40, 20, {}, {220, 220, 220});
        last = place(time);
        screen.write(last.above, 40, 100, {}, {220, 220, 220});
        if (last.isShown) screen.write(last.text, last.x, last.y, {}, {220, 220, 220});
        auto const gray = screen.gray();
        GrayView const picture{gray.data(), width, height, width};
        tiles.compare(picture, time);
        history.add({time, std::make_shared<GrayPicture const>(picture), {}});
    }
    PixelBox const box{last.x, last.y, 250, 22};
    auto patch = std::make_shared<TextPatch const>(history.last().picture->view(), box, 10);
    return BackTracker(history, tiles).trackedFrom(std::move(patch), box.x, box.y);
}

}

TEST(BackTracker, whatStoodStillIsFollowedBackBeyondTheHistory) {
    auto const text = trackedBack(4, [](double at) -> Place {
        if (at < 1) return {.isShown = false};
        int const steps = std::max(0, static_cast<int>(std::lround((at - 3.5) * fps)));
        return {40 + 7 * steps, 200 - 9 * steps};
    });
    EXPECT_DOUBLE_EQ(text.path.front().time, 1);
    EXPECT_EQ(placeAt(text.path, 2).y, 200);
    EXPECT_EQ(placeAt(text.path, 4).y, 110);
    EXPECT_DOUBLE_EQ(text.since.front(), 1);
}

TEST(BackTracker, whatCameInOverAnEdgeWasNotWhereAnotherThatIsAlikeWasBefore) {
    auto const text = trackedBack(2, [](double at) -> Place {
        int const steps = static_cast<int>(std::lround((at - 1.5) * fps));
        return {.y = height - 16 * steps, .above = at < 1.6 ? "ghp_hT7sQx9Lm2Vb4Zk9" : ""};
    });
    EXPECT_GE(text.path.front().time, 1.5);
    EXPECT_GT(text.path.front().y, height - 40);
}

TEST(BackTracker, whatAnotherTextReplacedForAWhileWasStillBefore) {
    // Where it was it shows for half a second later on, again: the tiles there change more than once.
    auto const text = trackedBack(4, [](double at) -> Place {
        bool const isBack = at >= 3.3 && at < 3.65;
        return {.x = at < 2.95 || isBack ? 40 : 80, .y = 200, .isShown = at >= 0.5};
    });
    EXPECT_DOUBLE_EQ(text.path.front().time, 0.5);
}

TEST(BackTracker, someLettersOfAnotherTextAreNotItsPast) {
    auto const since = [](std::string const& before) {
        return trackedBack(1, [&](double at) -> Place { return {.y = 200, .text = at < 0.5 ? before : key}; })
            .path.front()
            .time;
    };
    EXPECT_DOUBLE_EQ(since("it was it 9Lm or not"), 0.5);
    EXPECT_DOUBLE_EQ(since("ghp_"), 0) << "so far it was typed";
    EXPECT_DOUBLE_EQ(since("from another 2Vb4Zk8"), 0) << "something covered its beginning";
}

TEST(BackTracker, aLineIsNotAsOldAsWhatItBeginsWith) {
    auto const text =
        trackedBack(1, [](double at) -> Place { return {.y = 200, .text = at < 0.5 ? "ghp_ and 9Lm other" : key}; });
    EXPECT_DOUBLE_EQ(text.since[1], 0);
    for (std::size_t cell = 7; cell < 19; ++cell) EXPECT_DOUBLE_EQ(text.since[cell], 0.5) << cell;
}

TEST(BackTracker, whatCameFromElsewhereIsNotThereBefore) {
    auto const text = trackedBack(3, [](double at) -> Place { return {.y = at < 2.5 ? 300 : 100}; });
    EXPECT_EQ(placeAt(text.path, 2.45).y, 300) << "until the frame before it jumps";
    EXPECT_EQ(placeAt(text.path, 2.5).y, 100);
    EXPECT_DOUBLE_EQ(text.path.front().time, 0);
}

TEST(BackTracker, whatMovedBeforeTheHistoryIsFollowedIntoItsBeginningOnly) {
    auto const text = trackedBack(3, [](double at) -> Place { return {.y = 300 - static_cast<int>(at * 60)}; });
    EXPECT_NEAR(text.path.front().time, 1.8, 0.051) << "a history is of 1.2 seconds";
}

}
