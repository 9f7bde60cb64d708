#pragma once

#include <TavaroCapture/Sources/Private/EventSource.h>
#include <TavaroCapture/X11/Connection.h>

#include <memory>
#include <optional>

struct xkb_context;
struct xkb_keymap;
struct xkb_state;

namespace tavaro::x11 {

/// The server's keyboard: its layout and the modifiers held, kept up to date from its events.
class Keyboard {
public:
    /// None where the server has no usable keyboard.
    static std::unique_ptr<Keyboard> open(Connection& connection);
    ~Keyboard();

    /// Takes in an event; true when it was one of the keyboard's.
    bool handle(xcb_generic_event_t const& event);
    /// The chord that a press of this key makes now; none for a modifier alone and for keys without a name.
    std::optional<Chord> chord(std::uint32_t keycode) const;

private:
    struct FreeKeymap {
        void operator()(xkb_context* context) const;
        void operator()(xkb_keymap* keymap) const;
        void operator()(xkb_state* state) const;
    };
    explicit Keyboard(Connection& connection) : connection_(connection) {}
    bool load();
    void selectEvents();

    Connection& connection_;
    std::unique_ptr<xkb_context, FreeKeymap> context_;
    std::unique_ptr<xkb_keymap, FreeKeymap> keymap_;
    std::unique_ptr<xkb_state, FreeKeymap> state_;
    std::int32_t device_ = -1;
    std::uint8_t firstEvent_ = 0;
};

}
