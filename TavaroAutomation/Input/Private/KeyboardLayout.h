#pragma once

#include <TavaroAutomation/Input/Private/FakeInput.h>

#include <memory>
#include <optional>
#include <set>
#include <vector>

struct xkb_keymap;

namespace tavaro::x11 {

/// A key, and the modifiers that it needs to make something.
struct KeyStroke {
    std::uint8_t code = 0;
    std::vector<std::uint8_t> modifiers; // keys, in the order of pressing
};

/// What the user may change while something is typed.
struct KeyboardState {
    std::uint8_t held = 0; // modifiers, by core bits
    bool isCapsLocked = false;
    std::uint8_t group = 0; // of the layouts, the one in use
};

/// Asks the server for it, one round trip a time.
class KeyboardWatch {
public:
    /// Throws `AutomationError` (`failed`) where the server has no usable keyboard.
    explicit KeyboardWatch(Connection& connection);
    KeyboardState now();
    /// Once the user holds no modifier key any more, which would change what is pressed. Throws `AutomationError`
    /// (`failed`) where that takes longer than five seconds.
    KeyboardState whenFree(std::stop_token const& stop);

private:
    Connection& connection_;
};

/// Counts how often what the keys make has changed, or another keyboard than before was used. Takes all events of its
/// connection.
class KeyboardChanges {
public:
    /// Meanings of those codes do not count.
    KeyboardChanges(Connection& connection, std::set<std::uint8_t> const& without);
    int countSoFar();

private:
    bool isChange(xcb_generic_event_t const& event) const;

    Connection& connection_;
    std::set<std::uint8_t> const& without_;
    std::uint8_t ownEvents_ = 0; // of the keyboard extension
    int count_ = 0;
};

/// The server's keyboard as it is when this object is made: which key makes what.
class KeyboardLayout {
public:
    /// Throws `AutomationError` (`failed`) where the server has no usable keyboard.
    KeyboardLayout(FakeInput& input, std::uint8_t group);
    ~KeyboardLayout();

    /// The key that makes that keysym in the layout in use, by itself or with Shift or AltGr.
    std::optional<KeyStroke> making(std::uint32_t symbol, std::set<std::uint8_t> const& without) const;
    /// The key that makes that keysym, by itself, in another of the user's layouts: with it shortcuts are pressed where
    /// the one in use has another alphabet.
    std::optional<std::uint8_t> makingElsewhere(std::uint32_t symbol, std::set<std::uint8_t> const& without) const;
    /// By XKB's name of the place on the keyboard: "AC01".
    std::optional<std::uint8_t> at(char const* place) const;
    std::uint8_t group() const { return group_; }

private:
    struct FreeKeymap {
        void operator()(xkb_keymap* keymap) const;
    };
    struct Level;
    std::optional<KeyStroke> keyMaking(std::uint32_t symbol, std::uint32_t code) const;
    std::optional<KeyStroke> stroke(std::uint32_t code, Level const& level) const;

    std::unique_ptr<xkb_keymap, FreeKeymap> keymap_;
    std::uint8_t group_ = 0;
};

/// Caps Lock, which would turn everything round: off while this types, without a key press.
class CapsLockOff {
public:
    explicit CapsLockOff(Connection& connection) : connection_(connection) {}
    /// Puts it back.
    ~CapsLockOff();
    CapsLockOff(CapsLockOff const&) = delete;
    CapsLockOff& operator=(CapsLockOff const&) = delete;

    void ensure(KeyboardState const& state);

private:
    Connection& connection_;
    bool wasOn_ = false;
};

}
