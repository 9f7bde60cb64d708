#pragma once

#include <TavaroCapture/Sources/Chord.h>

#include <cstdint>
#include <optional>

struct xkb_state;

namespace tavaro {

/// The chord that a press of this key of the keymap makes in that state of the keyboard; none for a modifier alone and
/// for keys without a name.
std::optional<Chord> chordOf(xkb_state& state, std::uint32_t keycode);

}
