#include "SharedPictures.h"

#include "../TestMouse.h"
#include "../TestSway.h"

#include <TavaroCapture/Devices/ListSources.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <gmock/gmock.h>

namespace tavaro::wayland {

namespace {

using testing::Contains;
using testing::HasSubstr;

class SwayTest : public testing::Test, public SharedPictures {
protected:
    void SetUp() override {
        if (!TestSway::isInstalled()) GTEST_SKIP() << "sway, its portal or PipeWire is not installed";
        sway.emplace(320, 200);
    }

    std::optional<TestSway> sway;
};

TEST_F(SwayTest, aScreenOnWhichNothingChangesHasAPictureWheneverItIsShared) {
    for (int i = 0; i < 6; ++i) {
        double const asked = mediaClockNow();
        auto const desktop = shareDesktop(DisplaySource{}, 60);
        EXPECT_LT(mediaClockNow() - asked, 2.5);
        EXPECT_EQ(desktop.screen->size(), (Size2{320, 200}));
        EXPECT_EQ(desktop.screen->grab(mediaClockNow()), ScreenSource::Outcome::changed);
        EXPECT_EQ(at(desktop, 0, 0), at(desktop, 319, 199)); // what was put there to have it drawn is not to be seen
    }
}

TEST_F(SwayTest, whatChangesIsSeenAlsoInAnArea) {
    // One after the other: its portal gives two who share one screen at once the pictures of neither reliably.
    auto whole = std::make_optional(shared(DisplaySource{}));
    auto const ground = at(*whole, 5, 190);
    sway->showBar("ff0000");
    EXPECT_TRUE(shows(*whole, 5, 3, red));
    whole.reset();

    auto const area = shared(AreaSource{.rect = {10, 4, 300, 100}, .shape = AreaShape::free});
    EXPECT_TRUE(shows(area, 1, 1, red));
    EXPECT_EQ(at(area, 1, 99), ground);
    sway->showBar("00ff00");
    EXPECT_TRUE(shows(area, 1, 1, green));
}

TEST_F(SwayTest, thePointerIsAPartOfThePictureAndTheTakeSaysSo) {
    auto const desktop = shared(DisplaySource{});
    auto const ground = at(desktop, 160, 100);
    TestMouse mouse;
    mouse.moveTo(5, 5, 320, 200);
    EXPECT_TRUE(shows(desktop, 160, 100, ground));
    mouse.moveTo(156, 94, 320, 200);
    EXPECT_TRUE(eventually([&] {
        desktop.screen->grab(mediaClockNow());
        return at(desktop, 160, 100) != ground;
    }));
    EXPECT_EQ(desktop.events->pointer(), std::nullopt);
    EXPECT_THAT(desktop.events->limits(), Contains(HasSubstr("part of the picture")));
}

TEST_F(SwayTest, aScreenThatChangesItsSizeGoesOnAndOneWhoseCompositorDiesIsLost) {
    auto const desktop = shareDesktop(DisplaySource{}, 60);
    sway->showBar("ff0000");
    EXPECT_TRUE(shows(desktop, 5, 3, red));
    sway->order("output * mode 200x160@60Hz");
    sway->showBar("00ff00");
    EXPECT_TRUE(shows(desktop, 5, 3, green));
    EXPECT_TRUE(shows(desktop, 210, 3, Color{0, 0, 0})); // beyond it
    EXPECT_EQ(desktop.screen->size(), (Size2{320, 200}));

    sway->kill();
    EXPECT_TRUE(eventually([&] { return desktop.screen->grab(mediaClockNow()) == ScreenSource::Outcome::lost; }));
}

TEST_F(SwayTest, whatItCannotGiveIsListed) {
    auto const all = listSources();
    ASSERT_EQ(all.displays.size(), 1u);
    EXPECT_THAT(all.windows, testing::IsEmpty());
    EXPECT_THAT(all.limits, Contains(HasSubstr("part of the picture")));
    EXPECT_THAT(all.limits, Contains(HasSubstr("no single windows")));
    EXPECT_THROW(shareDesktop(WindowSource{1}, 60), CaptureError);
}

}

}
