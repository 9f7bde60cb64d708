#include <Tavaro/Studio/Timeline/TileStore.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

using namespace tavaro;

namespace {

/// Draws tiles of 10,000 bytes, one by one as they are let through.
class Painter {
public:
    std::optional<QImage> draw(int key) {
        std::unique_lock lock(mutex_);
        begun_.push_back(key);
        changed_.notify_all();
        changed_.wait(lock, [&] { return isOpen_; });
        if (key < 0) return QImage();
        QImage picture(50, 50, QImage::Format_ARGB32_Premultiplied);
        picture.fill(key);
        return picture;
    }
    void waitForBegun(std::size_t count) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return begun_.size() >= count; });
    }
    void open() {
        std::lock_guard const lock(mutex_);
        isOpen_ = true;
        changed_.notify_all();
    }
    std::vector<int> begun() {
        std::lock_guard const lock(mutex_);
        return begun_;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<int> begun_;
    bool isOpen_ = false;
};

/// Paints that tile, and `beside`, until it is there.
QImage waited(TileStore<int>& tiles, int key, std::vector<int> const& beside = {}) {
    for (;;) {
        for (int const other : beside) tiles.picture(other);
        auto picture = tiles.picture(key);
        tiles.paintEnds();
        if (!picture.isNull()) return picture;
        std::this_thread::yield();
    }
}

}

TEST(TileStore, whatScrolledAwayIsNotDrawn) {
    Painter painter;
    TileStore<int> tiles(
        "com.tavaro.test.tiles", 1 << 20, [&](int key) { return painter.draw(key); }, [] {});
    for (int const key : {1, 2, 3, 4}) EXPECT_TRUE(tiles.picture(key).isNull());
    tiles.paintEnds();
    painter.waitForBegun(1); // at the first, which is slow
    for (int const key : {8, 9}) tiles.picture(key);
    tiles.paintEnds();
    painter.open();
    painter.waitForBegun(3);
    EXPECT_THAT(painter.begun(), testing::ElementsAre(1, 8, 9));
    EXPECT_EQ(waited(tiles, 8).pixel(0, 0), QRgb(8));
    EXPECT_EQ(tiles.nearestBefore(7)->first, 1) << "what was drawn meanwhile is kept";
    EXPECT_FALSE(tiles.nearestBefore(0));
}

TEST(TileStore, picturesInUseStayAndAllTogetherAreBounded) {
    Painter painter;
    painter.open();
    constexpr std::size_t most = 20 * 10'000;
    TileStore<int> tiles(
        "com.tavaro.test.tiles", most, [&](int key) { return painter.draw(key); }, [] {});
    auto const first = waited(tiles, 0);
    for (int key = 1; key < 200; ++key) {
        waited(tiles, key, {0});
        EXPECT_FALSE(tiles.picture(0).isNull()) << key << ": it is asked for in each paint";
        EXPECT_LE(tiles.bytes(), most + 3 * 10'000);
    }
}

TEST(TileStore, whatCannotBeDrawnIsTriedOnceUntilItIsForgotten) {
    Painter painter;
    painter.open();
    std::atomic<int> told = 0;
    TileStore<int> tiles(
        "com.tavaro.test.tiles", 1 << 20, [&](int key) { return painter.draw(key); }, [&] { ++told; });
    auto const timesTried = [&] { return std::ranges::count(painter.begun(), -5); };
    auto const ask = [&] {
        tiles.picture(-5);
        tiles.paintEnds();
    };
    while (timesTried() < 1) ask();
    waited(tiles, 1); // behind it in the queue
    for (int i = 0; i < 100; ++i) ask();
    waited(tiles, 2);
    EXPECT_EQ(timesTried(), 1);
    tiles.forgetFailures();
    while (timesTried() < 2) ask();
    EXPECT_GT(told.load(), 0);
}
