#pragma once

#include <string_view>

namespace tavaro {

struct KeystrokeEvent;
struct RecordingMetadata;

/// What is in place of each key of plain typing that a log tells no more: it shows when and how much was typed, not
/// what.
inline constexpr std::string_view maskedKey = "•";

/// "⌃", "⌥", "⇧" or "⌘"
bool isModifierName(std::string_view key);

/// Masks the keys of plain typing; modifiers and shortcuts stay. True where something was told.
bool maskTyping(KeystrokeEvent& stroke);

/// Whether a log masks any.
bool masksTyping(RecordingMetadata const& log);
/// Whether a log tells keys that another one masks, by the ids of the strokes.
bool tellsWhatIsMasked(RecordingMetadata const& log, RecordingMetadata const& masked);
/// Masks them.
void maskTypingAsIn(RecordingMetadata& log, RecordingMetadata const& masked);

}
