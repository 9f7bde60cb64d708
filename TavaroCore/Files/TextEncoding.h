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

/// The bytes of a text file as UTF-8: UTF-16 where a mark says so, Windows-1252 where they are no UTF-8. Without the
/// mark and without control characters other than tabs and line ends.
std::string decodedText(std::string_view bytes);

}
