#pragma once

namespace tavaro {

struct DemoProject;
enum class AudioRole;

/// The loudest a track may be set to: twice its recorded level.
inline constexpr double loudestGain = 2;

/// Edits of the tracks of one role. A role that the document has no track of throws `EditError::noSuchTrack`.
void setTrackMuted(DemoProject& project, AudioRole role, bool isMuted);
/// Linear, 1 is as recorded; held to 0…`loudestGain`.
void setTrackGain(DemoProject& project, AudioRole role, double gain);

}
