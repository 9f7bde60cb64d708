#include "../Camera/Timecode.h"
#include "../TestCameraNode.h"
#include "../TestDisplay.h"
#include "../TestSession.h"

#include <TavaroCapture/PipeWire/Private/PipeWireCameras.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <gmock/gmock.h>
#include <mutex>

namespace tavaro::pipewire {

using namespace std::chrono_literals;

namespace {

struct Seen {
    CameraHandlers handlers() {
        return {.picture =
                    [this](CapturedPicture const& picture) {
                        auto const shown = timecode::read(DevicePixels().of(picture.picture).view);
                        if (!shown || std::abs(picture.capturedAt - *shown) > 1e-5) ++strays;
                        if (count++ == 0) first = picture.capturedAt;
                        last = picture.capturedAt;
                    },
                .lost =
                    [this](double since) {
                        missingSince = since;
                        lostAt = mediaClockNow();
                    },
                .returned = [this](double) { returnedAt = mediaClockNow(); },
                .missed = [this](std::int64_t more) { missed += more; }};
    }

    std::atomic<int> count = 0;
    std::atomic<int> strays = 0; // pictures whose stamp is not the moment that they show
    std::atomic<std::int64_t> missed = 0;
    std::atomic<double> first = 0;
    std::atomic<double> last = 0;
    std::atomic<double> lostAt = 0;       // when it was told
    std::atomic<double> missingSince = 0; // what it said then
    std::atomic<double> returnedAt = 0;
};

class PipeWireCamerasTest : public testing::Test {
protected:
    void SetUp() override {
        if (!TestSession::isInstalled()) GTEST_SKIP() << "pipewire or wireplumber is not installed";
        session.emplace();
        plug();
    }
    void plug() {
        camera.emplace();
        ASSERT_TRUE(eventually([&] { return cameras().size() == 1; }));
    }

    std::optional<TestSession> session;
    std::optional<TestCameraNode> camera;
    Seen seen; // outlives the sources
};

}

TEST_F(PipeWireCamerasTest, everyPictureIsStampedWithTheMomentThatItShows) {
    EXPECT_THAT(cameras(), testing::ElementsAre(CameraInfo{"desk", "Desk camera", true}));
    EXPECT_FALSE(openCamera({.id = "tuba"}));
    for (auto const* const id : {"", "desk", "Desk camera"}) {
        Seen here;
        auto const source = openCamera({.id = id});
        ASSERT_TRUE(source) << id;
        EXPECT_EQ(source->size(), (Size2{640, 480})) << "the better of its forms";
        EXPECT_EQ(source->fps(), 30);
        source->start(here.handlers());
        ASSERT_TRUE(eventually([&] { return here.count >= 20; })) << here.count;
        source->stop();
        EXPECT_EQ(here.strays, 0);
        EXPECT_NEAR((here.last - here.first) * 30 + 1, here.count + static_cast<double>(here.missed), 1.5);
        camera->saysNoStride = true; // as some do
    }
}

TEST_F(PipeWireCamerasTest, aCameraThatGoesOrFreezesIsToldOfAndOnlyItselfComesBack) {
    auto const source = openCamera({.id = "desk"});
    ASSERT_TRUE(source);
    source->start(seen.handlers());
    ASSERT_TRUE(eventually([&] { return seen.count > 0; }));
    TestCameraNode const other({.name = "door", .description = "Door camera"});
    ASSERT_TRUE(eventually([&] { return cameras().size() == 2; }));
    double const unplugged = mediaClockNow();
    camera.reset();
    ASSERT_TRUE(eventually([&] { return seen.lostAt > 0; }));
    EXPECT_LT(seen.lostAt - unplugged, 0.5);
    int const before = seen.count;
    std::this_thread::sleep_for(500ms);
    EXPECT_EQ(seen.count, before) << "no other one";
    camera.emplace();
    ASSERT_TRUE(eventually([&] { return seen.returnedAt > 0; }));

    seen.lostAt = seen.returnedAt = 0;
    camera->isFrozen = true;
    ASSERT_TRUE(eventually([&] { return seen.lostAt > 0; }));
    EXPECT_NEAR(seen.missingSince, seen.last, 0.1) << "not when it was noticed";
    camera->isFrozen = false;
    EXPECT_TRUE(eventually([&] { return seen.returnedAt > 0; }));
    source->stop();
    EXPECT_EQ(seen.strays, 0);
}

TEST_F(PipeWireCamerasTest, aServerThatIsKilledTakesItsCamerasAlongUntilItIsBack) {
    auto const source = openCamera({});
    ASSERT_TRUE(source);
    source->start(seen.handlers());
    ASSERT_TRUE(eventually([&] { return seen.count > 0; }));
    session->killServer();
    ASSERT_TRUE(eventually([&] { return seen.lostAt > 0; }));
    EXPECT_THAT(cameras(), testing::IsEmpty());
    EXPECT_FALSE(openCamera({}));
    camera.reset();
    session.reset();
    session.emplace();
    plug();
    EXPECT_TRUE(eventually([&] { return seen.returnedAt > 0; }));
    source->stop();
}

}
