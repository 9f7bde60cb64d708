#include <TavaroMedia/Audio/ScratchSound.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include <TavaroMedia/FFmpeg/Private/Failures.h>

namespace tavaro {

ScratchSound::ScratchSound(std::filesystem::path const& folder, int channels)
    : folder_(folder)
    , channels_(channels)
    , file_(FileDescriptor::nameless(folder)) {
    if (!file_.isOpen()) ffmpeg::throwWriting(folder, -errno);
}

void ScratchSound::append(std::span<StereoSample const> samples) {
    std::vector<float> left;
    if (channels_ == 1) {
        left.reserve(samples.size());
        for (auto const& sample : samples) left.push_back(sample.left);
    }
    auto const bytes = channels_ == 1 ? std::as_bytes(std::span(left)) : std::as_bytes(samples);
    if (int const failure = file_.write(bytes)) ffmpeg::throwWriting(folder_, -failure);
    length_ += std::ssize(samples);
}

std::size_t ScratchSound::read(std::int64_t position, std::span<StereoSample> samples) const {
    auto const wanted = std::clamp<std::int64_t>(length_ - position, 0, std::ssize(samples));
    auto const frame = static_cast<std::int64_t>(sizeof(float)) * channels_;
    std::vector<float> values(static_cast<std::size_t>(wanted * channels_));
    auto const bytes = std::as_writable_bytes(std::span(values));
    auto const count = file_.readAt(position * frame, bytes);
    if (count < std::ssize(bytes)) ffmpeg::throwReading(folder_, count < 0 ? static_cast<int>(count) : -EIO);
    for (std::size_t i = 0; i < static_cast<std::size_t>(wanted); ++i) {
        if (channels_ == 1) {
            samples[i] = {values[i], values[i]};
        } else {
            samples[i] = {values[2 * i], values[2 * i + 1]};
        }
    }
    return static_cast<std::size_t>(wanted);
}

}
