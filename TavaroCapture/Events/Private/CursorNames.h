#pragma once

#include <TavaroCore/Recording/RecordingMetadata.h>

#include <string_view>

namespace tavaro {

/// The kind of pointer that a cursor of that name shows, by the names of X's cursor font, of cursor themes and of CSS.
/// A cursor without a name, or with one that says nothing here (a busy watch), is an arrow.
CursorKind cursorKind(std::string_view name);

}
