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

/// The server's keyboard as it is when this object is made: which key makes what.
class KeyboardLayout {
public:
    /// Throws `AutomationError` (`failed`) where the server has no usable keyboard.
    explicit KeyboardLayout(FakeInput& input);
    ~KeyboardLayout();

    /// The key that makes that keysym in the layout in use, by itself or with Shift or AltGr.
    std::optional<KeyStroke> making(std::uint32_t symbol, std::set<std::uint8_t> const& without) const;
    /// By XKB's name of the place on the keyboard: "AC01".
    std::optional<std::uint8_t> at(char const* place) const;

    /// Of modifier keys held down, by core bits.
    static std::uint8_t heldModifiers(FakeInput& input);

private:
    struct FreeKeymap {
        void operator()(xkb_keymap* keymap) const;
    };
    struct Level;
    std::optional<KeyStroke> keyMaking(std::uint32_t symbol, std::uint32_t code) const;
    std::optional<KeyStroke> stroke(std::uint32_t code, Level const& level) const;

    std::unique_ptr<xkb_keymap, FreeKeymap> keymap_;
    std::uint32_t group_ = 0;
};

/// Takes Caps Lock off while it lives, without a key press.
class CapsLockOff {
public:
    explicit CapsLockOff(Connection& connection);
    ~CapsLockOff();
    CapsLockOff(CapsLockOff const&) = delete;
    CapsLockOff& operator=(CapsLockOff const&) = delete;

private:
    Connection& connection_;
    bool wasOn_ = false;
};

}
