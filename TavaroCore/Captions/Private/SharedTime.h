#pragma once

#include <TavaroCore/Captions/CaptionTrack.h>
#include <TavaroCore/Values/TimeRange.h>

#include <string_view>
#include <vector>

namespace tavaro {

/// Where each text begins when they follow each other through the range and each lasts its share by its number of
/// characters; the range's end is the last entry. Texts without any characters share alike.
std::vector<double> startsByLength(TimeRange const& range, std::vector<std::string_view> const& texts);

/// The same as words of a caption; each ends where the next begins.
std::vector<CaptionWord> wordsByLength(TimeRange const& range, std::vector<std::string_view> const& texts);

}
