#include <TavaroCore/Files/TextEncoding.h>

#include <algorithm>
#include <cstdint>
#include <unicode/unistr.h>

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

}
