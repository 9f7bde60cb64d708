#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

/// Identity of a record, written as canonical upper-case text ("6BA7B810-9DAD-11D1-80B4-00C04FD430C8").
struct UUID {
    std::array<std::uint8_t, 16> bytes{};

    /// A fresh random (version 4) identifier. Any thread.
    static UUID random();
    /// Reads canonical text in either case; nothing when it is anything else.
    static std::optional<UUID> parse(std::string_view text);
    std::string text() const;

    auto operator<=>(UUID const&) const = default;
};

}
