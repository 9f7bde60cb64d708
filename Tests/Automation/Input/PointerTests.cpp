#include "UsersKeyboard.h"

#include <TavaroAutomation/Driving/UIAutomation.h>
#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Input/Private/Pointer.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <future>
#include <gmock/gmock.h>
#include <thread>

namespace tavaro {

namespace {

using namespace std::chrono_literals;
using ::testing::Throws;
using ::testing::ThrowsMessage;
using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

}

/// A pointer on a display of 640 × 480, and a window over all of it that sees what is pressed.
class PointerTest : public DisplayTest {
protected:
    void SetUp() override {
        DisplayTest::SetUp();
        if (IsSkipped()) return;
        window = client->makeWindow({.frame = {0, 0, 640, 480}, .windowClass = "Sink"});
        std::uint32_t const mask = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE;
        xcb_change_window_attributes(client->connection().get(), window, XCB_CW_EVENT_MASK, &mask);
        client->connection().synchronize();
        pointer.emplace(display->name());
    }

    /// "press 1", "release 1" …
    std::vector<std::string> presses() {
        client->connection().synchronize();
        while (auto const event = client->connection().poll()) {
            auto const type = event->response_type & 0x7f;
            if (type != XCB_BUTTON_PRESS && type != XCB_BUTTON_RELEASE) continue;
            auto const& press = reinterpret_cast<xcb_button_press_event_t const&>(*event);
            seen.push_back((type == XCB_BUTTON_PRESS ? "press " : "release ") + std::to_string(press.detail) +
                           (press.state & XCB_MOD_MASK_CONTROL ? " with Control" : ""));
        }
        return seen;
    }
    PixelPoint place() {
        auto const at =
            client->connection().ask<xcb_query_pointer, xcb_query_pointer_reply>(client->connection().root());
        return {at->root_x, at->root_y};
    }
    std::uint16_t buttonsHeld() {
        auto const at =
            client->connection().ask<xcb_query_pointer, xcb_query_pointer_reply>(client->connection().root());
        return at->mask & 0x1f00;
    }
    /// What a long glide ends with, and how many seconds after `disturb` it did.
    std::pair<AutomationError::Kind, double> disturbed(std::function<void()> const& disturb,
                                                       std::stop_token const& stop = {}) {
        pointer->glide({10, 10}, 0);
        auto kind = std::async(std::launch::async, [&] {
            try {
                pointer->glide({600, 400}, 5, stop);
            } catch (AutomationError const& error) {
                return error.kind;
            }
            return AutomationError::Kind::failed;
        });
        eventually([&] { return place() != PixelPoint{10, 10}; }); // the glide is under way
        auto const start = Clock::now();
        disturb();
        auto const result = kind.get();
        return {result, secondsSince(start)};
    }
    /// The median of a few, for a busy machine is late now and then.
    double secondsUntilUserMoved(std::function<void()> const& disturb, std::function<void()> const& afterwards) {
        std::vector<double> all;
        for (int i = 0; i < 5; ++i) {
            auto const [kind, seconds] = disturbed(disturb);
            EXPECT_EQ(kind, AutomationError::Kind::userMoved);
            all.push_back(seconds);
            afterwards();
        }
        std::ranges::nth_element(all, all.begin() + 2);
        return all[2];
    }

    std::uint32_t window = 0;
    std::optional<Pointer> pointer;
    std::vector<std::string> seen;
};

TEST_F(PointerTest, aGlideEndsOnItsTargetInItsTime) {
    for (UIPoint const to : {UIPoint{500, 300}, {20, 450}, {20, 450}, {639, 0}, {0, 0}}) {
        auto const start = Clock::now();
        pointer->glide(to, 0.2);
        EXPECT_EQ(place(), (PixelPoint{static_cast<int>(to.x), static_cast<int>(to.y)}));
        EXPECT_GE(secondsSince(start), 0.2);
    }
}

TEST_F(PointerTest, whatIsOnNoDisplayIsRefusedAsTheDisplaysAreNow) {
    pointer->glide({20, 30}, 0);
    EXPECT_THAT(
        [&] {
            pointer->glide({5000, -90}, 0.05);
        },
        ThrowsMessage<AutomationError>(std::string("5000, -90 is on no display. Displays cover x 0–639, y 0–479.")));
    client->resizeDesktop(400, 300);
    EXPECT_THAT(
        [&] {
            pointer->glide({500, 20}, 0.05);
        },
        ThrowsMessage<AutomationError>(std::string("500, 20 is on no display. Displays cover x 0–399, y 0–299.")));
    EXPECT_EQ(place(), (PixelPoint{20, 30}));
}

TEST_F(PointerTest, aDisplayThatGoesDuringAGlideIsNoMotionOfTheUsers) {
    pointer->glide({10, 10}, 0);
    auto gliding = std::async(std::launch::async, [&] { pointer->glide({600, 400}, 5); });
    ASSERT_TRUE(eventually([&] { return place().x > 20; }));
    client->resizeDesktop(200, 150);
    EXPECT_THAT([&] { gliding.get(); }, ThrowsMessage<AutomationError>(std::string("Stopped: the displays changed.")));
    pointer->glide({100, 100}, 0.05);
    EXPECT_EQ(place(), (PixelPoint{100, 100})) << "the next one works";
}

TEST_F(PointerTest, whatMovedMeanwhileIsFollowed) {
    int asked = 0;
    pointer->glide({100, 100}, 0.05, {}, [&]() -> std::optional<UIPoint> {
        return ++asked == 1 ? UIPoint{120, 130} : UIPoint{122, 130};
    });
    EXPECT_EQ(place(), (PixelPoint{122, 130}));
    EXPECT_EQ(asked, 3);
    pointer->glide({50, 50}, 0.05, {}, [] { return std::nullopt; });
    EXPECT_EQ(place(), (PixelPoint{50, 50})) << "a target that is not known any more";
}

TEST_F(PointerTest, aMenuIsEnteredAtItsNearestEdge) {
    auto const other = client->makeWindow({.frame = {100, 0, 60, 20}, .windowClass = "Title", .isPopup = true});
    client->makeWindow({.frame = {40, 22, 300, 200}, .windowClass = "Menu", .isPopup = true});
    std::uint32_t const mask = XCB_EVENT_MASK_ENTER_WINDOW;
    xcb_change_window_attributes(client->connection().get(), other, XCB_CW_EVENT_MASK, &mask);
    client->connection().synchronize();
    pointer->glide({70, 15}, 0);
    pointer->glide({300, 40}, 0.3); // the straight way passes over the title beside it
    client->connection().synchronize();
    while (auto const event = client->connection().poll())
        EXPECT_NE(event->response_type & 0x7f, XCB_ENTER_NOTIFY) << "it passed over the title of another menu";
    EXPECT_EQ(place(), (PixelPoint{300, 40}));
}

TEST_F(PointerTest, theUsersMouseStopsAGlideAtOnce) {
    PixelPoint moved;
    // A hand moves it more than once, here each time by a single pixel. One alone may come just between a look and the
    // next step.
    auto const moveByHand = [&] {
        for (int i = 0; i < 3; ++i) {
            moved = place();
            moved.x += 1;
            client->movePointer(moved.x, moved.y);
            std::this_thread::sleep_for(5ms);
        }
    };
    auto const staysThere = [&] { EXPECT_LT(std::abs(place().x - moved.x), 30) << "where the user has it"; };
    EXPECT_LT(secondsUntilUserMoved(moveByHand, staysThere), 0.05);
    pointer->glide({300, 300}, 0.05);
    EXPECT_EQ(place(), (PixelPoint{300, 300})) << "the next one works";
}

TEST_F(PointerTest, aButtonThatTheUserHoldsStopsAGlideToo) {
    EXPECT_LT(secondsUntilUserMoved([&] { client->button(1, true); }, [&] { client->button(1, false); }), 0.05);
}

TEST_F(PointerTest, cancellingStopsAGlide) {
    std::stop_source stop;
    auto const [kind, seconds] = disturbed([&] { stop.request_stop(); }, stop.get_token());
    EXPECT_EQ(kind, AutomationError::Kind::cancelled);
    EXPECT_LT(seconds, 1) << "of five";
}

TEST_F(PointerTest, clicksPressAndReleaseAsOftenAsAsked) {
    pointer->glide({300, 200}, 0);
    pointer->click(UIMouseButton::left, 1);
    EXPECT_EQ(presses(), (std::vector<std::string>{"press 1", "release 1"}));
    seen.clear();
    pointer->click(UIMouseButton::right, 3);
    EXPECT_EQ(presses(),
              (std::vector<std::string>{"press 3", "release 3", "press 3", "release 3", "press 3", "release 3"}));
}

TEST_F(PointerTest, swappedButtonsClickAsTheUserMeansThem) {
    std::vector<std::uint8_t> const leftHanded{3, 2, 1, 4, 5, 6, 7, 8, 9, 10};
    auto const reply = client->connection().ask<xcb_set_pointer_mapping, xcb_set_pointer_mapping_reply>(
        static_cast<std::uint8_t>(leftHanded.size()), leftHanded.data());
    ASSERT_TRUE(reply && reply->status == XCB_MAPPING_STATUS_SUCCESS);
    pointer->glide({300, 200}, 0);
    pointer->click(UIMouseButton::left, 1);
    EXPECT_EQ(presses(), (std::vector<std::string>{"press 1", "release 1"}));
}

TEST_F(PointerTest, noButtonStaysPressedAfterWhateverEndsAClick) {
    pointer->glide({300, 200}, 0);
    for (auto const delay : {5ms, 30ms, 90ms, 130ms, 200ms}) {
        std::stop_source stop;
        auto clicking =
            std::async(std::launch::async, [&] { pointer->click(UIMouseButton::left, 3, stop.get_token()); });
        clicking.wait_for(delay);
        stop.request_stop();
        EXPECT_THROW(clicking.get(), AutomationError);
        EXPECT_EQ(buttonsHeld(), 0) << delay.count();
    }
    client->button(1, true); // as a program leaves it that is killed in the middle
    client->key("Alt_L", true);
    pointer->glide({200, 200}, 0.1);
    pointer->click(UIMouseButton::left, 1);
    EXPECT_EQ(buttonsHeld(), 0);
    presses();
    EXPECT_EQ(std::vector(seen.end() - 4, seen.end()),
              (std::vector<std::string>{"press 1", "release 1", "press 1", "release 1"}));
}

TEST_F(PointerTest, aModifierThatTheUserHoldsIsWaitedForBeforeAClickAndAWheel) {
    UsersKeyboard user(*client);
    pointer->glide({300, 200}, 0);
    auto const whileHeld = [&](std::function<void()> const& action) {
        user.key("Control_L", true);
        auto acting = std::async(std::launch::async, action);
        EXPECT_EQ(acting.wait_for(120ms), std::future_status::timeout);
        EXPECT_TRUE(presses().empty());
        user.key("Control_L", false);
        acting.get();
    };
    whileHeld([&] { pointer->click(UIMouseButton::left, 1); });
    EXPECT_EQ(presses(), (std::vector<std::string>{"press 1", "release 1"}));
    seen.clear();
    whileHeld([&] { pointer->scroll({.down = 50}); });
    EXPECT_EQ(presses().front(), "press 5");
}

TEST_F(PointerTest, whatIsBehindAWindowThatGoesGetsNoFurtherClick) {
    auto const other = client->makeWindow({.frame = {100, 100, 100, 100}, .windowClass = "Goes"});
    pointer->glide({150, 150}, 0);
    auto clicking = std::async(std::launch::async, [&] { pointer->click(UIMouseButton::left, 3); });
    ASSERT_TRUE(eventually([&] { return buttonsHeld() != 0; }));
    client->destroy(other);
    EXPECT_THAT([&] { clicking.get(); }, ThrowsMessage<AutomationError>(std::string(
                                             "The window there went after 1 of 3 clicks, so no more were made.")));
    EXPECT_EQ(buttonsHeld(), 0);
    EXPECT_THAT(presses(), ::testing::Not(::testing::Contains("press 1"))) << "the window behind";
}

TEST_F(PointerTest, whoTakesTheMouseBetweenTheGlideAndTheEndOfTheClickStopsIt) {
    auto const stopped =
        Throws<AutomationError>(::testing::Field(&AutomationError::kind, AutomationError::Kind::userMoved));
    pointer->glide({100, 100}, 0);
    client->movePointer(150, 120);
    EXPECT_THAT([&] { pointer->click(UIMouseButton::left, 1); }, stopped);
    EXPECT_TRUE(presses().empty()) << "at the user's place";
    pointer->glide({100, 100}, 0);
    auto clicking = std::async(std::launch::async, [&] { pointer->click(UIMouseButton::left, 2); });
    ASSERT_TRUE(eventually([&] { return buttonsHeld() != 0; }));
    client->movePointer(150, 120);
    EXPECT_THAT([&] { clicking.get(); }, stopped);
    EXPECT_EQ(presses(), (std::vector<std::string>{"press 1", "release 1"}));
}

TEST_F(PointerTest, aDisplayThatGoesAwayEndsAGlideWithASentence) {
    pointer->glide({10, 10}, 0);
    auto const gone = ThrowsMessage<AutomationError>(std::string("The display went away."));
    auto gliding = std::async(std::launch::async, [&] { pointer->glide({600, 400}, 5); });
    eventually([&] { return place().x > 10; });
    client.reset();
    display->kill();
    EXPECT_THAT([&] { gliding.get(); }, gone);
    EXPECT_THAT([&] { pointer->glide({20, 20}, 0.1); }, gone) << "also before it begins";
    EXPECT_THAT([&] { pointer->click(UIMouseButton::left, 1); }, gone);
    EXPECT_THAT([&] { pointer->scroll({.down = 10}); }, gone);
}

TEST(WithoutDisplay, pointerAndApplicationsSayWhatIsMissingAndWhatToUse) {
    for (auto const* const name : {"DISPLAY", "WAYLAND_DISPLAY"}) unsetenv(name);
    auto const sentenceOf = [](auto begin) {
        try {
            begin();
        } catch (AutomationError const& error) {
            EXPECT_EQ(error.kind, AutomationError::Kind::noDisplay);
            return std::string(error.what());
        }
        return std::string("it works");
    };
    auto const sentence = [&] {
        auto const ofPointer = sentenceOf([] { Pointer const pointer; });
        EXPECT_EQ(sentenceOf([] { UIAutomation const automation; }), ofPointer);
        return ofPointer;
    };
    EXPECT_NE(sentence().find("DISPLAY is not set"), std::string::npos) << sentence();
    setenv("WAYLAND_DISPLAY", "wayland-0", 1);
    EXPECT_NE(sentence().find("Wayland"), std::string::npos) << sentence();
    EXPECT_NE(sentence().find("Xvfb"), std::string::npos) << sentence();
    unsetenv("WAYLAND_DISPLAY");
}

}
