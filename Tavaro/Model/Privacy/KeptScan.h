#pragma once

#include <TavaroCore/Privacy/Redaction.h>

#include <array>
#include <cstddef>
#include <string_view>

namespace tavaro {

struct DemoProject;
struct MadePrivacyScan;

/// The name of the step in a project's history.
inline constexpr char const* privacyScanStep = "Hide Private Text";

/// What became of a finding. A finding is a track that a scan made, which has the hash of what it hides.
enum class FindingState {
    hidden,   // as the scan left it
    accepted, // or changed: later scans leave it as it is
    rejected, // shown
};

constexpr std::array<std::string_view, 3> namesOf(FindingState) { return {"hidden", "accepted", "rejected"}; }

bool isFinding(RedactionTrack const& track);
FindingState stateOf(RedactionTrack const& finding);

/// What was taken into a document.
struct KeptScan {
    std::size_t hidden = 0;        // findings of this scan
    std::size_t rejected = 0;      // likewise, of texts that the user rejected before
    std::size_t maskedStrokes = 0; // of the log
};

/// Takes what was found into the document. In what was looked at, tracks of earlier scans give way to those of this
/// one, unless they are of something that it did not look for; what the user decided of a text stays: tracks that were
/// accepted or changed are as they are, and a text that was rejected stays so wherever it is found again. Tracks that
/// somebody made are left alone. Letters that were typed into what is hidden are taken out of the log: the strokes and
/// their times stay. A saved document does not get them back, whatever is undone.
KeptScan keepPrivacyScan(DemoProject& project, MadePrivacyScan const& made);

}
