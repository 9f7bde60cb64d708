#include "FrontLog.h"
#include "SharedPictures.h"

#include "../Input/FakeInput.h"
#include "../TemporaryFolder.h"
#include "../TestForm.h"
#include "../TestKeyboard.h"
#include "../TestMouse.h"
#include "../TestSway.h"

#include <TavaroCapture/Devices/ListSources.h>
#include <TavaroCapture/Input/Private/InputEvents.h>
#include <TavaroCapture/Secrets/Private/GuardedEvents.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <gmock/gmock.h>
#include <linux/input-event-codes.h>
#include <unistd.h>

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

    /// Once its window is there.
    bool bringsToFront(std::string const& name) const {
        return eventually([&] {
            usleep(50'000);
            return sway->obeys("[app_id=\"" + name + "\"] focus");
        });
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

TEST_F(SwayTest, theApplicationInFrontIsToldAsItChanges) {
    auto const desktop = shareDesktop(DisplaySource{}, 60);
    FrontLog log;
    desktop.events->start(log.handlers());
    TestForm const one(sway->session(), "one");
    ASSERT_TRUE(bringsToFront("one") && log.shows("one"));
    // Only then, since a new window takes the keyboard when it comes.
    std::optional<TestForm> two(std::in_place, sway->session(), "two");
    ASSERT_TRUE(bringsToFront("two") && log.shows("two"));
    EXPECT_TRUE(bringsToFront("one") && log.shows("one"));
    EXPECT_TRUE(bringsToFront("two") && log.shows("two"));
    two.reset();
    EXPECT_TRUE(log.shows("one"));
    desktop.events->stop();
}

TEST_F(SwayTest, noKeyIsLoggedWhileAPasswordFieldHasTheKeyboard) {
    sway->session().startAccessibility();
    TestKeyboard keyboard;
    TestForm const form(sway->session(), "form", TestForm::Widgets::told);
    ASSERT_TRUE(bringsToFront("form"));
    auto const seat = std::make_shared<FakeSeat>();
    // Of no processes, so that what else this machine runs asks for no secrets.
    TemporaryFolder const processes;
    GuardedEvents events(std::make_unique<input::InputEvents>(
                             shareDesktop(DisplaySource{}, 60).events,
                             input::InputEvents::Options{.devices = devicesOf(seat), .keymap = nullptr}),
                         {}, std::make_unique<FieldFocus>(atspi::openBus(atspi::busAddress({}))),
                         TerminalPrompts(processes.path()));
    FrontLog log;
    events.start(log.handlers());
    ASSERT_TRUE(log.shows("form"));
    auto const isLogged = [&](std::uint32_t key, std::string const& name) {
        return eventually([&] {
            seat->tap(key);
            usleep(20'000);
            return log.keys().ends_with(name);
        });
    };
    EXPECT_TRUE(isLogged(KEY_A, "a"));
    keyboard.tap(KEY_TAB); // to the password
    usleep(300'000);
    for (int i = 0; i < 5; ++i) seat->tap(KEY_S), usleep(50'000);
    keyboard.tap(KEY_TAB); // and round to the open one
    EXPECT_TRUE(isLogged(KEY_B, "b"));
    EXPECT_EQ(log.keys().find('s'), std::string::npos) << log.keys();
    events.stop();
}

TEST_F(SwayTest, whatItCannotGiveIsListed) {
    auto const all = listSources();
    ASSERT_EQ(all.displays.size(), 1u);
    EXPECT_THAT(all.windows, testing::IsEmpty());
    EXPECT_THAT(all.limits, Contains(HasSubstr("part of the picture")));
    EXPECT_THAT(all.limits, Contains(HasSubstr("no single windows")));
    EXPECT_THAT(all.limits, testing::Not(Contains(HasSubstr("in front"))));
    EXPECT_THROW(shareDesktop(WindowSource{1}, 60), CaptureError);
}

}

}
