#include "../Export/TestTake.h"

#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroRender/Painter/Private/RecordingFrames.h>

#include <gtest/gtest.h>

namespace tavaro {

namespace {

TEST(VideoFrame, theSamePixelsAreRecognisedInAnotherFrameAndOneOtherPixelIsNot) {
    TestTake take("pixels", 40);
    MovieReader one(take.package.assetURL("screen.mp4"));
    MovieReader other(take.package.assetURL("screen.mp4"));
    EXPECT_NE(one.frame(0.5).identity(), other.frame(0.5).identity());
    EXPECT_TRUE(one.frame(0.5).showsSamePixels(other.frame(0.5)));
    EXPECT_FALSE(one.frame(0.5).showsSamePixels(other.frame(0.5 + 1 / 30.0)));
    EXPECT_FALSE(one.frame(0.5).showsSamePixels(VideoFrame()));
    EXPECT_TRUE(VideoFrame().showsSamePixels(VideoFrame()));
}

TEST(RecordingFrames, aScreenAtRestStaysOneFrameAndAMovingOneDoesNot) {
    TestTake take("rest", 30);
    std::filesystem::copy_file(take.package.assetURL("screen.mp4"), take.package.assetURL("twin.mp4"));
    RecordingFrames frames(take.package);
    auto const first = frames.frame("screen.mp4", 0.2);
    EXPECT_EQ(frames.frame("twin.mp4", 0.2).identity(), first.identity()) << "another movie, the same pixels";
    EXPECT_NE(frames.frame("screen.mp4", 0.3).identity(), first.identity());
    EXPECT_NEAR(frames.frame("screen.mp4", 0.3).presentationTime(), 0.3, 1e-3);
}

TEST(RecordingFrames, moviesThatTakeTurnsBeyondTheReadersKeptOpenStillGiveTheirFrames) {
    TestTake take("turns", 30);
    for (int i = 0; i < 7; ++i) {
        std::filesystem::copy_file(take.package.assetURL("screen.mp4"),
                                   take.package.assetURL(std::to_string(i) + ".mp4"));
    }
    RecordingFrames frames(take.package);
    for (int turn = 0; turn < 14; ++turn) {
        double const at = turn / 20.0;
        auto const frame = frames.frame(std::to_string(turn % 7) + ".mp4", at);
        EXPECT_NEAR(frame.presentationTime(), at, 1 / 30.0 + 1e-3) << turn;
    }
}

}

}
