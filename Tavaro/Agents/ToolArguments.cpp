#include <Tavaro/Agents/Private/ToolArguments.h>

#include <fmt/format.h>

#include <cmath>

namespace tavaro {

namespace {

/// Clients write whole numbers as 3 or 3.0, and each arrives as it was written.
std::optional<double> numberOf(JSONValue const& value) {
    if (auto const* const whole = value.as<std::int64_t>()) return static_cast<double>(*whole);
    if (auto const* const number = value.as<double>()) return *number;
    return std::nullopt;
}

[[noreturn]] void refuseType(std::string_view name, std::string_view type) {
    refuseArguments(fmt::format("{} must be {}.", name, type));
}

[[noreturn]] void refuseLimits(std::string_view name, ArgumentLimits const& limits) {
    refuseArguments(fmt::format("{} must be {:g}–{:g}.", name, limits.least, limits.most));
}

}

void refuseArguments(std::string const& sentence) { throw MCPToolError(MCPErrorCode::invalidArguments, sentence); }

JSONValue const* ToolArguments::find(std::string_view name) const {
    auto const found = given_->find(name);
    return found == given_->end() || found->second.isNull() ? nullptr : &found->second;
}

std::optional<std::string> ToolArguments::text(std::string_view name) const {
    auto const* const value = find(name);
    if (!value) return std::nullopt;
    if (auto const* const text = value->as<std::string>()) return *text;
    refuseType(name, "a text");
}

std::string ToolArguments::requiredText(std::string_view name) const {
    auto const* const value = find(name);
    auto const* const text = value ? value->as<std::string>() : nullptr;
    if (!text || text->empty()) refuseArguments(fmt::format("{} is required.", name));
    return *text;
}

std::optional<bool> ToolArguments::flag(std::string_view name) const {
    auto const* const value = find(name);
    if (!value) return std::nullopt;
    if (auto const* const flag = value->as<bool>()) return *flag;
    refuseType(name, "true or false");
}

std::optional<double> ToolArguments::number(std::string_view name) const {
    auto const* const value = find(name);
    if (!value) return std::nullopt;
    if (auto const number = numberOf(*value); number && std::isfinite(*number)) return number;
    refuseType(name, "a number");
}

double ToolArguments::requiredNumber(std::string_view name) const {
    if (auto const given = number(name)) return *given;
    refuseArguments(fmt::format("{} is required.", name));
}

std::optional<double> ToolArguments::number(std::string_view name, ArgumentLimits const& limits) const {
    auto const* const value = find(name);
    if (!value) return std::nullopt;
    auto const number = numberOf(*value);
    if (!number || !(*number >= limits.least && *number <= limits.most)) refuseLimits(name, limits);
    return number;
}

std::optional<std::int64_t> ToolArguments::integer(std::string_view name, ArgumentLimits const& limits) const {
    auto const given = number(name, limits);
    if (!given) return std::nullopt;
    if (std::trunc(*given) != *given) refuseLimits(name, limits);
    return static_cast<std::int64_t>(*given);
}

std::optional<ToolArguments> ToolArguments::object(std::string_view name) const {
    auto const* const value = find(name);
    if (!value) return std::nullopt;
    if (auto const* const object = value->as<JSONValue::Object>()) return ToolArguments(*object);
    refuseType(name, "an object");
}

void ToolArguments::refuseChoice(std::string_view name, std::span<std::string_view const> names) {
    std::string choice;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i > 0) choice += i + 1 < names.size() ? ", " : " or ";
        choice += names[i];
    }
    refuseType(name, choice);
}

}
