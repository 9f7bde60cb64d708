#include "EventTake.h"

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/X11/GlobalKey.h>

#include <atomic>

namespace tavaro {

namespace {

using Keys = std::vector<std::string>;

}

class EventRecorderTest : public EventTake {};

TEST_F(EventRecorderTest, clicksCarryTheirPlaceButtonApplicationAndWindow) {
    client->makeWindow({.frame = {200, 150, 100, 50}, .windowClass = "Painter", .color = 0xffffff});
    begin();
    client->movePointer(220, 160);
    for (int button : {1, 3, 2, 4, 5}) client->button(button, true), client->button(button, false);
    ASSERT_TRUE(sees([](auto const& log) { return log.clicks.size() == 3; })) << "the wheel's buttons are no clicks";
    client->movePointer(20, 160); // on the bare desktop, left of the captured area
    client->button(1, true), client->button(1, false);
    ASSERT_TRUE(sees([](auto const& log) { return log.clicks.size() == 4; }));
    auto const clicks = log().clicks;
    EXPECT_EQ(clicks[0].position, (UnitPoint2{0.3, 0.3}));
    EXPECT_EQ(clicks[0].application, "Painter");
    EXPECT_EQ(clicks[0].windowFrame, (NormalizedRect{0.25, 0.25, 0.25, 0.25}));
    EXPECT_EQ(clicks[0].button, MouseButton::left);
    EXPECT_EQ(clicks[1].button, MouseButton::right);
    EXPECT_EQ(clicks[2].button, MouseButton::middle);
    EXPECT_EQ(clicks[3].position.x, 0) << "outside: on the nearest edge";
    EXPECT_FALSE(clicks[3].windowFrame);
}

TEST_F(EventRecorderTest, chordsNameModifiersInOneOrderAndModifiersAloneNothing) {
    begin();
    for (auto const& modifier : {"Super_L", "Shift_L", "Alt_L", "Control_L"}) client->key(modifier, true);
    client->tap("4");
    for (auto const& modifier : {"Super_L", "Shift_L", "Alt_L", "Control_L"}) client->key(modifier, false);
    for (auto const& key :
         {"a", "Return", "Tab", "space", "BackSpace", "Escape", "Delete", "Left", "Right", "Down", "Up", "F5"})
        client->tap(key);
    client->key("Shift_L", true);
    client->tap("b");
    client->key("Shift_L", false);
    ASSERT_TRUE(sees([](auto const& log) { return log.keystrokes.size() == 14; })) << log().keystrokes.size();
    auto const strokes = log().keystrokes;
    EXPECT_EQ(strokes[0].keys, (Keys{"⌃", "⌥", "⇧", "⌘", "4"}));
    EXPECT_TRUE(strokes[0].isShortcut);
    Keys names;
    for (std::size_t i = 1; i <= 12; ++i) {
        ASSERT_EQ(strokes[i].keys.size(), 1u);
        EXPECT_FALSE(strokes[i].isShortcut);
        names.push_back(strokes[i].keys[0]);
    }
    EXPECT_EQ(names, (Keys{"a", "↩", "⇥", "Space", "⌫", "esc", "⌦", "←", "→", "↓", "↑", "F5"}));
    EXPECT_EQ(strokes[13].keys, (Keys{"⇧", "b"}));
    EXPECT_FALSE(strokes[13].isShortcut);
}

TEST_F(EventRecorderTest, noKeyIsLoggedWhileASecretIsAskedFor) {
    auto const editor = client->makeWindow({.frame = {0, 0, 50, 50}, .windowClass = "Editor"});
    client->setActive(editor);
    begin();
    client->tap("a");
    ASSERT_TRUE(sees([](auto const& log) { return log.keystrokes.size() == 1; }));
    auto const prompt = client->makeWindow({.frame = {0, 0, 90, 90}, .windowClass = "pinentry-gtk-2", .isPopup = true});
    client->tap("s");
    settle();
    client->destroy(prompt);
    client->tap("b");
    ASSERT_TRUE(sees([](auto const& log) { return log.keystrokes.size() == 2; }));
    EXPECT_EQ(log().keystrokes[1].keys, Keys{"b"});

    auto const agent =
        client->makeWindow({.frame = {0, 0, 90, 90}, .windowClass = "Polkit-gnome-authentication-agent-1"});
    client->setActive(agent);
    client->tap("s");
    settle();
    client->destroy(agent);
    client->setActive(editor);
    client->tap("c");
    ASSERT_TRUE(sees([](auto const& log) { return log.keystrokes.size() >= 3; }));
    EXPECT_EQ(log().keystrokes[2].keys, Keys{"c"});
}

TEST_F(EventRecorderTest, theRecordersOwnShortcutWorksWhateverLocksAreOnAndIsNotLogged) {
    std::atomic<int> presses = 0;
    x11::GlobalKey const pause("ctrl+Shift+p", display->name(), [&] { ++presses; });
    EXPECT_EQ(pause.chord().names(), (Keys{"⌃", "⇧", "p"}));
    EXPECT_THROW(x11::GlobalKey("ctrl+shift+P", display->name(), [] {}), CaptureError) << "it is taken";
    EXPECT_THROW(x11::GlobalKey("ctrl+nokey", display->name(), [] {}), CaptureError);
    ownShortcuts = {pause.chord()};
    begin();
    for (auto const& lock : {"Caps_Lock", "Num_Lock"}) {
        client->tap(lock);
        client->key("Control_L", true), client->key("Shift_L", true);
        client->tap("p");
        client->key("Shift_L", false), client->key("Control_L", false);
    }
    EXPECT_TRUE(eventually([&] { return presses == 2; })) << presses;
    client->tap("q");
    ASSERT_TRUE(sees([](auto const& log) { return !log.keystrokes.empty(); }));
    EXPECT_EQ(log().keystrokes.at(0).keys, Keys{"q"});
}

TEST_F(EventRecorderTest, spansTellWhichApplicationWasInFront) {
    auto const first = client->makeWindow({.frame = {0, 0, 50, 50}, .windowClass = "First"});
    auto const second = client->makeWindow({.frame = {0, 0, 50, 50}, .windowClass = "Second"});
    auto const sibling = client->makeWindow({.frame = {0, 0, 50, 50}, .windowClass = "Second"});
    client->setActive(first);
    begin();
    ASSERT_TRUE(sees([](auto const& log) { return log.appSpans.size() == 1; }));
    client->setActive(second);
    ASSERT_TRUE(sees([](auto const& log) { return log.appSpans.size() == 2; }));
    client->setActive(sibling);
    client->setActive(first);
    ASSERT_TRUE(sees([](auto const& log) { return log.appSpans.size() == 3; }));
    recorder->stop(900);
    auto const spans = log().appSpans;
    ASSERT_EQ(spans.size(), 3u);
    EXPECT_EQ(spans[0].name, "First");
    EXPECT_EQ(spans[1].bundleID, "Second");
    EXPECT_EQ(spans[2].name, "First");
    for (std::size_t i = 1; i < spans.size(); ++i)
        EXPECT_NEAR(spans[i - 1].t + spans[i - 1].duration, spans[i].t, 1e-9) << "no gap between spans";
    EXPECT_NEAR(spans[2].t + spans[2].duration, 900, 1e-9);
}

TEST_F(EventRecorderTest, withoutAWindowManagerTheWindowUnderThePointerIsInFront) {
    client->makeWindow({.frame = {100, 100, 50, 50}, .windowClass = "First"});
    client->makeWindow({.frame = {300, 100, 50, 50}, .windowClass = "Second"});
    client->movePointer(120, 120);
    begin();
    ASSERT_TRUE(sees([](auto const& log) { return log.appSpans.size() == 1; }));
    EXPECT_EQ(log().appSpans[0].name, "First");
    client->movePointer(320, 120);
    client->tap("a");
    ASSERT_TRUE(sees([](auto const& log) { return log.keystrokes.size() == 1; }));
    auto const after = log();
    ASSERT_EQ(after.appSpans.size(), 2u) << "known before the key is, whose window decides whether it is logged";
    EXPECT_EQ(after.appSpans[1].name, "Second");
    EXPECT_LE(after.appSpans[1].t, after.keystrokes[0].t + 0.05);
}

TEST_F(EventRecorderTest, aButtonThatIsLetGoInAPauseIsNotHeldWhenTheTakeGoesOn) {
    client->movePointer(200, 200);
    begin();
    client->button(1, true);
    ASSERT_TRUE(sees([](auto const& log) { return log.clicks.size() == 1; }));
    clock.setPaused(true, mediaClockNow());
    double const soon = mediaClockNow() + 0.01; // the server stamps events in whole milliseconds
    eventually([&] { return mediaClockNow() > soon; });
    client->button(1, false);
    clock.setPaused(false, mediaClockNow());
    ASSERT_TRUE(eventually([&] {
        EventCounts settled;
        queue.sync([&] { settled = recorder->settled(); });
        return settled.clicks == 1;
    })) << "nothing more becomes of the click";
    client->movePointer(400, 200);
    ASSERT_TRUE(sees([](auto const& log) {
        return !log.cursorSamples.empty() && log.cursorSamples.back().position == UnitPoint2{0.75, 0.5};
    }));
    recorder->stop(900);
    EXPECT_FALSE(log().clicks.at(0).isDrag);
    EXPECT_FALSE(log().clicks.at(0).dragEnd);
}

TEST_F(EventRecorderTest, samplesFollowThePointerAndItsShapeButNotIntoAPause) {
    auto const window = client->makeWindow({.frame = {100, 100, 200, 200}});
    client->makeWindow({.frame = {300, 100, 200, 200}});
    client->setCursor(window, "xterm");
    client->movePointer(200, 200);
    begin();
    auto const lastIs = [](UnitPoint2 position, CursorKind kind) {
        return [=](RecordingMetadata const& log) {
            return !log.cursorSamples.empty() && log.cursorSamples.back().position == position &&
                   log.cursorSamples.back().kind == kind;
        };
    };
    EXPECT_TRUE(sees(lastIs({0.25, 0.5}, CursorKind::iBeam)));
    client->setCursor(window, "hand2");
    EXPECT_TRUE(sees(lastIs({0.25, 0.5}, CursorKind::pointingHand)));
    client->movePointer(400, 200);
    EXPECT_TRUE(sees(lastIs({0.75, 0.5}, CursorKind::arrow)));

    clock.setPaused(true, mediaClockNow());
    double const pausedAt = clock.elapsed(mediaClockNow());
    double const soon = mediaClockNow() + 0.01; // the server stamps events in whole milliseconds
    eventually([&] { return mediaClockNow() > soon; });
    client->movePointer(300, 150);
    client->button(1, true), client->button(1, false);
    client->tap("a");
    double const resumedAt = mediaClockNow();
    clock.setPaused(false, resumedAt);
    recorder->setFrame({200, 100, 400, 200});
    EXPECT_TRUE(sees(lastIs({0.25, 0.25}, CursorKind::arrow))) << "the captured window moved";
    auto const all = log();
    EXPECT_TRUE(all.clicks.empty());
    EXPECT_TRUE(all.keystrokes.empty());
    EXPECT_NEAR(pausedAt, clock.elapsed(resumedAt), 1e-6);
    for (std::size_t i = 1; i < all.cursorSamples.size(); ++i)
        ASSERT_GE(all.cursorSamples[i].t, all.cursorSamples[i - 1].t);
}

}
