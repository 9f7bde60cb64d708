#include "UsersKeyboard.h"

#include <TavaroAutomation/Input/Private/Typist.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>
#include <cstring>
#include <thread>

namespace tavaro {

namespace {

using namespace std::chrono_literals;

/// Waits for Alt+F4 of the whole desktop as window managers do: when the keyboard changes, it gives the key back, reads
/// the keyboard and takes the key anew, slowly.
class ShortcutTaker {
public:
    explicit ShortcutTaker(TestDisplay const& display) : client_(display.name()) {
        code_ = client_.codeOf("F4");
        std::uint32_t const mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection(), root(), XCB_CW_EVENT_MASK, &mask);
        set(root(), "_NET_SUPPORTING_WM_CHECK", {root()});
        take();
        thread_.async([this] { run(); });
    }
    ~ShortcutTaker() {
        isEnding_ = true;
        thread_.sync([] {});
    }

    int taken() const { return taken_; }
    int keyboardChanges() const { return keyboardChanges_; }

private:
    void run() {
        while (!isEnding_) {
            std::this_thread::sleep_for(1ms);
            while (auto const event = client_.connection().poll()) answer(*event);
        }
    }
    void answer(xcb_generic_event_t const& event) {
        switch (event.response_type & 0x7f) {
        case XCB_KEY_PRESS: ++taken_; break;
        case XCB_CLIENT_MESSAGE:
            set(reinterpret_cast<xcb_client_message_event_t const&>(event).window, "_NET_FRAME_EXTENTS", {1, 1, 20, 1});
            break;
        case XCB_MAPPING_NOTIFY:
            if (reinterpret_cast<xcb_mapping_notify_event_t const&>(event).request != XCB_MAPPING_KEYBOARD) break;
            xcb_ungrab_key(connection(), code_, root(), XCB_MOD_MASK_1);
            client_.connection().synchronize();
            std::this_thread::sleep_for(70ms);
            take();
            ++keyboardChanges_;
            break;
        default: break;
        }
    }
    void take() {
        xcb_grab_key(connection(), 0, root(), XCB_MOD_MASK_1, code_, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        client_.connection().synchronize();
    }
    void set(xcb_window_t window, char const* property, std::vector<std::uint32_t> const& values) {
        xcb_change_property(connection(), XCB_PROP_MODE_REPLACE, window, client_.connection().atom(property),
                            XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(values.size()), values.data());
        client_.connection().synchronize();
    }
    xcb_connection_t* connection() { return client_.connection().get(); }
    xcb_window_t root() { return client_.connection().root(); }

    TestClient client_;
    std::uint8_t code_ = 0;
    std::atomic<int> taken_ = 0;
    std::atomic<int> keyboardChanges_ = 0;
    std::atomic<bool> isEnding_ = false;
    SerialQueue thread_{"com.tavaro.shortcuts"};
};

}

using DesktopShortcutsTest = DisplayTest;

TEST_F(DesktopShortcutsTest, reachWhoTakesItsKeysAnewWhenAnotherKeyboardIsUsed) {
    ShortcutTaker const taker(*display);
    UsersKeyboard user(*client);
    Typist typist(display->name(), {4ms, 0ms});
    for (int round = 1; round <= 6; ++round) {
        int const before = taker.keyboardChanges();
        user.tap("x");
        ASSERT_TRUE(eventually([&] { return taker.keyboardChanges() > before || round == 1; }));
        typist.press(parseShortcut("alt+f4"));
        EXPECT_TRUE(eventually([&] { return taker.taken() >= round; })) << round;
    }
}

TEST_F(DesktopShortcutsTest, reachItAfterAKeyGotAMeaningForTheTextBefore) {
    ShortcutTaker const taker(*display);
    Typist typist(display->name(), {4ms, 0ms});
    int round = 0;
    for (auto const* const text : {"é", "日本", "aπ"}) {
        typist.type(text);
        typist.press(parseShortcut("alt+f4"));
        EXPECT_TRUE(eventually([&] { return taker.taken() >= round + 1; })) << text;
        round = taker.taken();
    }
}

}
