#pragma once

#include <cstdint>
#include <filesystem>

#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/FFmpeg/Private/Handles.h>

namespace tavaro {

/// "Could not read the audio track: …."
[[noreturn]] void throwReadingAudio(MediaError::Kind kind, std::string const& detail);

/// The decoded sound of a file in its own rate and format, every frame with its place: the number of its first sample,
/// counted from the file's time 0. Throws `MediaError` as `AudioReader` does.
class AudioDecoder {
public:
    explicit AudioDecoder(std::filesystem::path const& file);

    int rate() const { return rate_; }
    /// Whether places are exact, so that a jump lands where it should to the sample.
    bool isExact() const { return isExact_; }
    AudioInfo describe() const;

    /// The next frame with samples in it; false at the end of what can be decoded. The frame is this decoder's own.
    bool read();
    AVFrame const& frame() const { return *frame_; }
    /// Place of the frame's first sample; may be off by the container's rounding unless `isExact`.
    std::int64_t place() const { return place_; }

    /// Goes on from somewhere before that place; false where the container cannot.
    bool seek(std::int64_t place);
    void rewind();

private:
    void open();
    void openDecoder();
    void findOrigin();
    bool feed();
    std::int64_t placeOf(AVFrame const& frame) const;

    std::filesystem::path file_;
    ffmpeg::Input input_;
    AVStream* stream_ = nullptr;
    ffmpeg::CodecContext decoder_;
    ffmpeg::Packet packet_;
    ffmpeg::Frame frame_;
    int rate_ = 0;
    bool isExact_ = false;
    bool hasPackets_ = false;
    bool isDraining_ = false;
    bool isHeld_ = false;                  // the first frame was decoded to see what there is, and is still to be read
    std::int64_t origin_ = AV_NOPTS_VALUE; // the time that is 0, in the stream's ticks
    std::int64_t place_ = 0;
    std::int64_t next_ = 0; // the place that follows the last frame
};

}
