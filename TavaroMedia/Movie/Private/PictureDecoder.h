#pragma once

#include <cstdint>
#include <filesystem>

#include <TavaroMedia/FFmpeg/Private/Handles.h>
#include <TavaroMedia/Frames/Private/DecodedPicture.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroMedia/Movie/Private/FrameClock.h>
#include <TavaroMedia/Movie/Private/MovieSource.h>

namespace tavaro {

/// The pictures of a movie in the order they are shown, from wherever it was last sent. Times never go back.
class PictureDecoder {
public:
    PictureDecoder(std::filesystem::path const& file, MovieReaderOptions const& options);

    MovieSource const& source() const { return source_; }
    FrameClock const& clock() const { return clock_; } // of what has been read

    /// The very first picture, damaged or not; the movie's time counts from it. Call once, before anything else.
    VideoFrame readFirst();

    /// Empty at the end of what can be decoded.
    VideoFrame read();

    /// Goes on from the last key frame at or before `ticks`; false where the container cannot go back, and then only
    /// `startOver` helps. The picture read next may lie after `ticks` nevertheless.
    bool seek(std::int64_t ticks);
    void startOver();

    /// Whether a seek to `ticks` saves decoding, next to reading on from here; `readTo` is the newest picture read.
    bool isSeekWorthwhile(std::int64_t ticks, std::int64_t readTo) const;

    MovieInfo describe();

    std::int64_t origin() const { return origin_; }

private:
    enum class Damage { skip, accept };

    VideoFrame read(Damage damage);
    void feed();
    bool isWanted(AVFrame const& frame, std::int64_t ticks, Damage damage) const;
    std::int64_t ticksOf(AVFrame const& frame) const;
    VideoFrame wrapped(ffmpeg::Frame frame, std::int64_t ticks);
    void beginClock(std::int64_t origin);
    double steadyEnd(double told) const;
    void forgetPlace();

    MovieSource source_;
    ffmpeg::CodecContext decoder_;
    ffmpeg::Packet packet_;
    PictureTurn turn_;
    std::uint64_t number_; // of this reader, for the identities of its frames
    std::int64_t origin_ = AV_NOPTS_VALUE;
    FrameClock clock_;
    FrameTimes surveyed_;                      // empty where the container's clock is fine
    std::int64_t lastTicks_ = AV_NOPTS_VALUE;  // of the newest picture
    std::int64_t lastPacket_ = AV_NOPTS_VALUE; // decoding time of the newest packet
    std::int64_t keptFrom_ = AV_NOPTS_VALUE; // after a seek: pictures shown before the key frame lack their references
    bool awaitsKeyFrame_ = false;
    bool isDraining_ = false;
};

}
