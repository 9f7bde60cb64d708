#include <TavaroMedia/Audio/ScratchSound.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include <TavaroMedia/FFmpeg/Private/Failures.h>

namespace tavaro {

ScratchSound::ScratchSound(std::filesystem::path const& folder, int channels) : folder_(folder), channels_(channels) {
    auto name = (folder / ".sound-XXXXXX").string();
    descriptor_ = ::mkostemp(name.data(), O_CLOEXEC);
    if (descriptor_ < 0) ffmpeg::throwWriting(folder, -errno);
    ::unlink(name.c_str());
}

ScratchSound::~ScratchSound() { ::close(descriptor_); }

void ScratchSound::append(std::span<StereoSample const> samples) {
    std::vector<float> left;
    if (channels_ == 1) {
        left.reserve(samples.size());
        for (auto const& sample : samples) left.push_back(sample.left);
    }
    auto const bytes = channels_ == 1 ? std::as_bytes(std::span(left)) : std::as_bytes(samples);
    for (auto rest = bytes; !rest.empty();) {
        auto const count = ::write(descriptor_, rest.data(), rest.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) ffmpeg::throwWriting(folder_, -errno);
        rest = rest.subspan(static_cast<std::size_t>(count));
    }
    length_ += std::ssize(samples);
}

std::size_t ScratchSound::read(std::int64_t position, std::span<StereoSample> samples) const {
    auto const wanted = std::clamp<std::int64_t>(length_ - position, 0, std::ssize(samples));
    auto const frame = static_cast<std::int64_t>(sizeof(float)) * channels_;
    std::vector<float> values(static_cast<std::size_t>(wanted * channels_));
    auto const bytes = std::as_writable_bytes(std::span(values));
    std::size_t done = 0;
    while (done < bytes.size()) {
        auto const offset = position * frame + static_cast<std::int64_t>(done);
        auto const count = ::pread(descriptor_, bytes.data() + done, bytes.size() - done, offset);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) ffmpeg::throwReading(folder_, count < 0 ? -errno : -EIO);
        done += static_cast<std::size_t>(count);
    }
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
