#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

#include <TavaroMedia/Audio/StereoSample.h>
#include <TavaroMedia/FFmpeg/Private/Handles.h>

namespace tavaro {

enum class AudioCoding { aac, pcm16, pcm24, pcmFloat };

inline constexpr AVRational audioTimeBase{1, audioRate};

/// Samples in, packets out, in ticks of `audioTimeBase`. Packets of AAC begin before 0 by what the coder needs to get
/// going. Whole numbers are rounded, and clipped at full scale. Throws `MediaError` in words about `file`.
class AudioEncoder {
public:
    /// One channel takes the mean of both sides.
    AudioEncoder(std::filesystem::path const& file, AudioCoding coding, int channels);

    /// Tells the container what is coming.
    void describe(AVStream& stream) const;

    void send(std::span<StereoSample const> samples);
    std::int64_t samplesSent() const { return sent_; }
    /// Nothing more comes.
    void finish();
    /// The next packet; false when it takes more samples for one, or all are out.
    bool receive(AVPacket& packet);

private:
    void encode(std::span<StereoSample const> samples);
    void fill(AVFrame& frame, std::span<StereoSample const> samples) const;
    void check(int code) const;

    std::filesystem::path file_;
    ffmpeg::CodecContext encoder_;
    std::vector<StereoSample> waiting_;   // less than a frame
    std::vector<ffmpeg::Packet> packets_; // oldest first
    std::int64_t sent_ = 0;
    std::int64_t encoded_ = 0;
};

}
