#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Names of keys and pointers: from what X calls them to what a recording calls them.
namespace tavaro {

/// Virtual key code (ANSI layout) of the keys that have a name of their own, by X keysym; -1 for every other key.
int virtualKeyCode(std::uint32_t keysym);

/// What the log calls a key: the fixed name of its virtual key code, else the key's characters without modifiers, else
/// (a function key has none) its X name.
std::string keyName(int virtualKeyCode, std::string_view characters, std::string_view symbolName);

/// Whether the key only changes others: shift, control, locks, level shifts.
bool isModifierKey(std::uint32_t keysym);

}
