#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

#include <TavaroMedia/Audio/StereoSample.h>

namespace tavaro {

enum class AudioFileFormat {
    whole16, // 16 bits a sample
    floats,  // 32 bits, nothing rounded
};

/// What the sound file is for.
enum class AudioFileIntent {
    finished, // appears under its name with `finish`, complete, or not at all
    live,     // sound as it happens: written in place, so it can be read to its end when its writer dies
};

/// Writes an uncompressed sound file (CAF) of 48 kHz.
/// All failures are `MediaError`: `notWritable`, `diskFull`, `refused`.
class AudioFileWriter {
public:
    /// One channel takes the mean of both sides.
    AudioFileWriter(std::filesystem::path const& file, AudioFileFormat format, int channels = 2,
                    AudioFileIntent intent = AudioFileIntent::finished);
    AudioFileWriter(AudioFileWriter&&) noexcept;
    AudioFileWriter& operator=(AudioFileWriter&&) noexcept;
    ~AudioFileWriter();

    void append(std::span<StereoSample const> samples);
    void finish();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
