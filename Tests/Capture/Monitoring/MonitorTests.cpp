#include "../FakeSources.h"
#include "../TestDisplay.h"
#include "../TestSoundServer.h"

#include <TavaroCapture/Monitoring/CameraMonitor.h>
#include <TavaroCapture/Monitoring/SoundMonitor.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <atomic>

using namespace tavaro;

TEST(Monitors, aSoundIsAsLoudAsItIs) {
    SoundMonitor const monitor(fakeMicrophone({mediaClockNow() + 0.3}), StreamRole::microphone);
    EXPECT_TRUE(eventually([&] { return monitor.state().level > 0.3; }));
    EXPECT_TRUE(eventually([&] { return monitor.state().silentSeconds < 0.1; })) << "the silence before it is over";
}

TEST(Monitors, aSoundThatGoesAwayIsSilentUntilItIsBack) {
    double const now = mediaClockNow();
    SoundMonitor const monitor(fakeMicrophone({now}, {.to = now + 0.2, .back = now + 1.5}), StreamRole::microphone);
    EXPECT_TRUE(eventually([&] {
        auto const state = monitor.state();
        return state.isAway && state.level == 0;
    }));
    EXPECT_TRUE(eventually([&] {
        auto const state = monitor.state();
        return !state.isAway && state.level > 0.3;
    }));
}

TEST(Monitors, silenceIsCountedFromTheBeginning) {
    SoundMonitor const monitor(fakeMicrophone({mediaClockNow() + 1000}), StreamRole::microphone);
    EXPECT_TRUE(eventually([&] { return monitor.state().silentSeconds > 0.2; }));
    EXPECT_EQ(monitor.state().level, 0);
}

TEST(Monitors, aCameraShowsItsPicturesUntilItIsAway) {
    std::atomic<int> pictures = 0;
    double const now = mediaClockNow();
    CameraMonitor const monitor(fakeCamera({now}, {.to = now + 1.2}), [&](ImageView pixels, PixelOrder) {
        if (pixels.width > 0 && pixels.row(0)[0] > 200) ++pictures;
    });
    EXPECT_TRUE(eventually([&] { return pictures > 3; }));
    EXPECT_TRUE(eventually([&] { return monitor.isAway(); }));
}

using SoundMonitorOfServer = SoundServerTest;

TEST_F(SoundMonitorOfServer, theDeviceIsOpenOnlyWhileSomebodyListens) {
    auto const openStreams = [&] { return server->order("list short source-outputs"); };
    EXPECT_EQ(openStreams(), "");
    {
        SpokenClicks const clicks(server->microphonePipe());
        SoundMonitor const monitor(MicrophoneSource{"mic"}, server->address());
        EXPECT_NE(openStreams(), "");
        EXPECT_TRUE(eventually([&] { return monitor.state().level > 0; }));
    }
    EXPECT_TRUE(eventually([&] { return openStreams().empty(); }));
    EXPECT_THROW(SoundMonitor(MicrophoneSource{"none"}, server->address()), CaptureError);
}
