#pragma once

#include <TavaroCore/Values/TimeRange.h>

#include <vector>

namespace tavaro {

struct TimelineWord;

/// Where to cut so that the chosen of the words go, by the rules of `deleteWords`; `isChosen` has an entry for each
/// word. The ranges ascend and lie apart. `duration` is that of the edit.
std::vector<TimeRange> cutsForWords(std::vector<TimelineWord> const& words, std::vector<bool> const& isChosen,
                                    double duration);

}
