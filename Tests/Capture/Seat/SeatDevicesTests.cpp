#include <TavaroCapture/Input/Private/SeatDevices.h>

#include "../TemporaryFolder.h"
#include "../TestDisplay.h"
#include "FakeKernel.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <linux/input-event-codes.h>
#include <list>

namespace tavaro::input {

namespace {

using Kind = InputEvent::Kind;
using testing::ElementsAre;
using testing::IsEmpty;
using Event = std::pair<Kind, std::uint32_t>;

class SeatDevicesTest : public testing::Test {
protected:
    FakeDevice& plug(FakeDevice::Kind kind) { return devices.emplace_back(folder.path(), kind); }
    void open(DeviceChoices const& choices = {}) { seat.emplace("seat0", choices); }
    void take() {
        seat->read([&](InputEvent const& event) { events.push_back(event); });
    }
    std::vector<Event> taken() {
        take();
        std::vector<Event> result;
        for (auto const& event : std::exchange(events, {})) result.emplace_back(event.kind, event.code);
        return result;
    }
    /// Some come a moment later than what makes them.
    std::vector<Event> taken(std::size_t count) {
        eventually([&] {
            take();
            return events.size() >= count;
        });
        return taken();
    }
    static void touch(FakeDevice& touchpad) {
        using C = FakeDevice::Change;
        touchpad.send({C{EV_ABS, ABS_MT_SLOT, 0}, C{EV_ABS, ABS_MT_TRACKING_ID, 7}, C{EV_ABS, ABS_MT_POSITION_X, 2000},
                       C{EV_ABS, ABS_MT_POSITION_Y, 800}, C{EV_ABS, ABS_X, 2000}, C{EV_ABS, ABS_Y, 800},
                       C{EV_KEY, BTN_TOUCH, 1}, C{EV_KEY, BTN_TOOL_FINGER, 1}});
    }
    static void letGo(FakeDevice& touchpad) {
        using C = FakeDevice::Change;
        touchpad.send({C{EV_ABS, ABS_MT_TRACKING_ID, -1}, C{EV_KEY, BTN_TOUCH, 0}, C{EV_KEY, BTN_TOOL_FINGER, 0}});
    }

    TemporaryFolder const folder;
    std::list<FakeDevice> devices;
    std::optional<SeatDevices> seat;
    std::vector<InputEvent> events;
};

}

TEST_F(SeatDevicesTest, keysAndButtonsComeWithTheKernelsStampAndNobodyElseLosesThem) {
    auto& keyboard = plug(FakeDevice::Kind::keyboard);
    auto& mouse = plug(FakeDevice::Kind::mouse);
    plug(FakeDevice::Kind::powerButton);
    open();
    EXPECT_EQ(seat->keyboards(), 1) << "nobody types on a power button";
    EXPECT_EQ(seat->pointers(), 1);
    EXPECT_TRUE(keyboard.isMonotonic() && mouse.isMonotonic());
    double const pressed = keyboard.key(KEY_A, true);
    double const released = keyboard.key(KEY_A, false);
    take();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_NEAR(events[0].at, pressed, 2e-6);
    EXPECT_NEAR(events[1].at, released, 2e-6);
    EXPECT_THAT(taken(), ElementsAre(Event{Kind::keyPress, KEY_A}, Event{Kind::keyRelease, KEY_A}));

    mouse.send({{EV_REL, REL_X, 3}, {EV_REL, REL_WHEEL, 1}});
    mouse.key(BTN_RIGHT, true), mouse.key(BTN_RIGHT, false);
    EXPECT_THAT(taken(2), ElementsAre(Event{Kind::buttonPress, BTN_RIGHT}, Event{Kind::buttonRelease, BTN_RIGHT}));
    EXPECT_FALSE(keyboard.isGrabbed() || mouse.isGrabbed());
    seat.reset();
    EXPECT_FALSE(keyboard.isOpen() || mouse.isOpen());
}

TEST_F(SeatDevicesTest, aKeyThatTwoKeyboardsHoldIsPressedOnce) {
    auto& one = plug(FakeDevice::Kind::keyboard);
    auto& other = plug(FakeDevice::Kind::keyboard);
    open();
    EXPECT_EQ(seat->keyboards(), 2);
    one.key(KEY_LEFTSHIFT, true);
    EXPECT_THAT(taken(), ElementsAre(Event{Kind::keyPress, KEY_LEFTSHIFT}));
    other.key(KEY_LEFTSHIFT, true);
    EXPECT_THAT(taken(), IsEmpty());
    one.key(KEY_LEFTSHIFT, false);
    EXPECT_THAT(taken(), IsEmpty());
    other.key(KEY_LEFTSHIFT, false);
    EXPECT_THAT(taken(), ElementsAre(Event{Kind::keyRelease, KEY_LEFTSHIFT}));
}

TEST_F(SeatDevicesTest, devicesComeAndGo) {
    open();
    EXPECT_EQ(seat->keyboards() + seat->pointers(), 0);
    auto& keyboard = plug(FakeDevice::Kind::keyboard);
    plug(FakeDevice::Kind::touchpad);
    EXPECT_TRUE(eventually([&] {
        take();
        return seat->keyboards() == 1 && seat->pointers() == 1;
    }));
    keyboard.key(KEY_B, true);
    EXPECT_THAT(taken(), ElementsAre(Event{Kind::keyPress, KEY_B}));
    devices.pop_front();
    EXPECT_THAT(taken(), ElementsAre(Event{Kind::keyRelease, KEY_B})) << "else it would be held for ever";
    EXPECT_EQ(seat->keyboards(), 0);
    EXPECT_EQ(seat->pointers(), 1);
}

TEST_F(SeatDevicesTest, tapsClickWhereTheUserSaysThatTheyDo) {
    auto& touchpad = plug(FakeDevice::Kind::touchpad);
    auto const click = ElementsAre(Event{Kind::buttonPress, BTN_LEFT}, Event{Kind::buttonRelease, BTN_LEFT});
    open({.countsTaps = true});
    touch(touchpad), letGo(touchpad);
    EXPECT_THAT(taken(2), click);
    seat.reset();
    open();
    touch(touchpad), letGo(touchpad);
    touch(touchpad);
    touchpad.key(BTN_LEFT, true), touchpad.key(BTN_LEFT, false); // pressed down: always one
    EXPECT_THAT(taken(2), click);
}

TEST_F(SeatDevicesTest, aLeftHandedMouseHasItsFirstButtonOnTheRight) {
    auto& mouse = plug(FakeDevice::Kind::mouse);
    open({.isLeftHanded = true});
    mouse.key(BTN_RIGHT, true);
    EXPECT_THAT(taken(1), ElementsAre(Event{Kind::buttonPress, BTN_LEFT}));
    devices.clear();
    EXPECT_THAT(taken(1), ElementsAre(Event{Kind::buttonRelease, BTN_LEFT})) << "unplugged with the button held";
}

TEST_F(SeatDevicesTest, withoutKeysKeyboardsAreNotOpen) {
    auto& keyboard = plug(FakeDevice::Kind::keyboard);
    auto& mouse = plug(FakeDevice::Kind::mouse);
    open({.readsKeys = false});
    EXPECT_FALSE(keyboard.isOpen());
    EXPECT_TRUE(mouse.isOpen());
    keyboard.key(KEY_A, true), mouse.key(BTN_LEFT, true);
    EXPECT_THAT(taken(1), ElementsAre(Event{Kind::buttonPress, BTN_LEFT}));
}

TEST_F(SeatDevicesTest, whatMayNotBeReadIsLeftOutAndALightTellsOfTheNumberPad) {
    auto& keyboard = plug(FakeDevice::Kind::keyboard);
    open();
    EXPECT_FALSE(seat->areNumbersLocked());
    seat.reset();
    keyboard.lightNumbers();
    auto& gone = plug(FakeDevice::Kind::keyboard);
    std::filesystem::remove(gone.file());
    open();
    EXPECT_TRUE(seat->areNumbersLocked());
    EXPECT_EQ(seat->keyboards(), 1);
}

}
