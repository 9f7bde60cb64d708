#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Texts as they can be drawn: whatever bytes a document holds, a layer is laid out from valid UTF-8 of bounded length.
namespace tavaro {

enum class LineBreaks { kept, toSpaces };

/// The text as UTF-8: bytes that are not become U+FFFD, control characters go, tabs become spaces. What is longer than
/// `maxCharacters` Unicode scalar values is cut and ends with "…".
std::string readableText(std::string_view bytes, std::size_t maxCharacters, LineBreaks breaks = LineBreaks::kept);

/// Graphemes: what a reader calls a character, however many scalar values make it.
std::int64_t graphemesOf(std::string_view text);

/// The bytes of the first `count` graphemes.
std::size_t bytesOfGraphemes(std::string_view text, std::int64_t count);

/// Whether there is anything to see: more than white space.
bool isBlank(std::string_view text);

/// The language that the letters of the text belong to where one script is written in several ways ("ja" for Han with
/// Kana, "zh-cn" for Han alone), "en" else. Fonts are chosen by it, not by the language of the machine.
char const* languageOf(std::string_view text);

}
