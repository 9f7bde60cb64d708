#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

/// A moment, in milliseconds since 1970 UTC; written as ISO 8601 text ("2026-03-01T09:30:00.250Z").
struct Date {
    std::int64_t milliseconds = 0;

    static Date now();
    /// Reads ISO 8601: date, "T", time with seconds, optional fraction (cut to milliseconds), "Z" or an offset.
    static std::optional<Date> parse(std::string_view text);
    /// Whole seconds are written without a fraction.
    std::string text() const;

    auto operator<=>(Date const&) const = default;
};

}
