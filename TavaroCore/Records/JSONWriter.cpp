#include <TavaroCore/Records/JSONWriter.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include <sys/mman.h>

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

/// Whether the character stands for itself in a JSON text.
constexpr bool isPlain(unsigned char c) { return c >= 0x20 && c < 0x80 && c != '"' && c != '\\'; }

std::string_view controlEscape(unsigned char c, std::array<char, 6>& room) {
    constexpr char digits[] = "0123456789abcdef";
    switch (c) {
    case '\b': return "\\b";
    case '\f': return "\\f";
    case '\n': return "\\n";
    case '\r': return "\\r";
    case '\t': return "\\t";
    default: room = {'\\', 'u', '0', '0', digits[c >> 4], digits[c & 15]}; return {room.data(), room.size()};
    }
}

}

void JSONWriter::expect(std::size_t bytes) {
    constexpr std::uintptr_t hugePage = 2 << 20;
    text_.reserve(bytes);
    if (bytes < 4 * hugePage) return;
    // Handing out tens of megabytes in small pages would cost a quarter of the time of writing them.
    auto const begin = (reinterpret_cast<std::uintptr_t>(text_.data()) + hugePage - 1) & ~(hugePage - 1);
    auto const end = (reinterpret_cast<std::uintptr_t>(text_.data()) + bytes) & ~(hugePage - 1);
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE); // a wish
}

void JSONWriter::grow(std::size_t bytes) {
    constexpr std::size_t smallest = 1 << 10, largest = 1 << 16; // filled with zeros first, so in the cache
    auto const used = static_cast<std::size_t>(at_ - (at_ ? text_.data() : nullptr));
    auto const wanted = used + std::max(bytes, std::clamp(used, smallest, largest));
    if (wanted > text_.capacity()) text_.reserve(std::max(wanted, 2 * used));
    text_.resize(wanted);
    at_ = text_.data() + used;
    end_ = text_.data() + wanted;
}

std::string JSONWriter::take() {
    text_.resize(at_ ? static_cast<std::size_t>(at_ - text_.data()) : 0);
    at_ = end_ = nullptr;
    needsComma_ = false;
    return std::exchange(text_, {});
}

void JSONWriter::key(std::string_view name) {
    separate();
    put('"');
    put(name);
    put("\":");
    needsComma_ = false;
}

void JSONWriter::escapedKey(std::string_view name) {
    separate();
    putEscaped(name);
    put(':');
    needsComma_ = false;
}

void JSONWriter::string(std::string_view text) {
    separate();
    putEscaped(text);
}

void JSONWriter::putEscaped(std::string_view text) {
    put('"');
    while (!text.empty()) {
        std::size_t length = 0;
        while (length < text.size() && isPlain(static_cast<unsigned char>(text[length]))) ++length;
        if (length == 0) {
            auto const c = static_cast<unsigned char>(text.front());
            std::array<char, 6> room;
            length = 1;
            if (c == '"' || c == '\\') {
                put('\\');
                put(text.front());
            } else if (c < 0x20) {
                put(controlEscape(c, room));
            } else if ((length = sequenceLength(text)) > 0) {
                put(text.substr(0, length));
            } else {
                put(replacementCharacter);
                length = 1;
            }
        } else {
            put(text.substr(0, length));
        }
        text.remove_prefix(length);
    }
    put('"');
}

void JSONWriter::number(float value) {
    if (!std::isfinite(value)) return word("null");
    char* const at = separated(decimalRoom + 1);
    at_ = std::to_chars(at, at + decimalRoom, value).ptr;
}

void JSONWriter::integer(std::int64_t value) {
    char* const at = separated(decimalRoom + 1);
    at_ = std::to_chars(at, at + decimalRoom, value).ptr;
}

}
