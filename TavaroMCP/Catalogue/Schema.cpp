#include <TavaroMCP/Catalogue/Private/Schema.h>

#include <string>
#include <utility>

namespace tavaro::schema {

namespace {

JSONValue::Object typed(char const* type, std::string_view description) {
    return {{"type", type}, {"description", description}};
}

JSONValue bounded(JSONValue::Object schema, Bounds const& bounds) {
    if (!bounds.minimum.isNull()) schema["minimum"] = bounds.minimum;
    if (!bounds.maximum.isNull()) schema["maximum"] = bounds.maximum;
    return schema;
}

template<class Names> JSONValue listed(Names const& names) {
    return JSONValue::Array(std::begin(names), std::end(names));
}

}

JSONValue text(std::string_view description) { return typed("string", description); }
JSONValue flag(std::string_view description) { return typed("boolean", description); }
JSONValue freeObject(std::string_view description) { return typed("object", description); }

JSONValue number(std::string_view description, Bounds const& bounds) {
    return bounded(typed("number", description), bounds);
}

JSONValue integer(std::string_view description, Bounds const& bounds) {
    return bounded(typed("integer", description), bounds);
}

JSONValue texts(std::string_view description) {
    auto schema = typed("array", description);
    schema["items"] = JSONValue::Object{{"type", "string"}};
    return schema;
}

JSONValue oneOf(std::span<std::string_view const> names, std::string_view description) {
    auto schema = typed("string", description);
    schema["enum"] = listed(names);
    return schema;
}

JSONValue object(Properties const& properties, std::vector<std::string_view> const& required) {
    JSONValue::Object schemas;
    for (auto const& [name, schema] : properties) schemas.emplace(name, schema);
    return JSONValue::Object{{"type", "object"},
                             {"properties", std::move(schemas)},
                             {"required", listed(required)},
                             {"additionalProperties", false}};
}

}
