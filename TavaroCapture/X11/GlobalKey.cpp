#include <TavaroCapture/X11/GlobalKey.h>

#include <TavaroCapture/Events/Private/KeyNames.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCapture/X11/Connection.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroPlatform/Sockets/Bell.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cctype>
#include <fmt/format.h>
#include <iterator>
#include <optional>
#include <poll.h>
#include <xkbcommon/xkbcommon.h>

namespace tavaro::x11 {

namespace {

struct Shortcut {
    Chord chord;
    xcb_keysym_t symbol = XCB_NO_SYMBOL;
    std::uint16_t modifiers = 0;
};

[[noreturn]] void fail(std::string const& sentence) { throw CaptureError(CaptureError::Kind::unsupported, sentence); }

std::string lowered(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// False for a word that is no modifier's.
bool addModifier(Shortcut& shortcut, std::string const& word) {
    auto& chord = shortcut.chord;
    struct Modifier {
        std::array<std::string_view, 2> names;
        bool& isHeld;
        std::uint16_t mask;
    };
    Modifier const modifiers[] = {{{"ctrl", "control"}, chord.control, XCB_MOD_MASK_CONTROL},
                                  {{"alt", "option"}, chord.option, XCB_MOD_MASK_1},
                                  {{"shift", "shift"}, chord.shift, XCB_MOD_MASK_SHIFT},
                                  {{"super", "win"}, chord.command, XCB_MOD_MASK_4}};
    for (auto const& modifier : modifiers) {
        if (std::ranges::find(modifier.names, word) == modifier.names.end()) continue;
        modifier.isHeld = true;
        shortcut.modifiers |= modifier.mask;
        return true;
    }
    return false;
}

Shortcut parse(std::string const& text) {
    Shortcut shortcut;
    auto rest = text;
    for (auto plus = rest.find('+'); plus != std::string::npos && plus > 0; plus = rest.find('+')) {
        if (!addModifier(shortcut, lowered(rest.substr(0, plus)))) break;
        rest.erase(0, plus + 1);
    }
    shortcut.symbol = xkb_keysym_from_name(rest.c_str(), XKB_KEYSYM_CASE_INSENSITIVE);
    if (shortcut.symbol == XKB_KEY_NoSymbol) fail(fmt::format("“{}” is no shortcut; give one like ctrl+alt+p.", text));
    std::array<char, 64> name{}, characters{};
    xkb_keysym_get_name(shortcut.symbol, name.data(), name.size());
    xkb_keysym_to_utf8(shortcut.symbol, characters.data(), characters.size());
    // Programs no longer get a key that is grabbed.
    if (!shortcut.chord.isShortcut() && characters.front() != '\0')
        fail(fmt::format("“{}” is a key that one types with; give a shortcut like ctrl+alt+p, or F9.", text));
    shortcut.chord.key = keyName(virtualKeyCode(shortcut.symbol), characters.data(), name.data());
    return shortcut;
}

std::optional<xcb_keycode_t> codeOf(Connection& connection, xcb_keysym_t symbol) {
    auto const* const setup = xcb_get_setup(connection.get());
    auto const count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    auto const map =
        connection.ask<xcb_get_keyboard_mapping, xcb_get_keyboard_mapping_reply>(setup->min_keycode, count);
    if (!map) return std::nullopt;
    auto const* const symbols = xcb_get_keyboard_mapping_keysyms(map.get());
    for (int i = 0; i < count; ++i) {
        if (symbols[i * map->keysyms_per_keycode] == symbol) return static_cast<xcb_keycode_t>(setup->min_keycode + i);
    }
    return std::nullopt;
}

}

struct GlobalKey::State {
    Connection connection;
    Shortcut const shortcut;
    std::function<void()> const pressed;
    Bell const end;
    std::atomic<bool> isEnding = false;
    SerialQueue queue{"com.tavaro.capture.shortcut"}; // runs one task until the end

    State(std::string const& text, std::string const& display, std::function<void()> pressed)
        : connection(display)
        , shortcut(parse(text))
        , pressed(std::move(pressed)) {
        grab(text);
        queue.async([this] { run(); });
    }

    /// Whatever locks are on.
    void grab(std::string const& text) {
        auto const code = codeOf(connection, shortcut.symbol);
        if (!code) fail(fmt::format("This keyboard has no key for “{}”.", text));
        constexpr std::uint16_t capsLock = XCB_MOD_MASK_LOCK, numLock = XCB_MOD_MASK_2;
        for (std::uint16_t const locks : {0, +capsLock, +numLock, capsLock | numLock}) {
            auto const cookie = xcb_grab_key_checked(connection.get(), 0, connection.root(),
                                                     static_cast<std::uint16_t>(shortcut.modifiers | locks), *code,
                                                     XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
            if (own(xcb_request_check(connection.get(), cookie)))
                fail(fmt::format("Another program has the shortcut “{}”.", text));
        }
    }

    void run() {
        pollfd watched[] = {{xcb_get_file_descriptor(connection.get()), POLLIN, 0}, {end.descriptor(), POLLIN, 0}};
        while (!isEnding && connection.isAlive()) {
            while (auto const event = connection.poll()) {
                if ((event->response_type & 0x7f) == XCB_KEY_PRESS) pressed();
            }
            poll(watched, std::size(watched), -1);
        }
    }
};

GlobalKey::GlobalKey(std::string const& shortcut, std::string const& display, std::function<void()> pressed)
    : state_(std::make_unique<State>(shortcut, display, std::move(pressed))) {}

GlobalKey::~GlobalKey() {
    state_->isEnding = true;
    state_->end.ring();
}

Chord const& GlobalKey::chord() const { return state_->shortcut.chord; }

}
