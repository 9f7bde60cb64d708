#pragma once

#include <cstdint>
#include <string_view>

namespace tavaro {

/// Event flags of the modifiers, as shortcuts are stored and exchanged.
enum ModifierFlag : std::uint64_t {
    shiftFlag = 0x20000,
    controlFlag = 0x40000,
    optionFlag = 0x80000,
    commandFlag = 0x100000, // pressed as Control, the modifier of this platform's shortcuts
    superFlag = 0x1000000,  // the Super key itself, for the desktop's own shortcuts
};

/// A key with modifiers.
struct KeyCombo {
    std::uint16_t keyCode = 0; // virtual key code of the ANSI layout
    std::uint64_t flags = 0;

    bool operator==(KeyCombo const&) const = default;
};

/// Reads modifier names and one key name joined by "+": "cmd+shift+f", "cmd+,", "return". Capital
/// letters count as small ones. Throws `AutomationError` for a name that is none.
KeyCombo parseShortcut(std::string_view shortcut);

}
