#pragma once

#include <TavaroCore/Records/JSONReader.h>
#include <TavaroCore/Records/JSONWriter.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
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

    /// Arrays and objects inside each other; what is nested deeper is refused.
    static constexpr std::size_t deepestNesting = 64;

    /// Reads a whole text, which may be a single value too. Throws `JSONError`.
    static JSONValue parse(std::string_view text);

    bool isNull() const { return std::holds_alternative<Null>(content); }
    JSONReader::Type type() const;
    /// Null when the value is something else.
    template<class T> T const* as() const { return std::get_if<T>(&content); }

    friend bool operator==(JSONValue const& a, JSONValue const& b);
};

void readJSON(JSONReader& reader, JSONValue& value);
void writeJSON(JSONWriter& writer, JSONValue const& value);

}
