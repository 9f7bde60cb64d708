#pragma once

#include <TavaroCore/Records/Decimal.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace tavaro {

/// Appends compact JSON to one string. Numbers take their shortest form that reads back equal; bytes that are not UTF-8
/// become U+FFFD, so what is written can always be read.
class JSONWriter {
public:
    /// Room for a text of about that size, so that a long one does not move while it grows.
    void expect(std::size_t bytes);

    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    void beginArray() { open('['); }
    void endArray() { close(']'); }
    /// `name` needs no escaping: a field or case name from the code.
    void key(std::string_view name);
    /// The same, prepared as `,"name":`.
    template<std::size_t size> void quotedKey(std::array<char, size> const& name) {
        char* const at = separated(size);
        std::memcpy(at, name.data() + 1, size - 1);
        at_ = at + (size - 1);
        needsComma_ = false;
    }
    /// Any text as a key.
    void escapedKey(std::string_view name);

    void string(std::string_view text);
    /// A text that needs no escaping, as the names of cases and identifiers do not.
    void plainString(std::string_view text) {
        char* at = separated(text.size() + 3);
        *at++ = '"';
        std::memcpy(at, text.data(), text.size());
        at += text.size();
        *at++ = '"';
        at_ = at;
    }
    /// JSON has no infinities and no NaN; they are written as null, which reads as "not given".
    void number(double value) {
        if (!std::isfinite(value)) return word("null");
        at_ = writeDecimal(separated(decimalRoom + 1), value);
    }
    void number(float value);
    void integer(std::int64_t value);
    void boolean(bool value) { word(value ? "true" : "false"); }
    void null() { word("null"); }

    /// A value that `write(at)` puts where there is room for so many bytes; it returns its end.
    template<class Write> void fixed(std::size_t bytes, Write const& write) { at_ = write(separated(bytes + 1)); }

    std::string take();

private:
    /// Where at least so many bytes may be written.
    char* room(std::size_t bytes) {
        if (static_cast<std::size_t>(end_ - at_) < bytes) grow(bytes);
        return at_;
    }
    void put(char c) {
        *room(1) = c;
        ++at_;
    }
    void put(std::string_view text) {
        std::memcpy(room(text.size()), text.data(), text.size());
        at_ += text.size();
    }
    /// The same behind a comma where one is due; `at_` is the caller's to set.
    char* separated(std::size_t bytes) {
        char* const at = room(bytes);
        *at = ',';
        return at + std::exchange(needsComma_, true);
    }
    void separate() { at_ = separated(1); }
    void open(char bracket) {
        char* const at = separated(2);
        *at = bracket;
        at_ = at + 1;
        needsComma_ = false;
    }
    void close(char bracket) {
        put(bracket);
        needsComma_ = true;
    }
    void word(std::string_view text) {
        separate();
        put(text);
    }
    void grow(std::size_t bytes);
    void putEscaped(std::string_view text);

    std::string text_; // longer than what is written so far, which ends at `at_`
    char* at_ = nullptr;
    char* end_ = nullptr;
    bool needsComma_ = false;
};

}
