#include <TavaroAutomation/Input/Private/ANSIKeys.h>

#include <algorithm>
#include <array>

namespace tavaro {

namespace {

constexpr auto keys = std::to_array<ANSIKey>({
    {"a", 0, 0x61, "AC01"},
    {"s", 1, 0x73, "AC02"},
    {"d", 2, 0x64, "AC03"},
    {"f", 3, 0x66, "AC04"},
    {"h", 4, 0x68, "AC06"},
    {"g", 5, 0x67, "AC05"},
    {"z", 6, 0x7a, "AB01"},
    {"x", 7, 0x78, "AB02"},
    {"c", 8, 0x63, "AB03"},
    {"v", 9, 0x76, "AB04"},
    {"b", 11, 0x62, "AB05"},
    {"q", 12, 0x71, "AD01"},
    {"w", 13, 0x77, "AD02"},
    {"e", 14, 0x65, "AD03"},
    {"r", 15, 0x72, "AD04"},
    {"y", 16, 0x79, "AD06"},
    {"t", 17, 0x74, "AD05"},
    {"1", 18, 0x31, "AE01"},
    {"2", 19, 0x32, "AE02"},
    {"3", 20, 0x33, "AE03"},
    {"4", 21, 0x34, "AE04"},
    {"6", 22, 0x36, "AE06"},
    {"5", 23, 0x35, "AE05"},
    {"=", 24, 0x3d, "AE12"},
    {"9", 25, 0x39, "AE09"},
    {"7", 26, 0x37, "AE07"},
    {"-", 27, 0x2d, "AE11"},
    {"8", 28, 0x38, "AE08"},
    {"0", 29, 0x30, "AE10"},
    {"]", 30, 0x5d, "AD12"},
    {"o", 31, 0x6f, "AD09"},
    {"u", 32, 0x75, "AD07"},
    {"[", 33, 0x5b, "AD11"},
    {"i", 34, 0x69, "AD08"},
    {"p", 35, 0x70, "AD10"},
    {"l", 37, 0x6c, "AC09"},
    {"j", 38, 0x6a, "AC07"},
    {"'", 39, 0x27, "AC11"},
    {"k", 40, 0x6b, "AC08"},
    {";", 41, 0x3b, "AC10"},
    {"\\", 42, 0x5c, "BKSL"},
    {",", 43, 0x2c, "AB08"},
    {"/", 44, 0x2f, "AB10"},
    {"n", 45, 0x6e, "AB06"},
    {"m", 46, 0x6d, "AB07"},
    {".", 47, 0x2e, "AB09"},
    {"`", 50, 0x60, "TLDE"},
    {"return", 36, 0xff0d, "RTRN"},
    {"enter", 36, 0xff0d, "RTRN"},
    {"tab", 48, 0xff09, "TAB"},
    {"space", 49, 0x0020, "SPCE"},
    {"delete", 51, 0xff08, "BKSP"},
    {"backspace", 51, 0xff08, "BKSP"},
    {"escape", 53, 0xff1b, "ESC"},
    {"esc", 53, 0xff1b, "ESC"},
    {"forwarddelete", 117, 0xffff, "DELE"},
    {"home", 115, 0xff50, "HOME"},
    {"end", 119, 0xff57, "END"},
    {"pageup", 116, 0xff55, "PGUP"},
    {"pagedown", 121, 0xff56, "PGDN"},
    {"left", 123, 0xff51, "LEFT"},
    {"right", 124, 0xff53, "RGHT"},
    {"down", 125, 0xff54, "DOWN"},
    {"up", 126, 0xff52, "UP"},
    {"f1", 122, 0xffbe, "FK01"},
    {"f2", 120, 0xffbf, "FK02"},
    {"f3", 99, 0xffc0, "FK03"},
    {"f4", 118, 0xffc1, "FK04"},
    {"f5", 96, 0xffc2, "FK05"},
    {"f6", 97, 0xffc3, "FK06"},
    {"f7", 98, 0xffc4, "FK07"},
    {"f8", 100, 0xffc5, "FK08"},
    {"f9", 101, 0xffc6, "FK09"},
    {"f10", 109, 0xffc7, "FK10"},
    {"f11", 103, 0xffc8, "FK11"},
    {"f12", 111, 0xffc9, "FK12"},
});

}

std::span<ANSIKey const> ansiKeys() { return keys; }

ANSIKey const* ansiKey(std::uint16_t code) {
    auto const* const found = std::ranges::find(keys, code, &ANSIKey::code);
    return found == keys.end() ? nullptr : found;
}

}
