#pragma once

#include <string>
#include <string_view>

namespace tavaro {

/// The bytes of a text file as UTF-8: UTF-16 where a mark says so, Windows-1252 where they are no UTF-8. Without the
/// mark and without control characters other than tabs and line ends.
std::string decodedText(std::string_view bytes);

/// A line of SubRip without the tags that players know (<i>, <b>, <u>, <s>, <font …>) and without "{\…}" codes; other
/// angle brackets are text.
std::string withoutSubRipMarkup(std::string_view line);

/// A line of WebVTT without its tags, with its character references resolved.
std::string withoutWebVTTMarkup(std::string_view line);

}
