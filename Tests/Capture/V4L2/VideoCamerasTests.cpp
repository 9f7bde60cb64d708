#include "../Camera/Timecode.h"
#include "../TestDisplay.h"
#include "FakeVideo.h"

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/V4L2/Private/VideoCameras.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <gmock/gmock.h>
#include <linux/videodev2.h>

namespace tavaro::v4l2 {

using namespace std::chrono_literals;

namespace {

/// What a camera handed on.
class Seen {
public:
    CameraHandlers handlers() {
        return {.picture =
                    [this](CapturedPicture const& picture) {
                        auto const shown = timecode::read(DevicePixels().of(picture.picture).view);
                        std::lock_guard const guard(lock_);
                        stamps_.push_back(picture.capturedAt);
                        errors_.push_back(shown ? picture.capturedAt - *shown : 1e9);
                    },
                .lost =
                    [this](double since) {
                        missingSince = since;
                        lostAt = mediaClockNow();
                    },
                .returned =
                    [this](double at) {
                        backSince = at;
                        returnedAt = mediaClockNow();
                    },
                .missed = [this](std::int64_t count) { missed += count; }};
    }
    std::vector<double> stamps() const {
        std::lock_guard const guard(lock_);
        return stamps_;
    }
    std::size_t count() const { return stamps().size(); }
    /// How far the stamp that is worst is from the moment in its picture.
    double worst() const {
        std::lock_guard const guard(lock_);
        double worst = 0;
        for (double const error : errors_) worst = std::max(worst, std::abs(error));
        return worst;
    }

    std::atomic<double> lostAt = 0;       // when it was told
    std::atomic<double> missingSince = 0; // what it said then
    std::atomic<double> backSince = 0;
    std::atomic<double> returnedAt = 0;
    std::atomic<std::int64_t> missed = 0;

private:
    std::mutex mutable lock_;
    std::vector<double> stamps_;
    std::vector<double> errors_;
};

class VideoCamerasTest : public testing::Test {
protected:
    std::shared_ptr<FakeVideo> machine() { return std::make_shared<FakeVideo>(std::vector{camera, other}); }
    static std::string refusal(std::shared_ptr<FakeVideo> const& video, std::string const& id,
                               std::chrono::milliseconds patience = 60s) {
        try {
            return openCamera(video, {.id = id}, patience) ? "" : "none";
        } catch (CaptureError const& error) {
            EXPECT_EQ(error.kind, CaptureError::Kind::noCamera);
            return error.what();
        }
    }

    std::shared_ptr<FakeCamera> const camera = std::make_shared<FakeCamera>();
    std::shared_ptr<FakeCamera> const other = [] {
        auto made = std::make_shared<FakeCamera>();
        made->name = "Door camera";
        made->bus = "usb-2";
        made->id = "";
        made->path = "/dev/video2";
        return made;
    }();
    Seen seen; // outlives the sources
};

}

TEST_F(VideoCamerasTest, everyPictureIsStampedWithTheMomentThatItShows) {
    for (auto const layout : {DeviceLayout::yuyv, DeviceLayout::nv12, DeviceLayout::jpeg}) {
        camera->modes = {{layout, 640, 480, 30}};
        Seen here;
        auto const source = openCamera(machine(), {});
        EXPECT_EQ(source->size(), (Size2{640, 480}));
        EXPECT_EQ(source->fps(), 30);
        EXPECT_EQ(camera->streams, 0) << "open only while it is filmed";
        double const began = mediaClockNow();
        source->start(here.handlers());
        EXPECT_EQ(camera->streams, 1);
        ASSERT_TRUE(eventually([&] { return here.count() >= 20; }));
        source->stop();
        EXPECT_EQ(camera->streams, 0);
        auto const stamps = here.stamps();
        EXPECT_LT(here.worst(), 1e-6);
        EXPECT_GE(stamps.front(), began);
        EXPECT_TRUE(std::ranges::is_sorted(stamps));
        EXPECT_NEAR((stamps.back() - stamps.front()) * 30 + 1,
                    static_cast<double>(stamps.size()) + static_cast<double>(here.missed), 0.01)
            << "what did not come is counted";
        EXPECT_EQ(here.lostAt, 0);
    }
}

TEST_F(VideoCamerasTest, theLagOfACameraIsTakenFromItsStamps) {
    auto const source = openCamera(machine(), {.lags = {{"usb-Desk-index0", 0.12}, {"video2", 0.3}}});
    source->start(seen.handlers());
    source->stop();
    EXPECT_NEAR(seen.worst(), 0.12, 1e-6);
}

TEST_F(VideoCamerasTest, damagedAndSkippedPicturesAreLeftOutAndCounted) {
    camera->modes = {{DeviceLayout::jpeg, 640, 480, 60}};
    camera->cutEvery = 5;
    camera->flawedEvery = 7;
    camera->skippedEvery = 11;
    auto const source = openCamera(machine(), {});
    source->start(seen.handlers());
    ASSERT_TRUE(eventually([&] { return seen.count() >= 60; }));
    source->stop();
    auto const stamps = seen.stamps();
    EXPECT_LT(seen.worst(), 1e-6) << "no half of a picture is shown";
    auto const taken = static_cast<std::int64_t>(std::lround((stamps.back() - stamps.front()) * 60)) + 1;
    EXPECT_NEAR(static_cast<double>(taken - std::ssize(stamps)), static_cast<double>(seen.missed), 3.0)
        << "but for those before the first and after the last";
    EXPECT_GT(seen.missed, taken / 5);
    EXPECT_EQ(seen.lostAt, 0);
}

TEST_F(VideoCamerasTest, anUnpluggedCameraIsToldOfAndOnlyItselfComesBack) {
    auto const video = machine();
    auto const source = openCamera(video, {.id = "Desk camera"});
    source->start(seen.handlers());
    ASSERT_GT(seen.count(), 0u);
    camera->isPlugged = false;
    double const unplugged = mediaClockNow();
    video->plug(*other, "/dev/video0"); // another one takes its node
    ASSERT_TRUE(eventually([&] { return seen.lostAt > 0; }));
    EXPECT_LT(seen.lostAt - unplugged, 0.5);
    auto const before = seen.count();
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(seen.count(), before);
    EXPECT_EQ(other->streams, 0);
    video->plug(*camera, "/dev/video4");
    ASSERT_TRUE(eventually([&] { return seen.returnedAt > 0 && seen.count() > before + 5; }));
    source->stop();
    EXPECT_LT(seen.worst(), 1e-6);
    EXPECT_GT(seen.stamps().at(before), unplugged);
    EXPECT_EQ(other->streams, 0);
}

TEST_F(VideoCamerasTest, aCameraWithoutALastingIdIsKnownByItsPlug) {
    auto const video = machine();
    auto const source = openCamera(video, {.id = "video2"});
    source->start(seen.handlers());
    other->isPlugged = false;
    ASSERT_TRUE(eventually([&] { return seen.lostAt > 0; }));
    other->bus = "usb-9";
    video->plug(*other, "/dev/video2");
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(seen.returnedAt, 0) << "of two that are alike, that is the other one";
    other->isPlugged = false;
    other->bus = "usb-2";
    video->plug(*other, "/dev/video7");
    EXPECT_TRUE(eventually([&] { return seen.returnedAt > 0; }));
    source->stop();
}

TEST_F(VideoCamerasTest, aFrozenCameraIsOpenedAnew) {
    auto const source = openCamera(machine(), {});
    source->start(seen.handlers());
    int const openings = camera->openings;
    camera->isFrozen = true;
    double const frozen = mediaClockNow();
    ASSERT_TRUE(eventually([&] { return seen.lostAt > 0; }));
    EXPECT_LT(seen.lostAt - frozen, 0.8);
    ASSERT_TRUE(eventually([&] { return camera->openings > openings; }));
    camera->isFrozen = false;
    ASSERT_TRUE(eventually([&] { return seen.returnedAt > 0; }));
    camera->isFrozen = true;
    double const ends = mediaClockNow();
    source->stop();
    EXPECT_LT(mediaClockNow() - ends, 0.5) << "nobody waits for a frozen camera";
    EXPECT_EQ(camera->streams, 0);
}

TEST_F(VideoCamerasTest, aDriverThatDoesNotReturnIsToldOfAndKeepsNobodyWaiting) {
    {
        auto const source = openCamera(machine(), {});
        source->start(seen.handlers());
        ASSERT_TRUE(eventually([&] { return seen.count() >= 5; }));
        camera->hangs = true;
        ASSERT_TRUE(eventually([&] { return seen.lostAt > 0; }));
        double const last = seen.stamps().back();
        EXPECT_NEAR(seen.missingSince, last + 1 / 30.0, 1e-6) << "not when it was noticed";
        auto const missed = seen.missed.load();
        camera->hangs = false;
        ASSERT_TRUE(eventually([&] { return seen.returnedAt > 0; }));
        EXPECT_GT(seen.backSince, last + 0.3);
        EXPECT_EQ(seen.missed, missed) << "a camera that is away loses nothing";
        camera->hangs = true;
        double const ends = mediaClockNow();
        source->stop();
        EXPECT_LT(mediaClockNow() - ends, 4);
    }
    auto const count = seen.count();
    EXPECT_EQ(camera->streams, 1) << "the device is left to the call";
    camera->hangs = false;
    EXPECT_TRUE(eventually([&] { return camera->streams == 0; }));
    EXPECT_EQ(seen.count(), count);
}

TEST_F(VideoCamerasTest, aDriverThatDoesNotReturnWhenItIsOpenedIsNamedAndKeepsNobodyWaiting) {
    auto const video = machine();
    for (auto* const hangs : {&camera->opensNever, &camera->hangs}) {
        int const openings = camera->openings;
        *hangs = true;
        auto const silence = testing::StartsWith("The camera “video0” does not answer. ");
        EXPECT_THAT(refusal(video, "video0", 1200ms), silence);
        EXPECT_THAT(refusal(video, "Desk camera", 1200ms), testing::StartsWith("The camera “Desk camera” does not "));
        EXPECT_EQ(refusal(video, "video2"), "") << "the other one is as good as ever";
        EXPECT_EQ(refusal(video, "", 1200ms), "") << "whichever answers";
        auto const list = cameras(video, 1200ms);
        EXPECT_THAT(list.cameras, testing::ElementsAre(CameraInfo{"video2", "Door camera", true}));
        EXPECT_THAT(list.silent, testing::ElementsAre("usb-Desk-index0"));
        EXPECT_EQ(camera->openings, openings + 1) << "each further call would leave a thread behind";
        *hangs = false;
        EXPECT_TRUE(eventually([&] { return cameras(video, 60s).silent.empty(); }));
        EXPECT_EQ(refusal(video, "video0"), "");
    }
}

TEST_F(VideoCamerasTest, aDriverThatHangsOnceItIsToFilmIsNamedToo) {
    auto const video = machine();
    camera->hangsInFormat = true;
    EXPECT_THAT(refusal(video, "video0", 1200ms), testing::StartsWith("The camera “Desk camera” does not answer. "));
    camera->hangsInFormat = false;
    EXPECT_TRUE(eventually([&] { return refusal(video, "video0").empty(); }));
}

TEST_F(VideoCamerasTest, whatIsNoCameraIsNotListedAndWhatCannotBeUsedIsRefusedInASentence) {
    auto const infrared = std::make_shared<FakeCamera>();
    infrared->path = "/dev/video1";
    infrared->modes = {{DeviceLayout::rgbx, 640, 480, 30}}; // which V4L2 here has no name for
    infrared->otherFormat = V4L2_PIX_FMT_GREY;
    auto const decoder = std::make_shared<FakeCamera>();
    decoder->path = "/dev/video3";
    decoder->capabilities = V4L2_CAP_VIDEO_M2M | V4L2_CAP_STREAMING;
    auto const video = std::make_shared<FakeVideo>(std::vector{infrared, camera, decoder, other});
    camera->otherFormat = V4L2_PIX_FMT_GREY;
    EXPECT_THAT(cameras(video).cameras, testing::ElementsAre(CameraInfo{"usb-Desk-index0", "Desk camera", true},
                                                             CameraInfo{"video2", "Door camera", false}));
    for (auto const* const id :
         {"", "usb-Desk-index0", "/dev/video0", "video0", "Desk camera", "video2", "Door camera"})
        EXPECT_EQ(refusal(video, id), "") << id;
    EXPECT_EQ(refusal(video, "tuba"), "none");
    camera->isTaken = true;
    EXPECT_EQ(refusal(video, ""), "The camera “Desk camera” is in use by another program.");
    camera->isBarred = true;
    EXPECT_THAT(refusal(video, "video0"), testing::StartsWith("The camera “video0” cannot be used: "));
    EXPECT_EQ(refusal(std::make_shared<FakeVideo>(std::vector{infrared, decoder}), ""), "none");
}

}
