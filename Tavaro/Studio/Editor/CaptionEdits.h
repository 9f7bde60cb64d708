#pragma once

#include <cstddef>
#include <string_view>

namespace tavaro {

struct DemoProject;
struct UUID;

/// Edits of one caption. Times are output seconds; an identity that the document does not have is passed over.

/// The words keep their times where there are as many as before; else they share the caption's time by their length.
void setCaptionText(DemoProject& project, UUID const& caption, std::string_view text);

/// Makes two of it: the text up to that byte, and what follows, which begins when its first word is spoken. Nothing
/// happens where either would have no text.
void splitCaption(DemoProject& project, UUID const& caption, std::size_t byte);

/// Makes one of it and of the caption that begins next, from the beginning of the first to the end of the later one.
void joinCaptionWithNext(DemoProject& project, UUID const& caption);

}
