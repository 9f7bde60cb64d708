#pragma once

#include <TavaroCore/Records/JSONReader.h>
#include <TavaroCore/Records/JSONWriter.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace tavaro {

/// Any JSON value, as a tree: for what no record describes, such as a patch or arguments from outside. A number that is
/// written whole and fits in 64 bits stays an integer; of a repeated key the last counts.
struct JSONValue {
    using Null = std::monostate;
    using Array = std::vector<JSONValue>;
    using Object = std::map<std::string, JSONValue, std::less<>>;

    std::variant<Null, bool, std::int64_t, double, std::string, Array, Object> content;

    /// From what the code has, so that trees are written down as they look: `JSONValue::Object{{"type", "text"}}`.
    JSONValue() = default;
    JSONValue(std::same_as<bool> auto value) : content(value) {}
    template<std::integral T>
    requires(!std::same_as<T, bool>) JSONValue(T value) : content(static_cast<std::int64_t>(value)) {}
    JSONValue(std::floating_point auto value) : content(static_cast<double>(value)) {}
    JSONValue(std::string value) : content(std::move(value)) {}
    JSONValue(std::string_view value) : content(std::string(value)) {}
    JSONValue(char const* value) : content(std::string(value)) {}
    JSONValue(Array value) : content(std::move(value)) {}
    JSONValue(Object value) : content(std::move(value)) {}

    /// Arrays and objects inside each other; what is nested deeper is refused.
    static constexpr std::size_t deepestNesting = 64;

    /// Reads a whole text, which may be a single value too. Throws `JSONError`.
    static JSONValue parse(std::string_view text);

    bool isNull() const { return std::holds_alternative<Null>(content); }
    JSONReader::Type type() const;
    /// Null when the value is something else.
    template<class T> T const* as() const { return std::get_if<T>(&content); }
    /// The member of that name; null where there is none, or the value is no object.
    JSONValue const* find(std::string_view key) const;
    /// Its content; null where there is none, or it is something else.
    template<class T> T const* find(std::string_view key) const {
        auto const* const member = find(key);
        return member ? member->as<T>() : nullptr;
    }

    friend bool operator==(JSONValue const& a, JSONValue const& b);
};

void readJSON(JSONReader& reader, JSONValue& value);
void writeJSON(JSONWriter& writer, JSONValue const& value);

}
