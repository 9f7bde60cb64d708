#include "RecorderTest.h"

#include "../../Capture/TestSoundServer.h"

#include <gmock/gmock.h>

#include <atomic>
#include <unistd.h>

using namespace tavaro;
using ::testing::ElementsAre;

namespace {

class RecorderSourcesTest : public RecorderTest {
protected:
    static std::vector<std::string> names(SourceModel const& model) {
        std::vector<std::string> result;
        for (auto const& source : model.sources()) result.push_back((source.name + ": " + source.detail).toStdString());
        return result;
    }
    static SourceList list() {
        return {.displays = {{"display-1", "eDP-1", {0, 0, 640, 480}}, {"display-2", "", {640, 0, 320, 200}, true}},
                .windows = {{1, "Tour", "Browser", "browser", 77, {0, 0, 300, 200}},
                            {2, "Own", "Tavaro", "tavaro", ::getpid(), {0, 0, 10, 10}},
                            {3, "Away", "Browser", "browser", 77, {0, 0, 10, 10}, true},
                            {4, "", "Editor", "editor", 78, {5, 5, 100, 50}}},
                .limits = {"Nothing tells of keys."}};
    }
    RecorderSources make(RecorderSources::Desktop desktop = RecorderSources::Desktop::open) {
        return {queue, application.preferences(), desktop, [this](CaptureSource const&, QSize size) {
                    ++stills;
                    return QImage(size, QImage::Format_RGB32);
                }};
    }

    std::atomic<int> stills = 0;
};

}

TEST_F(RecorderSourcesTest, whatCanBeRecordedIsListedAndNothingElse) {
    auto sources = make();
    sources.show(list());
    EXPECT_THAT(names(*sources.displays()), ElementsAre("eDP-1: 640 × 480", "display-2: 320 × 200, main display"));
    EXPECT_THAT(names(*sources.windows()), ElementsAre("Tour: Browser, 300 × 200", "Editor: 100 × 50"));
    EXPECT_THAT(names(*sources.applications()), ElementsAre("Browser: 1 window", "Editor: 1 window"));
    EXPECT_EQ(sources.limits(), QStringList("Nothing tells of keys."));
    EXPECT_EQ(sources.chosenName(), "display-2") << "the main display, as long as nobody chose";
    EXPECT_EQ(application.preferences().get(sourceChosen), "");
    sources.choose("window:1");
    EXPECT_EQ(sources.chosenName(), "Tour");
    sources.show({.displays = list().displays});
    EXPECT_EQ(sources.chosenName(), "") << "it was closed";
    EXPECT_EQ(sources.chosen(), "window:1");
    sources.fail("No display.");
    EXPECT_EQ(sources.displays()->count(), 0);
    EXPECT_EQ(sources.problem(), "No display.");
}

TEST_F(RecorderSourcesTest, whatWasChosenLastTimeAndHasGoneGivesWayToTheMainDisplayOnce) {
    application.preferences().set(sourceChosen, "window:99");
    auto sources = make();
    sources.show(list());
    EXPECT_EQ(sources.chosenName(), "display-2");
    EXPECT_EQ(application.preferences().get(sourceChosen), "display:display-2");
    sources.choose("window:1");
    sources.show({.displays = list().displays});
    EXPECT_EQ(sources.chosen(), "window:1") << "it is not exchanged under its user's hands";
}

TEST_F(RecorderSourcesTest, anAreaIsKeptAndItsPlaceIsOnTheDesktop) {
    auto sources = make();
    sources.show(list());
    sources.area()->setDisplay("display-2");
    sources.chooseArea();
    sources.area()->setShape(static_cast<int>(AreaShape::square));
    sources.area()->setX(40);
    sources.area()->setWidth(64);
    EXPECT_EQ(sources.chosenName(), "Area of 64 × 64");
    auto again = make();
    again.show(list());
    EXPECT_EQ(again.area()->source(), sources.area()->source());
    EXPECT_EQ(again.chosen(), sources.chosen());
    auto const place = again.placeOf(again.area()->source());
    ASSERT_TRUE(place);
    EXPECT_EQ(place->x, 680);
    EXPECT_FALSE(again.placeOf(WindowSource{1}));

    again.leaveArea();
    EXPECT_EQ(again.chosenName(), "display-2") << "the main display, since nothing was chosen before";
    again.choose("window:1");
    again.leaveArea();
    EXPECT_EQ(again.chosenName(), "Tour");
    again.chooseArea();
    again.leaveArea();
    EXPECT_EQ(again.chosenName(), "Tour") << "who only looked at the areas films none";
}

TEST_F(RecorderSourcesTest, stillsAreTakenOnlyWhileSomebodyLooksAndTheDesktopLetsThem) {
    auto sources = make();
    sources.show(list());
    EXPECT_EQ(stills, 0);
    sources.setWatched(true);
    auto const hasStill = [&](SourceModel* model, int row) {
        return !model->data(model->index(row), SourceModel::Still).value<QImage>().isNull();
    };
    EXPECT_TRUE(becomes([&] { return hasStill(sources.displays(), 1); }));
    auto const asked = std::chrono::steady_clock::now();
    sources.chooseArea();
    EXPECT_TRUE(becomes([&] { return !sources.areaStill().isNull(); }));
    EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::milliseconds(900)) << "not after the next round";
    sources.setWatched(false);
    becomes([&, end = std::chrono::steady_clock::now() + std::chrono::milliseconds(100)] {
        return std::chrono::steady_clock::now() > end; // one may have been under way
    });
    int const before = stills;
    becomes([end = std::chrono::steady_clock::now() + std::chrono::milliseconds(500)] {
        return std::chrono::steady_clock::now() > end;
    });
    EXPECT_EQ(stills, before);
    auto asking = make(RecorderSources::Desktop::asksUser);
    asking.show(list());
    asking.setWatched(true);
    becomes([end = std::chrono::steady_clock::now() + std::chrono::milliseconds(200)] {
        return std::chrono::steady_clock::now() > end;
    });
    EXPECT_EQ(stills, before);
}

TEST_F(RecorderSourcesTest, aDeviceIsOpenWhileItIsSwitchedOnAndSomebodyLooksAndNoTakeHasIt) {
    if (!TestSoundServer::isInstalled()) GTEST_SKIP() << "pulseaudio is not installed";
    TestSoundServer const server;
    setenv("PULSE_SERVER", server.address().c_str(), 1);
    SpokenClicks const clicks(server.microphonePipe());
    {
        RecorderDevices devices(queue, application.preferences());
        auto const isOpen = [&] { return !server.order("list short source-outputs").empty(); };
        devices.show({.microphones = {{"mic", "Microphone", true}}});
        devices.setMicrophoneOn(true);
        EXPECT_FALSE(isOpen());
        devices.setWatched(true);
        EXPECT_TRUE(becomes([&] { return devices.microphoneMeter()->level() > 0; }));
        EXPECT_TRUE(isOpen());
        bool isFree = false;
        devices.letGo([&] { isFree = true; });
        EXPECT_TRUE(becomes([&] { return isFree && !isOpen(); }));
        devices.showTake({{.role = StreamRole::microphone, .level = 1}});
        EXPECT_EQ(devices.microphoneMeter()->level(), 1);
        devices.takeBack();
        EXPECT_TRUE(becomes([&] { return isOpen(); }));
        devices.setMicrophoneOn(false);
        EXPECT_TRUE(becomes([&] { return !isOpen(); }));
        EXPECT_FALSE(devices.microphoneMeter()->isListening());
        devices.setMicrophone("gone");
        devices.setMicrophoneOn(true);
        EXPECT_TRUE(becomes([&] { return !devices.microphoneMeter()->warning().isEmpty(); }));
    }
    unsetenv("PULSE_SERVER");
}
