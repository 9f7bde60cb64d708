#pragma once

#include <TavaroMedia/FFmpeg/Handles.h>
#include <TavaroMedia/Movie/MovieWriter.h>

namespace tavaro {

/// Ticks a second of the writer's clock: a multiple of the frame rate, so that frame n at n/fps is exact, of at least
/// 90000, so that frames at any other time are placed to a hundredth of a millisecond.
int ticksPerSecond(int fps);

/// The one place that chooses and configures an encoder. Takes even sizes only. Throws `MediaError` in words about
/// `file`.
ffmpeg::CodecContext openEncoder(std::filesystem::path const& file, MovieWriterSettings const& settings);

}
