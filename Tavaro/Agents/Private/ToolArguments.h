#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/JSONValue.h>
#include <TavaroMCP/Protocol/MCPToolError.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tavaro {

/// Throws `MCPToolError` (`invalidArguments`).
[[noreturn]] void refuseArguments(std::string const& sentence);

/// The numbers that an argument takes, ends included.
struct ArgumentLimits {
    double least = 0;
    double most = 0;
};

/// What a client gave a tool, read by name; null counts as absent. A value of another type, or outside of its limits,
/// throws `MCPToolError`. Borrows the object.
class ToolArguments {
public:
    explicit ToolArguments(JSONValue::Object const& given) : given_(&given) {}

    /// Null where it is absent.
    JSONValue const* find(std::string_view name) const;
    bool has(std::string_view name) const { return find(name) != nullptr; }

    std::optional<std::string> text(std::string_view name) const;
    /// "… is required." for one that is absent, empty or no text.
    std::string requiredText(std::string_view name) const;
    std::optional<bool> flag(std::string_view name) const;
    std::optional<double> number(std::string_view name) const;
    double requiredNumber(std::string_view name) const;
    /// "… must be 0.25–16." for whatever is no such number.
    std::optional<double> number(std::string_view name, ArgumentLimits const& limits) const;
    /// The same for whole numbers, however they are written: 3 and 3.0.
    std::optional<std::int64_t> integer(std::string_view name, ArgumentLimits const& limits) const;
    std::optional<ToolArguments> object(std::string_view name) const;

    /// "… must be a, b or c." for whatever is none of the enumeration's names.
    template<NamedEnum E> std::optional<E> oneOf(std::string_view name) const {
        auto const* const value = find(name);
        return value ? std::optional(namedBy<E>(name, value)) : std::nullopt;
    }
    /// The same for one that may not be absent.
    template<NamedEnum E> E requiredOneOf(std::string_view name) const { return namedBy<E>(name, find(name)); }

    JSONValue::Object const& all() const { return *given_; }

private:
    template<NamedEnum E> static E namedBy(std::string_view name, JSONValue const* value) {
        auto const* const text = value ? value->as<std::string>() : nullptr;
        if (auto const found = text ? enumNamed<E>(*text) : std::nullopt) return *found;
        constexpr auto names = namesOf(E{});
        refuseChoice(name, names);
    }
    [[noreturn]] static void refuseChoice(std::string_view name, std::span<std::string_view const> names);

    JSONValue::Object const* given_;
};

}
