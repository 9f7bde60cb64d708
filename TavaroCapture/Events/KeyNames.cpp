#include <TavaroCapture/Events/Private/KeyNames.h>

#include <utility>

namespace tavaro {

namespace {

struct NamedKey {
    std::uint32_t keysym;
    int code;
};

constexpr NamedKey namedKeys[] = {
    {0xff0d, 36},  // Return
    {0xff8d, 36},  // KP_Enter
    {0xff09, 48},  // Tab
    {0xfe20, 48},  // ISO_Left_Tab, what shift makes of it
    {0x0020, 49},  // space
    {0xff80, 49},  // KP_Space
    {0xff08, 51},  // BackSpace
    {0xff1b, 53},  // Escape
    {0xffff, 117}, // Delete
    {0xff9f, 117}, // KP_Delete
    {0xff51, 123}, // Left
    {0xff96, 123}, // KP_Left
    {0xff53, 124}, // Right
    {0xff98, 124}, // KP_Right
    {0xff54, 125}, // Down
    {0xff99, 125}, // KP_Down
    {0xff52, 126}, // Up
    {0xff97, 126}, // KP_Up
};

constexpr std::pair<int, std::string_view> names[] = {
    {36, "↩"},  {48, "⇥"},  {49, "Space"}, {51, "⌫"},  {53, "esc"},
    {117, "⌦"}, {123, "←"}, {124, "→"},    {125, "↓"}, {126, "↑"},
};

constexpr std::pair<std::string_view, std::string_view> plainNames[] = {
    {"Prior", "Page Up"}, {"Next", "Page Down"}, {"KP_Prior", "Page Up"}, {"KP_Next", "Page Down"},
    {"KP_Home", "Home"},  {"KP_End", "End"},     {"KP_Insert", "Insert"}, {"Print", "Print Screen"},
};

}

int virtualKeyCode(std::uint32_t keysym) {
    for (auto const& key : namedKeys) {
        if (key.keysym == keysym) return key.code;
    }
    return -1;
}

std::string keyName(int virtualKeyCode, std::string_view characters, std::string_view symbolName) {
    for (auto const& [code, name] : names) {
        if (code == virtualKeyCode) return std::string(name);
    }
    bool const isPrintable = !characters.empty() && static_cast<unsigned char>(characters[0]) > 0x20 &&
                             static_cast<unsigned char>(characters[0]) != 0x7f;
    if (isPrintable) return std::string(characters);
    for (auto const& [symbol, name] : plainNames) {
        if (symbol == symbolName) return std::string(name);
    }
    return std::string(symbolName);
}

bool isModifierKey(std::uint32_t keysym) {
    bool const isCoreModifier = keysym >= 0xffe1 && keysym <= 0xffee;             // Shift_L … Hyper_R
    bool const isLevelOrGroup = keysym >= 0xfe01 && keysym <= 0xfe13;             // ISO_Lock … ISO_Level5_Lock
    bool const isLock = keysym == 0xff7f || keysym == 0xff14 || keysym == 0xff7e; // Num_Lock, Scroll_Lock, Mode_switch
    return isCoreModifier || isLevelOrGroup || isLock;
}

}
