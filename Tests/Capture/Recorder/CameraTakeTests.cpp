#include "../../Media/Movie/MovieFrames.h"
#include "../Camera/Timecode.h"
#include "../FakeSources.h"
#include "../TemporaryFolder.h"
#include "../TestDisplay.h"
#include "../V4L2/FakeVideo.h"

#include <TavaroCapture/Recorder/ScreenRecorder.h>
#include <TavaroCapture/V4L2/Private/VideoCameras.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>

namespace tavaro {

using namespace std::chrono_literals;

namespace {

struct Shown {
    double at = 0;   // seconds of the movie
    double code = 0; // moment of the media clock; 0: none to be read
};

std::vector<Shown> picturesOf(std::filesystem::path const& movie) {
    std::vector<Shown> result;
    eachFrame(movie, [&](double at, ImageView picture) {
        result.push_back({at, timecode::read(picture).value_or(0)});
    });
    return result;
}

/// Takes with a camera whose pictures show their moments.
class CameraTake : public testing::Test {
protected:
    void record() {
        recorder.emplace(RecorderOptions{.recordingsFolder = recordings.path(), .segmentSeconds = 0.7},
                         TakeSources{fakeScreen({}), fakeEvents(), v4l2::openCamera(video, {}), nullptr, nullptr});
        recorder->start();
        began = mediaClockNow() - recorder->progress().seconds;
    }
    void recordUntil(double seconds) {
        ASSERT_TRUE(eventually([&] { return recorder->waitForEnd(5ms) || recorder->progress().seconds >= seconds; }));
    }
    /// Each picture of the camera's movie is where the take was at its moment. `skew`: seconds that pauses took.
    void expectInPlace(FinishedTake const& take, double skew = 0) {
        ASSERT_EQ(take.streams.size(), 1u);
        auto const& stream = take.streams[0];
        auto const pictures = picturesOf(stream.file);
        ASSERT_GT(pictures.size(), 10u);
        for (auto const& picture : pictures) {
            double const place = began + stream.offset + picture.at;
            bool const isInPlace =
                std::abs(picture.code - place) < 0.003 || std::abs(picture.code - skew - place) < 0.003;
            EXPECT_TRUE(isInPlace) << picture.at << " shows " << picture.code - began;
        }
        shown = std::ssize(pictures);
    }

    TemporaryFolder recordings;
    std::shared_ptr<v4l2::FakeCamera> const camera = std::make_shared<v4l2::FakeCamera>();
    std::shared_ptr<v4l2::FakeVideo> const video = std::make_shared<v4l2::FakeVideo>(std::vector{camera});
    std::optional<ScreenRecorder> recorder;
    double began = 0;
    std::int64_t shown = 0;
};

}

TEST_F(CameraTake, noPictureIsOutOfPlaceNorMissing) {
    camera->modes = {{DeviceLayout::jpeg, 640, 480, 30}};
    record();
    recordUntil(1);
    recorder->setPaused(true);
    double const paused = mediaClockNow();
    EXPECT_FALSE(recorder->waitForEnd(250ms));
    recorder->setPaused(false);
    double const pause = mediaClockNow() - paused;
    recordUntil(2);
    auto const take = recorder->stop();
    expectInPlace(take, pause);
    EXPECT_NEAR(static_cast<double>(shown), take.streams[0].duration * 30, 2);
    EXPECT_THAT(take.warnings, testing::IsEmpty());
    EXPECT_EQ(take.metadata.health.cameraLost, false);
}

TEST_F(CameraTake, anUnpluggedCameraCostsOnlyItsOwnPictures) {
    record();
    recordUntil(0.6);
    camera->isPlugged = false;
    EXPECT_TRUE(eventually([&] { return recorder->progress().isCameraAway; }));
    recordUntil(1.2);
    video->plug(*camera, "/dev/video3");
    EXPECT_TRUE(eventually([&] { return !recorder->progress().isCameraAway; }));
    recordUntil(2);
    auto const take = recorder->stop();
    expectInPlace(take);
    auto const& health = take.metadata.health;
    EXPECT_EQ(health.interruptions, 1);
    EXPECT_EQ(health.cameraLost, false);
    EXPECT_GE(health.framesWritten + health.droppedFrames, 115);
    ASSERT_EQ(take.warnings.size(), 1u);
    EXPECT_THAT(take.warnings[0], testing::StartsWith("The camera was away from 0.6 to "));
    EXPECT_THAT(take.warnings[0], testing::EndsWith(" seconds into the take; its last picture stays."));
}

TEST_F(CameraTake, theSpotThatIsMarkedIsWhereThePicturesStoppedNotWhereThatWasNoticed) {
    record();
    recordUntil(0.6);
    camera->isFrozen = true;
    double const frozen = recorder->progress().seconds;
    EXPECT_TRUE(eventually([&] { return recorder->progress().isCameraAway; }));
    double const noticed = recorder->progress().seconds;
    EXPECT_GT(noticed, frozen + 0.4);
    auto const take = recorder->stop();
    auto const& spots = take.metadata.health.interruptedAt;
    ASSERT_EQ(spots.size(), 1u);
    EXPECT_NEAR(spots[0], frozen, 0.2);
}

TEST_F(CameraTake, aCameraThatGivesOnlyDamagedPicturesIsLostAndOneThatGivesSomeIsToldOf) {
    camera->modes = {{DeviceLayout::jpeg, 640, 480, 60}};
    camera->cutEvery = 4;
    record();
    recordUntil(1);
    auto const take = recorder->stop();
    expectInPlace(take);
    ASSERT_EQ(take.warnings.size(), 1u);
    EXPECT_THAT(take.warnings[0], testing::HasSubstr(" were lost or damaged; the one before each stays longer."));

    camera->cutEvery = 1;
    record();
    recordUntil(0.5);
    auto const blind = recorder->stop();
    EXPECT_EQ(blind.metadata.health.cameraLost, true);
    EXPECT_GT(blind.duration, 0.45);
    EXPECT_THAT(blind.streams, testing::IsEmpty());
}

}
