#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace tavaro {

/// One key of the ANSI layout.
struct ANSIKey {
    std::string_view name;    // in shortcuts
    std::uint16_t code = 0;   // virtual key code
    std::uint32_t symbol = 0; // X keysym that it makes there
    char const* place = "";   // XKB's name of its place, which holds on other layouts
};

/// Keys with two names are in it twice.
std::span<ANSIKey const> ansiKeys();
/// Null for a code that is no key's.
ANSIKey const* ansiKey(std::uint16_t code);

}
