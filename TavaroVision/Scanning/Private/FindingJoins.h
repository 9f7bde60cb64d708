#pragma once

#include <vector>

namespace tavaro {

struct NormalizedRect;
struct ScreenFinding;

/// What it covers at that time; held before its first place and after its last.
NormalizedRect areaAt(ScreenFinding const& finding, double seconds);

/// Whether the second seems to be the first, seen again soon after. The same text at two places at once is two.
bool goOn(ScreenFinding const& a, ScreenFinding const& b);

/// Findings of one text that meet in time and place are one, and what is read differently meanwhile is covered on its
/// way.
std::vector<ScreenFinding> joinedFindings(std::vector<ScreenFinding> findings);

/// Those that are covered by another until they end become a part of it: what was found of a text before it was all
/// typed.
std::vector<ScreenFinding> withoutParts(std::vector<ScreenFinding> findings);

}
