#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroMedia/Audio/StereoSample.h>

namespace tavaro {

/// Sound between two passes over it, unrounded, in a nameless file of a folder: gone with this, or with the process.
/// Failures are `MediaError`s: `notWritable`, `diskFull`.
class ScratchSound {
public:
    /// One channel keeps the left side alone.
    ScratchSound(std::filesystem::path const& folder, int channels);

    void append(std::span<StereoSample const> samples);
    std::int64_t length() const { return length_; }

    /// Fills `samples` from `position` on and returns how many there were.
    std::size_t read(std::int64_t position, std::span<StereoSample> samples) const;

private:
    std::filesystem::path folder_;
    int channels_;
    FileDescriptor file_;
    std::int64_t length_ = 0;
};

}
