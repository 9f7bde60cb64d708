#pragma once

#include <TavaroVision/Reading/Private/TextLines.h>
#include <TavaroVision/Reading/ReadText.h>

#include <functional>
#include <span>
#include <vector>

namespace tavaro {

/// What the lines of a picture say, in their order. Throws `VisionError`.
using LineReading = std::function<std::vector<ReadLine>(GrayView const&, std::span<TextLine const>)>;

}
