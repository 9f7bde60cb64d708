#include <TavaroCore/Records/JSON.h>

#include <TavaroCore/Errors/Excerpt.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <span>

namespace tavaro {

namespace detail {

void failUnknownName(std::string_view found, std::string_view const* names, std::size_t count) {
    throw JSONError(JSONError::Kind::unknownName,
                    fmt::format("'{}' is not one of {}", excerpt(found), fmt::join(std::span(names, count), ", ")));
}

void failCaseShape() {
    throw JSONError(JSONError::Kind::wrongType, "expected an object with one key, the name of the case");
}

void failIntegerRange() { throw JSONError(JSONError::Kind::wrongType, "the number is too large for this value"); }

}

void readJSON(JSONReader& reader, UUID& value) {
    auto const text = reader.string();
    auto const parsed = UUID::parse(text);
    if (!parsed) {
        throw JSONError(JSONError::Kind::wrongType, fmt::format("'{}' is not an identifier", excerpt(text)));
    }
    value = *parsed;
}

void readJSON(JSONReader& reader, Date& value) {
    auto const text = reader.string();
    auto const parsed = Date::parse(text);
    if (!parsed)
        throw JSONError(JSONError::Kind::unrecognisedDate, fmt::format("Unrecognised date '{}'", excerpt(text)));
    value = *parsed;
}

void readJSON(JSONReader& reader, Data& value) {
    auto parsed = Data::fromBase64(reader.string());
    if (!parsed) throw JSONError(JSONError::Kind::wrongType, "the text is not base64");
    value = std::move(*parsed);
}

void writeJSON(JSONWriter& writer, UUID const& value) { writer.plainString(value.text()); }

void writeJSON(JSONWriter& writer, Date const& value) { writer.plainString(value.text()); }

void writeJSON(JSONWriter& writer, Data const& value) { writer.plainString(value.base64()); }

}
