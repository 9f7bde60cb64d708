#include <TavaroCore/Records/JSONWriter.h>

#include <charconv>
#include <cmath>

namespace tavaro {

namespace {

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";

/// Length of the valid UTF-8 sequence at the front of the text, 0 when there is none.
std::size_t sequenceLength(std::string_view text) {
    auto const byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    auto const continues = [&](std::size_t i) { return i < text.size() && (byte(i) & 0xC0) == 0x80; };
    unsigned char const lead = byte(0);
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return continues(1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        if (!continues(1) || !continues(2)) return 0;
        if (lead == 0xE0 && byte(1) < 0xA0) return 0; // longer than needed
        if (lead == 0xED && byte(1) > 0x9F) return 0; // half of a surrogate pair
        return 3;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        if (!continues(1) || !continues(2) || !continues(3)) return 0;
        if (lead == 0xF0 && byte(1) < 0x90) return 0;
        if (lead == 0xF4 && byte(1) > 0x8F) return 0; // past U+10FFFF
        return 4;
    }
    return 0;
}

void appendControl(std::string& out, unsigned char c) {
    constexpr char digits[] = "0123456789abcdef";
    switch (c) {
    case '\b': out += "\\b"; return;
    case '\f': out += "\\f"; return;
    case '\n': out += "\\n"; return;
    case '\r': out += "\\r"; return;
    case '\t': out += "\\t"; return;
    default:
        out += "\\u00";
        out += digits[c >> 4];
        out += digits[c & 15];
    }
}

void appendEscaped(std::string& out, std::string_view text) {
    out += '"';
    while (!text.empty()) {
        auto const c = static_cast<unsigned char>(text.front());
        std::size_t length = 1;
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c < 0x20) {
            appendControl(out, c);
        } else if ((length = sequenceLength(text)) > 0) {
            out += text.substr(0, length);
        } else {
            out += replacementCharacter;
            length = 1;
        }
        text.remove_prefix(length);
    }
    out += '"';
}

template<class Number> void appendNumber(std::string& out, Number value) {
    char buffer[32];
    auto const result = std::to_chars(buffer, buffer + sizeof buffer, value);
    out.append(buffer, result.ptr);
}

}

void JSONWriter::separate() {
    if (needsComma_) text_ += ',';
    needsComma_ = true;
}

void JSONWriter::open(char bracket) {
    separate();
    text_ += bracket;
    needsComma_ = false;
}

void JSONWriter::close(char bracket) {
    text_ += bracket;
    needsComma_ = true;
}

void JSONWriter::key(std::string_view name) {
    separate();
    text_ += '"';
    text_ += name;
    text_ += "\":";
    needsComma_ = false;
}

void JSONWriter::escapedKey(std::string_view name) {
    separate();
    appendEscaped(text_, name);
    text_ += ':';
    needsComma_ = false;
}

void JSONWriter::string(std::string_view text) {
    separate();
    appendEscaped(text_, text);
}

void JSONWriter::number(double value) {
    separate();
    if (std::isfinite(value))
        appendNumber(text_, value);
    else
        text_ += "null";
}

void JSONWriter::number(float value) {
    separate();
    if (std::isfinite(value))
        appendNumber(text_, value);
    else
        text_ += "null";
}

void JSONWriter::integer(std::int64_t value) {
    separate();
    appendNumber(text_, value);
}

void JSONWriter::boolean(bool value) {
    separate();
    text_ += value ? "true" : "false";
}

}
