#pragma once

#include <TavaroCore/Records/JSONValue.h>

#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// JSON Schemas of arguments.
namespace tavaro::schema {

/// Absent is unbounded.
struct Bounds {
    JSONValue minimum;
    JSONValue maximum;
};

JSONValue text(std::string_view description);
JSONValue flag(std::string_view description);
JSONValue number(std::string_view description, Bounds const& bounds = {});
JSONValue integer(std::string_view description, Bounds const& bounds = {});
/// An object with whatever is in it.
JSONValue freeObject(std::string_view description);
JSONValue texts(std::string_view description);
JSONValue oneOf(std::span<std::string_view const> names, std::string_view description);

struct Property {
    std::string_view name;
    JSONValue schema;
};
using Properties = std::vector<Property>;

/// An object with these properties and no others.
JSONValue object(Properties const& properties, std::vector<std::string_view> const& required = {});

}
