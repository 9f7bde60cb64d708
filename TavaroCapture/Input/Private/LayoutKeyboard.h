#pragma once

#include <TavaroCapture/Sources/Chord.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>

struct xkb_context;
struct xkb_keymap;
struct xkb_state;

namespace tavaro::input {

/// What a keyboard's keys make in a layout, with the modifiers that are held and locked. One thread.
class LayoutKeyboard {
public:
    /// The machine's usual layout, until another is known: that of `$XKB_DEFAULT_LAYOUT` and the like, else that of the
    /// console's settings. Makes no chords where there is none.
    explicit LayoutKeyboard(std::string const& consoleSettings = "/etc/default/keyboard");
    ~LayoutKeyboard();
    LayoutKeyboard(LayoutKeyboard const&) = delete;
    LayoutKeyboard& operator=(LayoutKeyboard const&) = delete;

    /// From here on a desktop's keymap, as text; what is held and locked stays so. One that cannot be read changes
    /// nothing.
    void use(std::string const& keymap);
    void lockNumbers();

    /// By the kernel's number of the key. None for a modifier alone, and for keys without a name.
    std::optional<Chord> press(std::uint32_t key);
    void release(std::uint32_t key);

private:
    struct Free {
        void operator()(xkb_context* context) const;
        void operator()(xkb_keymap* keymap) const;
        void operator()(xkb_state* state) const;
    };
    void use(std::unique_ptr<xkb_keymap, Free> keymap);

    std::unique_ptr<xkb_context, Free> context_;
    std::unique_ptr<xkb_state, Free> state_; // with its keymap; none: no layout can be read
    std::set<std::uint32_t> held_;
};

}
