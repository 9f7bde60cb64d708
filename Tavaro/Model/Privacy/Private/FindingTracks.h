#pragma once

#include <TavaroCore/Privacy/Redaction.h>

#include <set>
#include <string>
#include <vector>

namespace tavaro {

struct ScanOutcome;

/// What a scan of one recording found, and how that is hidden.
struct FindingsOfMovie {
    std::string const& asset;
    ScanOutcome const& outcome;
    RedactionStyle style = RedactionStyle::mask;
    std::set<SensitiveKind> const& kinds; // that were looked for
};

/// Whether both hide the same text.
bool hidesTheSame(RedactionTrack const& a, RedactionTrack const& b);

/// The tracks with those of the scan in place of earlier ones. What it did not look for stays, and so does a word or a
/// pattern of the user's that it did not find again: nobody knows by which one it was found.
///
///     before   ══auto══╪═════╪═auto══    ──accepted──    ··rejected··
///     looked at        └─────┘
///     found             ╞═══╡
///     after    ══auto══╧╧═══╡  ══════    ──accepted──    ··rejected··
std::vector<RedactionTrack> withFindings(std::vector<RedactionTrack> const& tracks, FindingsOfMovie const& found);

}
