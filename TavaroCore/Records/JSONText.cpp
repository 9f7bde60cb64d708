#include <TavaroCore/Records/JSONText.h>

#include <algorithm>

namespace tavaro {

JSONText::JSONText(JSONValue const& value) {
    JSONWriter writer;
    writeJSON(writer, value);
    text_ = writer.take();
}

JSONText JSONText::written(std::string text) {
    JSONText result;
    result.text_ = std::move(text);
    return result;
}

void readJSON(JSONReader& reader, JSONText& text) {
    char const* const begin = reader.position();
    reader.skip();
    text.text_.assign(begin, reader.position());
    reader.takeMemory(text.text_.size());
    std::ranges::replace(text.text_, '\n', ' '); // between values; in a string it would not have been read
    std::ranges::replace(text.text_, '\r', ' ');
}

void writeJSON(JSONWriter& writer, JSONText const& text) {
    writer.fixed(text.text().size(), [&](char* at) { return std::ranges::copy(text.text(), at).out; });
}

}
