#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tavaro {

/// Appends compact JSON to one string. Numbers take their shortest form that reads back equal; bytes that are not UTF-8
/// become U+FFFD, so what is written can always be read.
class JSONWriter {
public:
    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    void beginArray() { open('['); }
    void endArray() { close(']'); }
    /// `name` needs no escaping: a field or case name from the code.
    void key(std::string_view name);
    /// Any text as a key.
    void escapedKey(std::string_view name);

    void string(std::string_view text);
    /// JSON has no infinities and no NaN; they are written as null, which reads as "not given".
    void number(double value);
    void number(float value);
    void integer(std::int64_t value);
    void boolean(bool value);

    std::string take() { return std::move(text_); }

private:
    void separate();
    void open(char bracket);
    void close(char bracket);

    std::string text_;
    bool needsComma_ = false;
};

}
