#pragma once

#include <TavaroMedia/FFmpeg/Private/Handles.h>
#include <TavaroMedia/Movie/MovieWriter.h>
#include <TavaroMedia/Movie/Private/EncoderInput.h>

namespace tavaro {

/// Ticks a second of the writer's clock: a multiple of the frame rate, so that frame n at n/fps is exact, of at least
/// 90000, so that frames at any other time are placed to a hundredth of a millisecond.
int ticksPerSecond(int fps);

/// An opened encoder, and how it gets its pictures.
struct VideoEncoder {
    ffmpeg::CodecContext context;
    AVPixelFormat drawn = AV_PIX_FMT_YUV420P; // what pictures are drawn as
    EncoderInput input = EncoderInput();
    bool hasLevelBound = false; // see `LevelBound`
};

/// Whether the software encoder of HEVC films has a bound on how coarse its levels get. With one, text is crisp from
/// the first frame on; but grain needs several times the film's rate.
enum class LevelBound { fine, none };

/// The one place that chooses and configures an encoder. Takes even sizes only. Throws `MediaError` in words about
/// `file`.
VideoEncoder openEncoder(std::filesystem::path const& file, MovieWriterSettings const& settings);
/// One in software. Streams of both bounds have the same parameter sets, so that one can go on where the other ended.
VideoEncoder openSoftwareEncoder(std::filesystem::path const& file, MovieWriterSettings const& settings,
                                 LevelBound bound = LevelBound::fine);

/// An unopened encoder with what all kinds have in common: size, clock, key frames, colours.
ffmpeg::CodecContext newEncoder(AVCodec const& codec, MovieWriterSettings const& settings);

}
