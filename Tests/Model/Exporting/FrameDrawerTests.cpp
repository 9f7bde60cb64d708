#include "../../Render/Export/TestTake.h"
#include "../Answered.h"

#include <Tavaro/Model/Exporting/FilmFrame.h>
#include <Tavaro/Model/Exporting/FrameDrawer.h>

#include <TavaroMedia/Frames/PNG.h>
#include <TavaroRender/Export/ExportError.h>

#include <fstream>
#include <gtest/gtest.h>

using namespace tavaro;

namespace {

class FrameDrawerTest : public testing::Test {
protected:
    FrameRequest request(double at, std::int64_t longestSide) const {
        return {.package = take.package, .project = take.project, .at = at, .longestSide = longestSide};
    }
    Outcome<DrawnFrame> drawn(FrameRequest const& wanted) {
        FrameDrawer::Interest interest;
        return answered<DrawnFrame>(queue, [&](auto answer) { interest = drawer.draw(wanted, answer); });
    }
    Image pictureOf(DrawnFrame const& frame) const {
        std::ofstream(take.output("frame.png"), std::ios::binary) << frame.png;
        return readPNG(take.output("frame.png"));
    }
    /// What the film shows there, from a painter of its own.
    Image expected(DemoProject const& project, double at, Size2 size) const {
        auto painter = framePainter(project, take.package, size);
        return filmFrame(painter, at);
    }

    TestTake const take{"frame-drawer", 60};
    MainQueue queue;
    FrameDrawer drawer{queue};
};

}

TEST_F(FrameDrawerTest, drawsWhatTheFilmShowsAtEverySizeAndAfterEveryEdit) {
    auto edited = take.project;
    edited.background.content = BackgroundStyle::Solid{};
    auto other = request(1.5, 320);
    other.project = edited;
    for (auto const& wanted : {request(0.5, 640), request(1.5, 640), request(1.5, 320), other, request(0.1, 1280)}) {
        auto const frame = drawn(wanted).value();
        auto const size = wanted.longestSide < 640 ? Size2{320, 180} : Size2{640, 360};
        EXPECT_EQ((Size2{frame.width, frame.height}), size);
        EXPECT_FALSE(frame.isReduced);
        EXPECT_TRUE(samePixels(pictureOf(frame).view(), expected(wanted.project, wanted.at, size).view())) << wanted.at;
    }
}

TEST_F(FrameDrawerTest, aFrameOfTooManyBytesIsDrawnSmallerAndSaysSo) {
    auto wanted = request(1, 640);
    auto const whole = drawn(wanted).value();
    wanted.mostBytes = whole.png.size() / 3;
    auto const frame = drawn(wanted).value();
    EXPECT_TRUE(frame.isReduced);
    EXPECT_LE(frame.png.size(), wanted.mostBytes);
    EXPECT_LT(frame.width, whole.width);
    EXPECT_EQ(pictureOf(frame).width(), frame.width);
    wanted.mostBytes = 1; // cannot be
    EXPECT_EQ(drawn(wanted).value().width, 64);
}

TEST_F(FrameDrawerTest, whatCannotBeDrawnFailsAndTheNextFrameIsDrawn) {
    EXPECT_THROW(drawn(request(2.1, 320)).value(), NoSuchFrame);
    EXPECT_THROW(drawn(request(-1, 320)).value(), NoSuchFrame);
    EXPECT_NO_THROW(drawn(request(2, 320)).value()); // the end still shows the last one
    auto without = request(1, 320);
    without.project.timeline.clips[0].asset = "gone.mp4";
    try {
        drawn(without).value();
        ADD_FAILURE() << "drawn";
    } catch (ExportError const& error) {
        EXPECT_EQ(error.kind(), ExportError::Kind::missingAsset);
    }
    EXPECT_NO_THROW(drawn(request(1, 320)).value());
}

TEST_F(FrameDrawerTest, whoGivesUpAFrameHearsNothingOfIt) {
    bool isAnswered = false;
    drawer.draw(request(0, 320), [&](auto const&) { isAnswered = true; }).reset();
    EXPECT_NO_THROW(drawn(request(1, 320)).value()); // came later, so the other would have been answered
    EXPECT_FALSE(isAnswered);
}

TEST(FilmFrame, aSizeWithinALimitKeepsItsShape) {
    EXPECT_EQ(sizeWithin({1920, 1080}, 1280), (Size2{1280, 720}));
    EXPECT_EQ(sizeWithin({1080, 1920}, 1280), (Size2{720, 1280}));
    EXPECT_EQ(sizeWithin({640, 360}, 1280), (Size2{640, 360}));
    EXPECT_EQ(sizeWithin({4000, 20}, 400), (Size2{400, 16}));
}
