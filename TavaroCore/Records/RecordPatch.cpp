#include <TavaroCore/Records/RecordPatch.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <span>

namespace tavaro::detail {

void failExpected(JSONReader::Type wanted, JSONValue const& found) {
    throw JSONError(JSONError::Kind::wrongType,
                    fmt::format("expected {}, found {}", JSONReader::nameOf(wanted), JSONReader::nameOf(found.type())));
}

void failUnknownKey(std::string_view const* names, std::size_t count) {
    throw JSONError(JSONError::Kind::unknownKey, count == 0 ? "there is no such field, and none beside it"
                                                            : fmt::format("there is no such field; there are {}",
                                                                          fmt::join(std::span(names, count), ", ")));
}

void failNoItem(std::size_t count) {
    throw JSONError(JSONError::Kind::unknownKey,
                    count == 0 ? "there is no such item; the list is empty"
                               : fmt::format("there is no such item; the list has those from 0 to {}", count - 1));
}

}
