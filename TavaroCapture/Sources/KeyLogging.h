#pragma once

#include <array>
#include <string_view>

namespace tavaro {

/// Which keys a take's log has.
enum class KeyLogging {
    all,
    shortcuts, // those pressed with control, alt or command
    none,
};

constexpr std::array<std::string_view, 3> namesOf(KeyLogging) { return {"all", "shortcuts", "none"}; }

}
