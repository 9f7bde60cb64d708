#include "../../Capture/Events/EventTake.h"

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Input/Private/Typist.h>

#include <chrono>
#include <future>
#include <thread>

namespace tavaro {

namespace {

using namespace std::chrono_literals;
using Keys = std::vector<std::string>;

constexpr TypingPace quick{4ms, 0ms};

}

/// A window that has the keyboard, and sees the keys in one order with changes of what they make.
class KeySink {
public:
    explicit KeySink(TestClient& client) : client_(client) {
        auto const window = client.makeWindow({.frame = {0, 0, 100, 100}, .windowClass = "Keys"});
        std::uint32_t const mask = XCB_EVENT_MASK_KEY_PRESS;
        xcb_change_window_attributes(connection(), window, XCB_CW_EVENT_MASK, &mask);
        xcb_set_input_focus(connection(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
        client.connection().synchronize();
    }
    std::vector<std::uint8_t> const& codes() {
        client_.connection().synchronize();
        while (auto const event = client_.connection().poll()) {
            if ((event->response_type & 0x7f) == XCB_KEY_PRESS) codes_.push_back(event->pad0);
            if ((event->response_type & 0x7f) == XCB_MAPPING_NOTIFY && isSwapping_) codesBeforeSwap_ = codes_.size();
        }
        return codes_;
    }
    std::optional<std::size_t> codesBeforeSwap() const { return codesBeforeSwap_; }
    std::uint8_t codeOf(std::string const& symbol) { return client_.codeOf(symbol); }
    /// Each makes what the other made.
    void swap(std::uint8_t one, std::uint8_t other) {
        codes();
        isSwapping_ = true;
        auto const ofOne =
            client_.connection().ask<xcb_get_keyboard_mapping, xcb_get_keyboard_mapping_reply>(one, std::uint8_t{1});
        auto const ofOther =
            client_.connection().ask<xcb_get_keyboard_mapping, xcb_get_keyboard_mapping_reply>(other, std::uint8_t{1});
        xcb_grab_server(connection());
        xcb_change_keyboard_mapping(connection(), 1, one, ofOther->keysyms_per_keycode,
                                    xcb_get_keyboard_mapping_keysyms(ofOther.get()));
        xcb_change_keyboard_mapping(connection(), 1, other, ofOne->keysyms_per_keycode,
                                    xcb_get_keyboard_mapping_keysyms(ofOne.get()));
        xcb_ungrab_server(connection());
        codes();
        isSwapping_ = false;
    }

private:
    xcb_connection_t* connection() { return client_.connection().get(); }

    TestClient& client_;
    std::vector<std::uint8_t> codes_;
    bool isSwapping_ = false;
    std::optional<std::size_t> codesBeforeSwap_;
};

/// What a take's log says of what is typed.
class TypistTest : public EventTake {
protected:
    void SetUp() override {
        EventTake::SetUp();
        if (!IsSkipped()) begin();
    }
    /// Each key as the log has it: "⇧a", once as many have come.
    Keys typed(std::size_t count) {
        sees([&](auto const& log) { return log.keystrokes.size() >= count; });
        Keys result;
        for (auto const& stroke : log().keystrokes) {
            std::string all;
            for (auto const& key : stroke.keys) all += key;
            result.push_back(all);
        }
        return result;
    }
    std::uint16_t modifiersHeld() {
        auto const at =
            client->connection().ask<xcb_query_pointer, xcb_query_pointer_reply>(client->connection().root());
        return at->mask & 0xff;
    }
    bool isAnyKeyDown() {
        auto const keys = client->connection().ask<xcb_query_keymap, xcb_query_keymap_reply>();
        return std::any_of(std::begin(keys->keys), std::end(keys->keys), [](auto bits) { return bits != 0; });
    }
    /// Keycodes that make nothing.
    int spareCodes() {
        auto const* const setup = xcb_get_setup(client->connection().get());
        auto const count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
        auto const mapping = client->connection().ask<xcb_get_keyboard_mapping, xcb_get_keyboard_mapping_reply>(
            setup->min_keycode, count);
        auto const* const symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
        int spare = 0;
        for (int i = 0; i < count; ++i) {
            auto const* const own = symbols + i * mapping->keysyms_per_keycode;
            spare +=
                std::all_of(own, own + mapping->keysyms_per_keycode, [](auto symbol) { return symbol == 0; }) ? 1 : 0;
        }
        return spare;
    }
};

TEST_F(TypistTest, textIsLoggedAsAPersonTypesIt) {
    Typist typist(display->name(), quick);
    typist.type("aB 4$/\n\tz");
    EXPECT_EQ(typed(9), (Keys{"a", "⇧b", "Space", "4", "⇧4", "/", "↩", "⇥", "z"}));
    EXPECT_EQ(modifiersHeld(), 0);
}

TEST_F(TypistTest, whatTheLayoutLacksIsTypedAndTheKeyboardIsLeftAsItWas) {
    int const spare = spareCodes();
    ASSERT_GT(spare, 5);
    std::string text;
    Keys expected;
    for (std::string const character : {"é", "日", "😀", "ł", "Ź", "П", "р", "и", "в", "е", "т", "中", "文", "½",
                                        "€", "ß",  "ñ", "ç", "ø", "å", "ü", "ö", "ä", "Ω", "π", "→",  "é",  "x"}) {
        text += character;
        expected.push_back(character);
    }
    {
        Typist typist(display->name(), quick);
        typist.type(text);
        EXPECT_LT(spareCodes(), spare);
        EXPECT_EQ(typed(expected.size()), expected) << "more of them than there are spare keys";
    }
    EXPECT_EQ(spareCodes(), spare);
}

TEST_F(TypistTest, shortcutsHoldEveryModifierAndCommandIsControl) {
    Typist typist(display->name(), quick);
    for (auto const* const shortcut :
         {"cmd+shift+f", "cmd+ctrl+1", "ctrl+opt+shift+super+k", "alt+f4", "return", "esc", "pageup"})
        typist.press(parseShortcut(shortcut));
    EXPECT_EQ(typed(7), (Keys{"⌃⇧f", "⌃1", "⌃⌥⇧⌘k", "⌥F4", "↩", "esc", "Page Up"}));
    EXPECT_EQ(modifiersHeld(), 0);
}

TEST_F(TypistTest, capsLockNeitherInvertsNorIsLost) {
    client->tap("Caps_Lock");
    ASSERT_EQ(modifiersHeld(), XCB_MOD_MASK_LOCK);
    Typist typist(display->name(), quick);
    typist.type("aB");
    EXPECT_EQ(typed(2), (Keys{"a", "⇧b"}));
    EXPECT_EQ(modifiersHeld(), XCB_MOD_MASK_LOCK);
}

TEST_F(TypistTest, aModifierThatTheUserHoldsIsWaitedFor) {
    client->key("Shift_L", true);
    Typist typist(display->name(), quick);
    auto typing = std::async(std::launch::async, [&] { typist.type("a"); });
    EXPECT_EQ(typing.wait_for(100ms), std::future_status::timeout);
    EXPECT_TRUE(log().keystrokes.empty());
    client->key("Shift_L", false);
    typing.get();
    EXPECT_EQ(typed(1), Keys{"a"});
}

TEST_F(TypistTest, whatTheUserDoesToTheKeyboardInTheMiddleOfATextChangesNothingOfIt) {
    Typist typist(display->name(), {50ms, 0ms});
    auto typing = std::async(std::launch::async, [&] { typist.type("abcdefghijkl"); });
    EXPECT_GE(typed(2).size(), 2u);
    client->key("Control_L", true);
    std::this_thread::sleep_for(150ms);
    client->key("Control_L", false);
    EXPECT_GE(typed(4).size(), 4u);
    client->tap("Caps_Lock");
    typing.get();
    EXPECT_EQ(typed(12), (Keys{"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l"}));
    EXPECT_EQ(modifiersHeld(), XCB_MOD_MASK_LOCK) << "the user's own, put back";
}

TEST_F(TypistTest, whenKeysAreMadeToMeanSomethingElseInTheMiddleOfATextOthersAreTyped) {
    KeySink sink(*client);
    auto const y = sink.codeOf("y"), z = sink.codeOf("z");
    Typist typist(display->name(), {20ms, 0ms});
    constexpr std::size_t length = 80;
    auto typing = std::async(std::launch::async, [&] { typist.type(std::string(length, 'z')); });
    ASSERT_TRUE(eventually([&] { return sink.codes().size() >= 3; }));
    sink.swap(y, z);
    typing.get();
    ASSERT_TRUE(eventually([&] { return sink.codes().size() >= length; }));
    auto const swapped = sink.codes().begin() + static_cast<std::ptrdiff_t>(sink.codesBeforeSwap().value());
    EXPECT_EQ(std::count(sink.codes().begin(), swapped, z), swapped - sink.codes().begin());
    EXPECT_GT(sink.codes().end() - swapped, 1);
    EXPECT_LE(std::count(swapped, sink.codes().end(), z), 1) << "which was under way";
}

TEST_F(TypistTest, keysThatAKilledProgramLeftAreReleased) {
    Keys logged;
    for (std::string const left : {"Control_L", "q"}) {
        client->key(left, true); // by the same extension, and never released
        Typist(display->name(), quick).type("a");
        if (left == "q") logged.push_back("q");
        logged.push_back("a");
        EXPECT_EQ(typed(logged.size()), logged);
        EXPECT_EQ(modifiersHeld(), 0);
        EXPECT_FALSE(isAnyKeyDown()) << left;
    }
}

TEST_F(TypistTest, spareKeysThatAKilledProgramLeftAreTakenBack) {
    int const spare = spareCodes();
    auto leaving = std::make_unique<Typist>(display->name(), quick);
    leaving->type("日中文");
    ASSERT_EQ(spareCodes(), spare - 3);
    auto* const lost = leaving.release(); // as when its process is killed: nothing is put back
    Typist(display->name(), quick).type("é");
    EXPECT_EQ(spareCodes(), spare);
    delete lost;
}

TEST_F(TypistTest, nothingStaysPressedWhateverEndsTyping) {
    for (auto const delay : {1ms, 17ms, 40ms, 75ms}) {
        std::stop_source stop;
        Typist typist(display->name());
        auto typing = std::async(std::launch::async, [&] {
            typist.press(parseShortcut("ctrl+shift+opt+k"), stop.get_token());
            typist.type("ABCDEFGHIJKLMNOP", stop.get_token());
        });
        typing.wait_for(delay);
        stop.request_stop();
        EXPECT_THROW(typing.get(), AutomationError);
        EXPECT_EQ(modifiersHeld(), 0) << delay.count();
        EXPECT_FALSE(isAnyKeyDown());
    }
}

TEST_F(TypistTest, unreadableTextIsRefusedBeforeTheFirstKey) {
    Typist typist(display->name(), quick);
    EXPECT_THROW(typist.type("abc\x01"), AutomationError);
    settle();
    EXPECT_TRUE(log().keystrokes.empty());
}

}
