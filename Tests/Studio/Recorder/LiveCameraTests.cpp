#include "../../Capture/FakeSources.h"
#include "RecorderTest.h"

#include <Tavaro/Studio/Recorder/LiveCamera.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <atomic>

using namespace tavaro;

namespace {

class LiveCameraTest : public testing::Test {
protected:
    std::unique_ptr<CameraMonitor> opened(CameraDeviceSource const& source, CameraMonitor::Picture picture) const {
        if (source.id == "none") throw CaptureError(CaptureError::Kind::noCamera, "There is no camera “none”.");
        double const now = mediaClockNow();
        return std::make_unique<CameraMonitor>(fakeCamera({now}, {.to = now + 1.5}), std::move(picture));
    }

    MainQueue queue;
    QueueInLoop const loop{queue};
    LiveCamera camera{queue, [this](auto const& source, auto picture) { return opened(source, std::move(picture)); }};
};

}

TEST_F(LiveCameraTest, itsPicturesAreShownUntilItIsWantedByOthers) {
    camera.look(CameraDeviceSource{"desk"});
    ASSERT_TRUE(becomes([&] { return !camera.picture().isNull(); }));
    EXPECT_LE(camera.picture().width(), 480);
    EXPECT_TRUE(becomes([&] { return qGray(camera.picture().pixel(5, 5)) > 200; }));
    EXPECT_TRUE(becomes([&] { return !camera.warning().isEmpty(); })) << "it has gone";
    EXPECT_FALSE(camera.picture().isNull()) << "its last picture stays";
    bool isFree = false;
    camera.letGo([&] { isFree = true; });
    EXPECT_TRUE(camera.picture().isNull());
    EXPECT_TRUE(becomes([&] { return isFree; }));
    camera.look(CameraDeviceSource{"none"});
    EXPECT_TRUE(becomes([&] { return camera.warning() == "There is no camera “none”."; }));
    camera.look(std::nullopt);
    EXPECT_EQ(camera.warning(), "");
}
