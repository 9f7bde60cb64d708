#pragma once

#include <vector>

namespace tavaro {

struct ScreenFinding;

/// Findings of one text that meet in time and place are one, and what is read differently meanwhile is covered on its
/// way.
std::vector<ScreenFinding> joinedFindings(std::vector<ScreenFinding> findings);

/// Those that are covered by another until they end become a part of it: what was found of a text before it was all
/// typed.
std::vector<ScreenFinding> withoutParts(std::vector<ScreenFinding> findings);

}
