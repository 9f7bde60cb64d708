#include <TavaroCore/Files/TextEncoding.h>

#include <algorithm>
#include <cstdint>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

namespace tavaro {

namespace {

char const* nameOf(TextEncoding encoding) {
    switch (encoding) {
    case TextEncoding::utf16LittleEndian: return "UTF-16LE";
    case TextEncoding::utf16BigEndian: return "UTF-16BE";
    case TextEncoding::windows1252: return "windows-1252";
    }
    return nullptr;
}

/// Bytes of the next stretch, which ICU counts in 32 bits: even, and not between the two units of a character.
std::size_t lengthOfStretch(std::string_view bytes, TextEncoding encoding) {
    constexpr std::size_t most = 1 << 20;
    if (bytes.size() <= most || encoding == TextEncoding::windows1252) return std::min(bytes.size(), most);
    auto const high = static_cast<unsigned char>(bytes[most - (encoding == TextEncoding::utf16LittleEndian ? 1 : 2)]);
    return high >= 0xD8 && high <= 0xDB ? most - 2 : most;
}

bool isUTF8(std::string_view text) {
    while (!text.empty()) {
        auto const head = text.substr(0, 4);
        std::int32_t next = 0;
        UChar32 value = 0;
        U8_NEXT(head.data(), next, static_cast<std::int32_t>(head.size()), value);
        if (value < 0) return false;
        text.remove_prefix(static_cast<std::size_t>(next));
    }
    return true;
}

}

std::string utf8Of(std::string_view bytes, TextEncoding encoding) {
    std::string result;
    while (!bytes.empty()) {
        auto const length = lengthOfStretch(bytes, encoding);
        icu::UnicodeString(bytes.data(), static_cast<std::int32_t>(length), nameOf(encoding)).toUTF8String(result);
        bytes.remove_prefix(length);
    }
    return result;
}

std::optional<std::string> utf8OfMarkedUTF16(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) return utf8Of(bytes.substr(2), TextEncoding::utf16LittleEndian);
    if (bytes.starts_with("\xFE\xFF")) return utf8Of(bytes.substr(2), TextEncoding::utf16BigEndian);
    return std::nullopt;
}

std::string decodedText(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
    auto const utf16 = utf8OfMarkedUTF16(bytes);
    auto text = utf16 ? *utf16 : isUTF8(bytes) ? std::string(bytes) : utf8Of(bytes, TextEncoding::windows1252);
    std::erase_if(text, [](char c) { return (c >= 0 && c < ' ' && c != '\n' && c != '\r' && c != '\t') || c == 0x7F; });
    return text;
}

}
