#include <TavaroMCP/Protocol/Private/IncomingMessage.h>

#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroCore/Records/JSONError.h>

#include <cstdint>

namespace tavaro {

namespace {

using Type = JSONReader::Type;
using Visit = FunctionRef<void(JSONReader& reader, std::string_view key)>;

/// What is kept of a message is an id, a token and names; the longest line, as text, fits in thrice.
constexpr std::uint64_t mostMemory = std::uint64_t{64} << 20;

void visitMembers(std::string_view object, Visit visit) {
    JSONReader reader(object);
    reader.takeMemory(JSONReader::mostMemory - mostMemory);
    reader.object([&](std::string_view key) { visit(reader, key); });
    reader.expectEnd();
}

// Of a value of another type, which the reader skips, each gives what stands for none.

std::string textAt(JSONReader& reader) { return reader.type() == Type::string ? reader.keptString() : std::string(); }

JSONText objectAt(JSONReader& reader) {
    JSONText text = JSONValue::Object{};
    if (reader.type() == Type::object) readJSON(reader, text);
    return text;
}

std::string_view objectIn(JSONReader& reader) {
    if (reader.type() != Type::object) return {};
    char const* const begin = reader.position();
    reader.skip();
    return {begin, static_cast<std::size_t>(reader.position() - begin)};
}

JSONValue valueAt(JSONReader& reader) {
    JSONValue value;
    readJSON(reader, value);
    return value;
}

}

std::optional<IncomingMessage> IncomingMessage::of(std::string_view line) {
    IncomingMessage message;
    try {
        visitMembers(line, [&](JSONReader& reader, std::string_view key) {
            if (key == "id") message.id = valueAt(reader);
            if (key == "method") message.method = textAt(reader);
            if (key == "params") message.params = objectIn(reader);
        });
    } catch (JSONError const&) { // the client is told so by one code for all
        return std::nullopt;
    }
    return message;
}

std::optional<JSONValue> IncomingMessage::idIn(std::string_view beginning) {
    constexpr auto isCutCharacter = [](char c) { return (static_cast<unsigned char>(c) & 0x80u) != 0; };
    while (!beginning.empty() && isCutCharacter(beginning.back())) beginning.remove_suffix(1);
    std::string const closed = std::string(beginning) + '}'; // the reader takes no other end
    std::optional<JSONValue> id;
    try {
        visitMembers(closed, [&](JSONReader& reader, std::string_view key) {
            if (key != "id") return;
            auto value = valueAt(reader);
            if (reader.position() < closed.data() + beginning.size()) id = std::move(value); // else it may go on
        });
    } catch (JSONError const&) { // where it was cut off
    }
    return id;
}

CallParameters CallParameters::of(IncomingMessage const& message) {
    CallParameters call;
    if (message.params.empty()) return call;
    visitMembers(message.params, [&](JSONReader& reader, std::string_view key) {
        if (key == "name") call.name = textAt(reader);
        if (key == "arguments") call.arguments = objectAt(reader);
        if (key != "_meta" || reader.type() != Type::object) return;
        reader.object([&](std::string_view inner) {
            if (inner == "progressToken") call.progressToken = valueAt(reader);
        });
    });
    return call;
}

std::optional<JSONValue> cancelledRequest(IncomingMessage const& message) {
    std::optional<JSONValue> id;
    if (message.params.empty()) return id;
    visitMembers(message.params, [&](JSONReader& reader, std::string_view key) {
        if (key == "requestId") id = valueAt(reader);
    });
    return id;
}

std::string nameOfClient(IncomingMessage const& message) {
    std::string name;
    if (message.params.empty()) return name;
    visitMembers(message.params, [&](JSONReader& reader, std::string_view key) {
        if (key != "clientInfo" || reader.type() != Type::object) return;
        reader.object([&](std::string_view inner) {
            if (inner == "name") name = textAt(reader);
        });
    });
    return name;
}

}
