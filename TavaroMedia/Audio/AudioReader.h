#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

#include <TavaroMedia/Audio/StereoSample.h>

namespace tavaro {

struct AudioInfo {
    double duration = 0; // seconds as the container tells; 0 where it does not
    int channels = 0;    // of the file
    int sampleRate = 0;  // of the file
    std::string codec;   // "aac", "pcm_s16le", …

    bool operator==(AudioInfo const&) const = default;
};

/// Reads the sound of a movie or sound file as 48 kHz stereo. Time 0 of a movie's sound is the movie's first picture,
/// as `MovieReader` counts; of a sound file, its first sample. What an encoder put before the sound is left out.
///
/// One channel, and the center of several, is as loud on both sides as it is; front channels are heard on their sides,
/// the others there 3 dB quieter, and the deep effects of a cinema not at all. Their sum may be above full scale.
///
/// The sample at a position is the same whether it was reached by reading on or by jumping there. Reading on costs the
/// decoding alone; a jump costs a quarter of a second of sound, except backwards in files that do not tell the exact
/// places of their samples (Matroska, MP3, transport streams): those are read from their start again. Memory is bounded
/// by the span asked for. One thread at a time.
class AudioReader {
public:
    /// Throws `MediaError` in the words of a sound that cannot be read: `missing`, `unreadable`, `noAudioTrack`,
    /// `emptyAudioTrack`, `unsupported`.
    explicit AudioReader(std::filesystem::path const& file);
    AudioReader(AudioReader&&) noexcept;
    AudioReader& operator=(AudioReader&&) noexcept;
    ~AudioReader();

    AudioInfo const& info() const;

    /// Fills `samples` with the sound from `position` on and returns how many of them lie before its end. The rest,
    /// what lies before the start, and gaps are silence; damaged stretches too.
    std::size_t read(std::int64_t position, std::span<StereoSample> samples);

    /// Where reading on is cheapest: the position after the last sample read.
    std::int64_t position() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
