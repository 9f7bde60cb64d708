#include <TavaroCore/Records/JSONValue.h>

#include <TavaroCore/Records/JSONError.h>

#include <cmath>

namespace tavaro {

namespace {

JSONValue valueAt(JSONReader& reader, std::size_t depth);

/// The depth inside an object or array.
std::size_t inside(std::size_t depth) {
    if (depth < JSONValue::deepestNesting) return depth + 1;
    throw JSONError(JSONError::Kind::malformed, "the JSON is nested too deeply");
}

JSONValue objectAt(JSONReader& reader, std::size_t depth) {
    JSONValue::Object members;
    reader.object([&](std::string_view key) {
        std::string name(key);
        reader.takeMemoryOfNode(sizeof(JSONValue) + sizeof(std::string) + name.size());
        members.insert_or_assign(std::move(name), valueAt(reader, depth));
    });
    return {std::move(members)};
}

JSONValue arrayAt(JSONReader& reader, std::size_t depth) {
    JSONValue::Array elements;
    reader.array([&](std::size_t) {
        reader.takeMemoryToGrow(elements);
        elements.push_back(valueAt(reader, depth));
    });
    return {std::move(elements)};
}

JSONValue valueAt(JSONReader& reader, std::size_t depth) {
    switch (reader.type()) {
    case JSONReader::Type::object: return objectAt(reader, inside(depth));
    case JSONReader::Type::array: return arrayAt(reader, inside(depth));
    case JSONReader::Type::string: return {reader.keptString()};
    case JSONReader::Type::boolean: return {reader.boolean()};
    case JSONReader::Type::null: reader.takeNull(); return {};
    case JSONReader::Type::number: break;
    }
    if (auto const whole = reader.wholeNumber()) return {*whole};
    return {reader.number()};
}

/// Whether both are one number, which is written the same way.
bool isSame(std::int64_t whole, double real) {
    return std::abs(real) < 0x1p63 && static_cast<std::int64_t>(real) == whole && std::trunc(real) == real;
}

struct Writing {
    JSONWriter& writer;

    void operator()(JSONValue::Null) const { writer.null(); }
    void operator()(bool value) const { writer.boolean(value); }
    void operator()(std::int64_t value) const { writer.integer(value); }
    void operator()(double value) const { writer.number(value); }
    void operator()(std::string const& text) const { writer.string(text); }
    void operator()(JSONValue::Array const& elements) const {
        writer.beginArray();
        for (auto const& element : elements) writeJSON(writer, element);
        writer.endArray();
    }
    void operator()(JSONValue::Object const& members) const {
        writer.beginObject();
        for (auto const& [key, member] : members) {
            writer.escapedKey(key);
            writeJSON(writer, member);
        }
        writer.endObject();
    }
};

}

bool operator==(JSONValue const& a, JSONValue const& b) {
    auto const* const whole = a.as<std::int64_t>() ? a.as<std::int64_t>() : b.as<std::int64_t>();
    auto const* const real = a.as<double>() ? a.as<double>() : b.as<double>();
    return whole && real ? isSame(*whole, *real) : a.content == b.content;
}

JSONValue const* JSONValue::find(std::string_view key) const {
    auto const* const members = as<Object>();
    if (!members) return nullptr;
    auto const found = members->find(key);
    return found == members->end() ? nullptr : &found->second;
}

JSONReader::Type JSONValue::type() const {
    using enum JSONReader::Type;
    constexpr JSONReader::Type types[] = {null, boolean, number, number, string, array, object};
    return types[content.index()];
}

JSONValue JSONValue::parse(std::string_view text) {
    std::string array("["); // the reader takes no single values
    array.append(text).append("]");
    JSONReader reader(array);
    if (!reader.enterArray()) throw JSONError(JSONError::Kind::malformed, "the text is empty");
    auto value = valueAt(reader, 0);
    if (reader.nextElement()) throw JSONError(JSONError::Kind::malformed, "something follows the end of the JSON");
    reader.expectEnd();
    return value;
}

void readJSON(JSONReader& reader, JSONValue& value) { value = valueAt(reader, 0); }

void writeJSON(JSONWriter& writer, JSONValue const& value) { std::visit(Writing{writer}, value.content); }

}
