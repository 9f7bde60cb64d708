#pragma once

#include <string>
#include <string_view>

namespace tavaro {

/// A line of SubRip without the tags that players know (<i>, <b>, <u>, <s>, <font …>) and without "{\…}" codes; other
/// angle brackets are text.
std::string withoutSubRipMarkup(std::string_view line);

/// A line of WebVTT without its tags, with its character references resolved.
std::string withoutWebVTTMarkup(std::string_view line);

}
