#pragma once

#include <optional>

#include <TavaroMedia/Frames/Image.h>

namespace tavaro {

class VideoFrame;

/// The transparency that a movie's frame carries, as a grey picture: white where it is opaque. None for a frame of a
/// format without transparency, and for one that is shown turned.
std::optional<Image> alphaPicture(VideoFrame const& frame);

}
