#include "SharedPictures.h"

#include "../TestForm.h"
#include "../TestMutter.h"
#include "FrontLog.h"

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <gmock/gmock.h>
#include <unistd.h>

namespace tavaro::wayland {

namespace {

class MutterTest : public testing::Test, public SharedPictures {
protected:
    void SetUp() override {
        if (!TestMutter::isInstalled()) GTEST_SKIP() << "mutter, a portal or PipeWire is not installed";
        mutter.emplace(320, 200);
    }

    /// Whether the desktop says within a second that it is there.
    bool leadsPointerTo(SharedDesktop const& desktop, PixelPoint point) const {
        mutter->movePointer(point);
        double const end = mediaClockNow() + 1;
        while (desktop.events->pointer() != point && mediaClockNow() < end) usleep(5000);
        return desktop.events->pointer() == point;
    }
    /// A window is drawn smaller while it comes up, and a loaded machine is late.
    bool leadsPointerAlong(SharedDesktop const& desktop, PixelPoint point) const {
        int tries = 0;
        return eventually([&] { return leadsPointerTo(desktop, {point.x, point.y + tries++ % 8}); });
    }

    std::optional<TestMutter> mutter;
};

TEST_F(MutterTest, thePointerOfAStillScreenIsToldAndNotInThePicture) {
    auto const desktop = shared(DisplaySource{});
    EXPECT_EQ(desktop.screen->size(), (Size2{320, 200}));
    auto const ground = at(desktop, 150, 90);
    for (auto const point : {PixelPoint{10, 20}, PixelPoint{148, 88}, PixelPoint{300, 190}, PixelPoint{148, 88}})
        EXPECT_TRUE(leadsPointerAlong(desktop, point));
    desktop.screen->grab(mediaClockNow());
    EXPECT_EQ(at(desktop, 150, 90), ground);
    EXPECT_THAT(desktop.events->limits(), testing::Not(testing::Contains(testing::HasSubstr("where the pointer is"))));
}

TEST_F(MutterTest, aWindowIsSharedByItselfWithThePointerInItsOwnPixels) {
    mutter->showWindow(120, 80, "#ff0000");
    mutter->share(2);
    // There is none to share before it has come up.
    std::optional<SharedDesktop> window;
    ASSERT_TRUE(eventually([&] {
        try {
            window = shared(WindowSource{1});
        } catch (CaptureError const&) {
        }
        return window.has_value();
    }));
    EXPECT_TRUE(shows(*window, 60, 40, red));
    EXPECT_EQ(window->screen->size(), (Size2{120, 80}));
    EXPECT_TRUE(leadsPointerAlong(*window, {30, 20}));
}

TEST_F(MutterTest, theApplicationInFrontIsToldByItsProgram) {
    mutter->session().startAccessibility();
    auto const desktop = shared(DisplaySource{});
    EXPECT_THAT(desktop.events->limits(), testing::Contains(testing::HasSubstr("which application is in front")));
    FrontLog log;
    desktop.events->start(log.handlers());
    std::optional<TestForm> one(std::in_place, mutter->session(), "one", TestForm::Widgets::told);
    EXPECT_TRUE(log.shows("one"));
    std::optional<TestForm> two(std::in_place, mutter->session(), "two", TestForm::Widgets::told);
    EXPECT_TRUE(log.shows("two"));
    two.reset();
    EXPECT_TRUE(log.shows("one"));
    one.reset();
    EXPECT_TRUE(log.shows(""));
    desktop.events->stop();
}

TEST_F(MutterTest, whatChangesIsSeenAlsoInAnAreaAndADeadCompositorIsALostScreen) {
    auto const area = shared(AreaSource{.rect = {100, 60, 120, 80}, .shape = AreaShape::free});
    EXPECT_NE(at(area, 60, 40), red);
    mutter->showWindow(320, 200, "#ff0000");
    EXPECT_TRUE(shows(area, 60, 40, red));
    EXPECT_EQ(area.screen->size(), (Size2{120, 80}));
    mutter->kill();
    EXPECT_TRUE(eventually([&] { return area.screen->grab(mediaClockNow()) == ScreenSource::Outcome::lost; }));
}

}

}
