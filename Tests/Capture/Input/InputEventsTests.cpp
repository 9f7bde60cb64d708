#include <TavaroCapture/Input/Private/InputEvents.h>

#include "../Events/EventTake.h"
#include "../TemporaryFolder.h"
#include "FakeInput.h"
#include "TestCompositor.h"

#include <TavaroCapture/Secrets/Private/GuardedEvents.h>
#include <TavaroCore/Recording/SettledRecording.h>

#include <gmock/gmock.h>
#include <linux/input-event-codes.h>
#include <random>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

namespace tavaro::input {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Keys = std::vector<std::string>;

/// A take of the area {100, 100, 400, 200} whose clicks and keys are a seat's.
class InputEventsTest : public testing::Test {
protected:
    void SetUp() override { unsetenv("WAYLAND_DISPLAY"); }

    void begin(KeyLogging logging = KeyLogging::all) {
        auto events = std::make_unique<InputEvents>(
            desktopOf(pointer), InputEvents::Options{.devices = devicesOf(seat),
                                                     .keymap = CompositorKeymap::open(),
                                                     .keys = logging,
                                                     .isAway = [this] { return isAway && ++timesAway > 0; }});
        // Of no processes, so that what else this machine runs asks for no secrets.
        auto guarded = std::make_unique<GuardedEvents>(std::move(events), LoggedKeys{logging}, nullptr,
                                                       TerminalPrompts(processes.path()));
        clock.start(mediaClockNow());
        recorder.emplace(std::move(guarded), PixelRect{100, 100, 400, 200}, clock, queue);
        recorder->start();
    }
    RecordingMetadata log() { return recorder->metadata(1000); }
    bool sees(std::function<bool(RecordingMetadata const&)> const& isSo) {
        return eventually([&] { return isSo(log()); });
    }
    bool hasKeys(std::size_t count) {
        return sees([=](RecordingMetadata const& log) { return log.keystrokes.size() >= count; });
    }
    bool hasClicks(std::size_t count) {
        return sees([=](RecordingMetadata const& log) { return log.clicks.size() >= count; });
    }
    std::vector<Keys> loggedKeys() {
        std::vector<Keys> result;
        for (auto const& stroke : log().keystrokes) result.push_back(stroke.keys);
        return result;
    }

    std::shared_ptr<FakeSeat> const seat = std::make_shared<FakeSeat>();
    std::shared_ptr<FakePointer> const pointer = std::make_shared<FakePointer>();
    std::atomic<bool> isAway = false;
    std::atomic<int> timesAway = 0; // keys and buttons of others that were read
    TemporaryFolder const processes;
    TakeClock clock;
    SerialQueue queue{"test.samples"};
    std::optional<EventRecorder> recorder;
};

}

TEST_F(InputEventsTest, aClickIsWhereTheDesktopSaysThatThePointerIsByThen) {
    begin();
    pointer->move(PixelPoint{200, 150});
    double const pressed = seat->pressButton(BTN_LEFT);
    pointer->move(PixelPoint{300, 200}); // told with the picture after the press, which it belongs to
    ASSERT_TRUE(hasClicks(1));
    seat->releaseButton(BTN_LEFT);
    auto const click = log().clicks.front();
    EXPECT_EQ(click.position, (UnitPoint2{0.5, 0.5}));
    EXPECT_NEAR(click.t, clock.time(pressed).value(), 1e-6) << "when it was pressed, not when its place was known";
    EXPECT_FALSE(click.application);

    for (auto const button : {BTN_RIGHT, BTN_MIDDLE, BTN_SIDE}) seat->pressButton(button), seat->releaseButton(button);
    seat->pressButton(BTN_TOUCH), seat->releaseButton(BTN_TOUCH);
    ASSERT_TRUE(hasClicks(4));
    std::vector<MouseButton> buttons;
    for (auto const& each : log().clicks) buttons.push_back(each.button);
    EXPECT_THAT(buttons, ElementsAre(MouseButton::left, MouseButton::right, MouseButton::middle, MouseButton::middle));
}

TEST_F(InputEventsTest, clicksAndKeysGoToTheApplicationInFront) {
    begin();
    pointer->move(PixelPoint{200, 150});
    for (auto const* const name : {"Files", "Editor", ""}) {
        pointer->told.frontmost(*name ? FrontWindow{.application = ApplicationIdentity{"org.example", name}}
                                      : FrontWindow());
        auto const clicks = log().clicks.size();
        seat->pressButton(BTN_LEFT), seat->releaseButton(BTN_LEFT);
        ASSERT_TRUE(hasClicks(clicks + 1));
        seat->tap(KEY_A);
        ASSERT_TRUE(hasKeys(clicks + 1));
        EXPECT_EQ(log().clicks.back().application.value_or(""), name);
        EXPECT_EQ(log().keystrokes.back().application.value_or(""), name);
    }
    EXPECT_THAT(log().appSpans, testing::SizeIs(2));
}

TEST_F(InputEventsTest, aPressThatTravelsIsADragToItsRelease) {
    begin();
    pointer->move(PixelPoint{200, 150});
    seat->pressButton(BTN_LEFT);
    ASSERT_TRUE(hasClicks(1));
    pointer->move(PixelPoint{260, 150});
    double const released = seat->releaseButton(BTN_LEFT);
    ASSERT_TRUE(sees([](auto const& log) { return log.clicks.front().dragEnd.has_value(); }));
    EXPECT_TRUE(log().clicks.front().isDrag);
    EXPECT_NEAR(*log().clicks.front().dragEnd, clock.time(released).value(), 1e-6);
}

TEST_F(InputEventsTest, withoutAPointerThereAreKeysButNoClicks) {
    begin();
    pointer->move(std::nullopt);
    seat->pressButton(BTN_LEFT), seat->releaseButton(BTN_LEFT);
    seat->tap(KEY_A);
    ASSERT_TRUE(hasKeys(1));
    recorder->stop(1000);
    EXPECT_THAT(log().clicks, IsEmpty());
    EXPECT_TRUE(recorder->keyboardCaptured());
}

TEST_F(InputEventsTest, modifiersThatAreHeldWhenTheTakeBeginsCountAndTheirPressIsNoKey) {
    seat->press(KEY_LEFTMETA), seat->press(KEY_LEFTSHIFT), seat->tap(KEY_X);
    begin();
    seat->tap(KEY_4);
    ASSERT_TRUE(hasKeys(1));
    EXPECT_THAT(loggedKeys(), ElementsAre(Keys{"⇧", "⌘", "4"}));
    EXPECT_TRUE(log().keystrokes.front().isShortcut);
}

TEST_F(InputEventsTest, whatOthersTypeAtTheSeatIsNotLogged) {
    begin();
    pointer->move(PixelPoint{200, 150});
    seat->press(KEY_LEFTSHIFT), seat->tap(KEY_A);
    ASSERT_TRUE(hasKeys(1));
    isAway = true;
    seat->tap(KEY_S), seat->pressButton(BTN_LEFT), seat->releaseButton(BTN_LEFT);
    seat->release(KEY_LEFTSHIFT);
    ASSERT_TRUE(eventually([&] { return timesAway == 3; }));
    queue.sync([] {});
    isAway = false;
    seat->tap(KEY_B);
    ASSERT_TRUE(hasKeys(2));
    recorder->stop(1000);
    EXPECT_THAT(loggedKeys(), ElementsAre(Keys{"⇧", "a"}, Keys{"b"}));
    EXPECT_THAT(log().clicks, IsEmpty());
}

TEST_F(InputEventsTest, withoutTypingShortcutsStayAndWithoutKeysNothing) {
    begin(KeyLogging::shortcuts);
    seat->tap(KEY_A), seat->press(KEY_LEFTCTRL), seat->tap(KEY_C), seat->release(KEY_LEFTCTRL), seat->tap(KEY_B);
    ASSERT_TRUE(hasKeys(1));
    recorder->stop(1000);
    EXPECT_THAT(loggedKeys(), ElementsAre(Keys{"⌃", "c"}));

    recorder.reset();
    begin(KeyLogging::none);
    pointer->move(PixelPoint{200, 150});
    seat->tap(KEY_A), seat->pressButton(BTN_LEFT);
    ASSERT_TRUE(hasClicks(1));
    recorder->stop(1000);
    EXPECT_THAT(loggedKeys(), IsEmpty());
    EXPECT_FALSE(recorder->keyboardCaptured());
}

TEST_F(InputEventsTest, aKeyboardThatIsPluggedInDuringTheTakeIsHeard) {
    seat->keyboards = 0;
    begin();
    EXPECT_FALSE(recorder->keyboardCaptured());
    seat->keyboards = 1;
    seat->tap(KEY_A);
    ASSERT_TRUE(hasKeys(1));
    EXPECT_TRUE(recorder->keyboardCaptured());
}

TEST_F(InputEventsTest, aNumberPadThatMakesDigitsDoesSoFromTheBeginning) {
    seat->areNumbersLocked = true;
    begin();
    seat->tap(KEY_KP7), seat->tap(KEY_NUMLOCK), seat->tap(KEY_KP7);
    ASSERT_TRUE(hasKeys(2));
    EXPECT_THAT(loggedKeys(), ElementsAre(Keys{"7"}, Keys{"Home"}));
}

TEST_F(InputEventsTest, theLayoutIsTheDesktopsAlsoWhenTheUserChangesIt) {
    TestCompositor compositor("de");
    begin();
    seat->tap(KEY_Z), seat->tap(KEY_SEMICOLON), seat->press(KEY_LEFTCTRL);
    ASSERT_TRUE(hasKeys(2)); // some time later: all of it has been read
    compositor.use("fr");
    seat->tap(KEY_Q), seat->release(KEY_LEFTCTRL);
    ASSERT_TRUE(hasKeys(3));
    compositor.end();
    seat->tap(KEY_Q);
    ASSERT_TRUE(hasKeys(4));
    EXPECT_THAT(loggedKeys(), ElementsAre(Keys{"y"}, Keys{"ö"}, Keys{"⌃", "a"}, Keys{"a"}));
}

/// The layout of an X server's keyboard.
std::string keymapOf(x11::Connection& connection) {
    xkb_x11_setup_xkb_extension(connection.get(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, nullptr, nullptr);
    auto* const context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    auto* const keymap = xkb_x11_keymap_new_from_device(
        context, connection.get(), xkb_x11_get_core_keyboard_device_id(connection.get()), XKB_KEYMAP_COMPILE_NO_FLAGS);
    char* const text = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
    std::string result = text;
    free(text);
    xkb_keymap_unref(keymap);
    xkb_context_unref(context);
    return result;
}

using KeyParityTest = EventTake;

TEST_F(KeyParityTest, aSeatsKeysAreLoggedAsAnXServersAre) {
    TemporaryFolder const processes;
    auto const seat = std::make_shared<FakeSeat>();
    auto const compositor = TestCompositor::withKeymap(keymapOf(client->connection()));
    auto events = std::make_unique<InputEvents>(
        desktopOf(std::make_shared<FakePointer>()),
        InputEvents::Options{.devices = devicesOf(seat), .keymap = CompositorKeymap::open()});
    unsetenv("WAYLAND_DISPLAY"); // the server is what the other take is of
    SerialQueue otherQueue("test.other-samples");
    begin();
    EventRecorder other(std::move(events), {100, 100, 400, 200}, clock, otherQueue);
    other.start();

    constexpr std::uint8_t first = 38, mark = 96;           // a, F12
    std::vector<std::uint8_t> keycodes{105, 108, 133, 134}; // the right control, AltGr, both logos
    for (std::uint8_t keycode = 9; keycode < mark; ++keycode) keycodes.push_back(keycode);
    std::mt19937 random(20261122);
    std::vector<std::uint8_t> held;
    auto const send = [&](std::uint8_t keycode, bool isPressed) {
        xcb_test_fake_input(client->connection().get(), isPressed ? XCB_KEY_PRESS : XCB_KEY_RELEASE, keycode,
                            XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        client->connection().synchronize();
        seat->send(isPressed ? InputEvent::Kind::keyPress : InputEvent::Kind::keyRelease, keycode - 8u);
    };
    auto const hasLast = [&](std::string const& key) {
        auto const isLast = [&](RecordingMetadata const& log) {
            return !log.keystrokes.empty() && log.keystrokes.back().keys.back() == key;
        };
        return eventually([&] { return isLast(log()) && isLast(other.metadata(1000)); });
    };
    send(first, true), send(first, false); // the server makes the test's keyboard its own with the first key
    ASSERT_TRUE(hasLast("a"));
    for (int i = 0; i < 400; ++i) {
        bool const isRelease = !held.empty() && random() % 2 == 0;
        if (isRelease) {
            auto const at = held.begin() + static_cast<std::ptrdiff_t>(random() % held.size());
            send(*at, false);
            held.erase(at);
        } else {
            auto const keycode = keycodes[random() % keycodes.size()];
            if (held.size() == 4 || std::ranges::find(held, keycode) != held.end()) continue;
            send(keycode, true);
            held.push_back(keycode);
        }
    }
    for (auto const keycode : held) send(keycode, false);
    send(mark, true), send(mark, false);

    auto const names = [](RecordingMetadata const& log) {
        std::vector<Keys> result;
        for (auto const& stroke : log.keystrokes) result.push_back(stroke.keys);
        return result;
    };
    EXPECT_TRUE(hasLast("F12"));
    EXPECT_EQ(names(log()), names(other.metadata(1000)));
    EXPECT_GT(names(log()).size(), 80u);
}

}
