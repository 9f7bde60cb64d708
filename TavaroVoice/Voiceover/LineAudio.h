#pragma once

#include <string>
#include <string_view>

namespace tavaro {

struct VoiceoverPlan;
struct VoiceoverSegment;
struct VoiceSettings;

/// The sound of a line is known by what it is made of: an asset named for the text and everything of the settings that
/// is heard. So a line that was said before, in a copy, before an undo or by a run that was killed, finds its sound
/// again, and nobody pays for it twice.
std::string lineAsset(std::string_view text, VoiceSettings const& voice);
/// Where the times of its words are, beside it.
std::string lineWordsAsset(std::string_view lineAsset);
/// Whether an asset is named like that. Others are a user's own.
bool isLineAsset(std::string_view asset);

/// Blanks, marks and emoji alone are never spoken.
bool hasWords(std::string_view text);

/// Whether a line has no sound yet, or that of another text, voice or speed. Sound of the user's own counts as right as
/// long as the text is.
bool needsGeneration(VoiceoverSegment const& segment, VoiceSettings const& voice);
bool needsGeneration(VoiceoverPlan const& plan);

}
