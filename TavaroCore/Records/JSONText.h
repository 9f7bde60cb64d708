#pragma once

#include <TavaroCore/Records/JSONValue.h>

#include <string>
#include <utility>

namespace tavaro {

/// Any JSON value, as its text: for what is passed on without being looked into, since a tree of it costs twenty times
/// the memory and the time. The text is well formed, of one value, and has no line breaks.
class JSONText {
public:
    JSONText() = default;
    JSONText(JSONValue const& value);
    JSONText(JSONValue::Object members) : JSONText(JSONValue(std::move(members))) {}
    /// Of a text that this program wrote itself.
    static JSONText written(std::string text);

    std::string const& text() const { return text_; }
    /// Its tree.
    JSONValue value() const { return JSONValue::parse(text_); }

    /// Of the texts: one that is spelled in another way is another one.
    bool operator==(JSONText const&) const = default;

private:
    friend void readJSON(JSONReader& reader, JSONText& text);

    std::string text_ = "null";
};

void readJSON(JSONReader& reader, JSONText& text);
void writeJSON(JSONWriter& writer, JSONText const& text);

}
