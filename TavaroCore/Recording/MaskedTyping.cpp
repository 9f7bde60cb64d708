#include <TavaroCore/Recording/MaskedTyping.h>

#include <TavaroCore/Recording/RecordingMetadata.h>

#include <algorithm>
#include <array>
#include <set>

namespace tavaro {

namespace {

bool tells(KeystrokeEvent const& stroke) {
    if (stroke.isShortcut) return false;
    return std::ranges::any_of(stroke.keys, [](auto const& key) { return key != maskedKey && !isModifierName(key); });
}

bool isMasked(KeystrokeEvent const& stroke) {
    return !stroke.isShortcut && std::ranges::find(stroke.keys, maskedKey) != stroke.keys.end();
}

std::set<UUID> maskedStrokes(RecordingMetadata const& log) {
    std::set<UUID> found;
    for (auto const& stroke : log.keystrokes)
        if (isMasked(stroke)) found.insert(stroke.id);
    return found;
}

}

bool isModifierName(std::string_view key) {
    static constexpr std::array<std::string_view, 4> modifiers{"⌃", "⌥", "⇧", "⌘"};
    return std::ranges::find(modifiers, key) != modifiers.end();
}

bool maskTyping(KeystrokeEvent& stroke) {
    if (!tells(stroke)) return false;
    for (auto& key : stroke.keys)
        if (!isModifierName(key)) key = maskedKey;
    return true;
}

bool masksTyping(RecordingMetadata const& log) { return std::ranges::any_of(log.keystrokes, isMasked); }

bool tellsWhatIsMasked(RecordingMetadata const& log, RecordingMetadata const& masked) {
    auto const strokes = maskedStrokes(masked);
    return !strokes.empty() && std::ranges::any_of(log.keystrokes, [&](auto const& stroke) {
        return tells(stroke) && strokes.contains(stroke.id);
    });
}

void maskTypingAsIn(RecordingMetadata& log, RecordingMetadata const& masked) {
    auto const strokes = maskedStrokes(masked);
    for (auto& stroke : log.keystrokes)
        if (strokes.contains(stroke.id)) maskTyping(stroke);
}

}
