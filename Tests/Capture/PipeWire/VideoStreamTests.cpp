#include <TavaroCapture/PipeWire/Private/VideoStream.h>

#include "../TestScreenNode.h"
#include "../TestSession.h"

#include <TavaroPlatform/Clocks/MediaClock.h>

#include <gmock/gmock.h>
#include <optional>
#include <vector>

namespace tavaro::pipewire {

namespace {

using namespace std::chrono_literals;

class VideoStreamTest : public testing::Test {
protected:
    void SetUp() override {
        if (!TestSession::isInstalled()) GTEST_SKIP() << "pipewire or wireplumber is not installed";
        session.emplace();
        screen.emplace();
        open();
    }

    void open() {
        connection.emplace();
        stream.emplace(*connection,
                       VideoStream::Options{.node = screen->id(), .layouts = {DeviceLayout::bgrx, DeviceLayout::rgbx}},
                       VideoStream::Handlers{.format = [this](VideoFormat const& format) { formats.push_back(format); },
                                             .picture = [this](VideoPicture const& picture) { note(picture); },
                                             .pointer = [this](std::optional<PixelPoint> point) { pointer = point; }});
    }
    void note(VideoPicture const& picture) {
        auto const middle = static_cast<std::size_t>(picture.format.height / 2 * picture.format.stride);
        if (picture.isDamaged || middle >= picture.bytes.size()) return;
        grey = picture.bytes[middle];
        capturedAt = picture.capturedAt;
        arrivedAt = mediaClockNow();
        bytes = picture.bytes.size();
    }
    template<class Condition> bool comes(Condition isThere, std::chrono::milliseconds atMost = 5s) {
        auto const end = Connection::Clock::now() + atMost;
        while (!isThere() && Connection::Clock::now() < end) connection->run(5ms);
        return isThere();
    }
    bool shows(std::uint8_t wanted) {
        double const moment = screen->show(wanted);
        bool isShown = comes([&] { return grey == wanted; }, 1s);
        for (int i = 0; i < 4 && !isShown; ++i) {
            stream->restart(); // its picture may have come before anybody could take it
            isShown = comes([&] { return grey == wanted; }, 1s);
        }
        EXPECT_NEAR(capturedAt, moment, 1e-6);
        return isShown;
    }

    std::optional<TestSession> session;
    std::optional<TestScreenNode> screen;
    std::optional<Connection> connection;
    std::optional<VideoStream> stream;
    std::vector<VideoFormat> formats;
    std::optional<PixelPoint> pointer;
    std::optional<std::uint8_t> grey;
    double capturedAt = 0;
    double arrivedAt = 0;
    std::size_t bytes = 0;
};

TEST_F(VideoStreamTest, picturesComeWholeWithTheirOwnMomentAlsoWhenTheScreenChangesItsSize) {
    ASSERT_TRUE(shows(40)) << stream->state();
    ASSERT_EQ(formats.size(), 1u);
    EXPECT_EQ(formats[0].pictures.width, 320);
    EXPECT_EQ(formats[0].pictures.height, 200);
    EXPECT_EQ(bytes, 320u * 200 * 4);
    EXPECT_FALSE(pointer);

    screen->resize(500, 100);
    ASSERT_TRUE(comes([&] { return formats.size() == 2; })) << stream->state();
    ASSERT_TRUE(shows(90)) << stream->state();
    EXPECT_EQ(formats[1].pictures.width, 500);
    EXPECT_EQ(bytes, 500u * 100 * 4);
}

TEST_F(VideoStreamTest, aPointerThatMovesOverAStillScreenComesWithoutAPicture) {
    ASSERT_TRUE(shows(40));
    grey.reset();
    for (auto const point : {PixelPoint{3, 4}, PixelPoint{310, 199}}) {
        screen->movePointer(point);
        EXPECT_TRUE(comes([&] { return pointer == point; }));
    }
    EXPECT_EQ(grey, std::nullopt);
    EXPECT_TRUE(shows(41));
    EXPECT_EQ(pointer, (PixelPoint{310, 199}));
    screen->hidePointer(); // it has left the window that is shared
    EXPECT_TRUE(comes([&] { return !pointer; }));
    screen->movePointer({5, 6});
    EXPECT_TRUE(comes([&] { return pointer == PixelPoint{5, 6}; }));
}

TEST_F(VideoStreamTest, picturesOfAGraphicsCardsMemoryAreReadWhereTheyLie) {
    stream.reset();
    screen.emplace(320, 200, 0, TestScreenNode::Memory::graphics);
    open();
    for (std::uint8_t const wanted : {40, 90, 41}) ASSERT_TRUE(shows(wanted)) << stream->state();
    EXPECT_EQ(bytes, 320u * 200 * 4);
    screen->resize(200, 100);
    ASSERT_TRUE(comes([&] { return formats.back().pictures.width == 200; })) << stream->state();
    ASSERT_TRUE(shows(70)) << stream->state();
}

TEST_F(VideoStreamTest, memoryThatCannotBeReadIsRefusedWithItsFormat) {
    stream.reset();
    screen.emplace(320, 200, 0, TestScreenNode::Memory::unreadable);
    screen->show(40);
    open();
    ASSERT_TRUE(comes([&] { return stream->state().find("modifier") != std::string::npos; })) << stream->state();
    stream->restart(); // asks for others
    EXPECT_TRUE(comes([&] { return !stream->isLive(); })) << stream->state();
    EXPECT_THAT(stream->state(), testing::ContainsRegex("format BGRx, modifier 0x0.*: permission denied"));
    EXPECT_EQ(grey, std::nullopt);

    stream.reset();
    screen.emplace(320, 200, 0, TestScreenNode::Memory::both);
    open();
    EXPECT_TRUE(shows(40)) << stream->state();
}

TEST_F(VideoStreamTest, theFirstPictureOfAStillScreenIsAskedForAgainWhenItGotLost) {
    stream.reset();
    screen.emplace(320, 200, 1);
    screen->show(70);
    open();
    EXPECT_FALSE(comes([&] { return grey == 70; }, 300ms));
    for (int i = 0; i < 3 && grey != 70; ++i) {
        stream->restart();
        comes([&] { return grey == 70; }, 300ms);
    }
    EXPECT_EQ(grey, 70);
    EXPECT_TRUE(stream->isLive());
}

TEST_F(VideoStreamTest, aStillScreenIsNotLostAndOneWhoseProgramIsKilledIsWithinTwoSeconds) {
    ASSERT_TRUE(shows(40));
    comes([] { return false; }, 1500ms);
    EXPECT_TRUE(stream->isLive());
    screen.reset();
    double const gone = mediaClockNow();
    EXPECT_TRUE(comes([&] { return !stream->isLive(); })) << stream->state();
    EXPECT_LT(mediaClockNow() - gone, 2);
}

TEST_F(VideoStreamTest, aStreamThatPausesByItselfIsLostAfterASecond) {
    ASSERT_TRUE(shows(40));
    screen->pause();
    double const paused = mediaClockNow();
    EXPECT_TRUE(comes([&] { return !stream->isLive(); })) << stream->state();
    EXPECT_GT(mediaClockNow() - paused, 0.9);
    EXPECT_LT(mediaClockNow() - paused, 2);
}

TEST_F(VideoStreamTest, itEndsWithTheServer) {
    ASSERT_TRUE(shows(40));
    session->killServer();
    EXPECT_TRUE(comes([&] { return !stream->isLive(); }));
    EXPECT_FALSE(connection->isAlive());
    EXPECT_FALSE(Connection().isAlive());
}

TEST_F(VideoStreamTest, nodesAreListedAsTheyComeAndGo) {
    auto const names = [&] {
        std::vector<std::string> result;
        for (auto const& node : connection->nodes())
            if (node.mediaClass == "Video/Source") result.push_back(node.name);
        return result;
    };
    EXPECT_TRUE(connection->settle(2s));
    EXPECT_THAT(names(), testing::ElementsAre("test-screen"));
    EXPECT_NE(connection->cookie(), 0u);
    screen.reset();
    EXPECT_TRUE(comes([&] { return names().empty(); }));
}

}

}
