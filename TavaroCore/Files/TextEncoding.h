#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

enum class TextEncoding { utf16LittleEndian, utf16BigEndian, windows1252 };

/// As UTF-8; what is no character of the encoding becomes "�".
std::string utf8Of(std::string_view bytes, TextEncoding encoding);

/// UTF-16 as UTF-8, without its mark; none for bytes that a byte order mark of UTF-16 does not begin.
std::optional<std::string> utf8OfMarkedUTF16(std::string_view bytes);

}
