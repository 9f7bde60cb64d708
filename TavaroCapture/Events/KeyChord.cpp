#include <TavaroCapture/Events/Private/KeyChord.h>

#include <TavaroCapture/Events/Private/KeyNames.h>

#include <xkbcommon/xkbcommon.h>

namespace tavaro {

namespace {

/// Key symbols of the number pad, which NumLock turns from keys that move into digits.
bool isKeypad(std::uint32_t symbol) { return symbol >= 0xff80 && symbol <= 0xffbd; }

std::string text(xkb_keysym_t symbol) {
    char characters[8] = {};
    xkb_keysym_to_utf8(symbol, characters, sizeof characters);
    return characters;
}

std::string symbolName(xkb_keysym_t symbol) {
    char name[64] = {};
    xkb_keysym_get_name(symbol, name, sizeof name);
    return name;
}

bool isHeld(xkb_state& state, char const* modifier) {
    return xkb_state_mod_name_is_active(&state, modifier, XKB_STATE_MODS_EFFECTIVE) > 0;
}

/// The key's own symbol, without modifiers. What AltGr makes of a key is a character of its own, and NumLock decides
/// what the number pad is.
xkb_keysym_t symbolOf(xkb_state& state, std::uint32_t keycode) {
    auto const layout = xkb_state_key_get_layout(&state, keycode);
    xkb_keysym_t const* symbols = nullptr;
    int const count = xkb_keymap_key_get_syms_by_level(xkb_state_get_keymap(&state), keycode, layout, 0, &symbols);
    xkb_keysym_t const plain = count > 0 ? symbols[0] : XKB_KEY_NoSymbol;
    bool const takesEffective = isKeypad(plain) || isHeld(state, "LevelThree") || isHeld(state, "Mod5");
    return takesEffective ? xkb_state_key_get_one_sym(&state, keycode) : plain;
}

}

std::optional<Chord> chordOf(xkb_state& state, std::uint32_t keycode) {
    auto const found = symbolOf(state, keycode);
    if (found == XKB_KEY_NoSymbol || isModifierKey(found)) return std::nullopt;
    std::string name = keyName(virtualKeyCode(found), text(found), symbolName(found));
    if (name.empty()) return std::nullopt;
    return Chord{isHeld(state, XKB_MOD_NAME_CTRL), isHeld(state, XKB_MOD_NAME_ALT), isHeld(state, XKB_MOD_NAME_SHIFT),
                 isHeld(state, XKB_MOD_NAME_LOGO), std::move(name)};
}

}
