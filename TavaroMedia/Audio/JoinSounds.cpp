#include <TavaroMedia/Audio/JoinSounds.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <span>
#include <system_error>

#include <TavaroMedia/Audio/AudioFileWriter.h>
#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/FFmpeg/Private/Failures.h>

namespace tavaro {

namespace {

constexpr std::size_t blockSamples = audioRate;

std::optional<AudioReader> opened(std::filesystem::path const& file) {
    try {
        return AudioReader(file);
    } catch (MediaError const&) {
        return std::nullopt;
    }
}

/// A stereo sample takes two bytes or more; a damaged file may claim to go on for years.
std::int64_t mostSamples(std::filesystem::path const& file) {
    std::error_code failure;
    auto const bytes = std::filesystem::file_size(file, failure);
    return failure ? 0 : static_cast<std::int64_t>(bytes / 2);
}

/// The sound of a file, of a damaged one as much as can be had.
class Readable {
public:
    explicit Readable(std::filesystem::path const& file) : reader_(opened(file)), end_(mostSamples(file)) {}

    /// How many samples from there on were read; 0 at the end.
    std::size_t read(std::int64_t position, std::span<StereoSample> samples) {
        if (!reader_ || position >= end_) return 0;
        try {
            return reader_->read(position,
                                 samples.first(std::min(samples.size(), static_cast<std::size_t>(end_ - position))));
        } catch (MediaError const&) {
            reader_.reset();
            return 0;
        }
    }

private:
    std::optional<AudioReader> reader_;
    std::int64_t const end_; // in samples
};

class Joining {
public:
    explicit Joining(std::filesystem::path const& output)
        : output_(output)
        , writer_(output, AudioFileFormat::whole16) {}

    /// `until` is where the next part starts, in samples.
    void add(SoundPart const& part, std::int64_t until) {
        Readable sound(part.file);
        auto const start = static_cast<std::int64_t>(std::llround(part.start * audioRate));
        bool hasSound = false;
        for (std::int64_t position = 0; start + position < until;) {
            auto const wanted = std::min<std::int64_t>(blockSamples, until - start - position);
            auto const count = sound.read(position, std::span(block_).first(static_cast<std::size_t>(wanted)));
            if (count == 0) break;
            if (!hasSound) padTo(start);
            hasSound = true;
            append(std::span(block_).first(count));
            position += static_cast<std::int64_t>(count);
        }
        if (!hasSound) result_.unreadable.push_back(part.file);
    }

    JoinedSound finish() {
        if (written_ == 0) ffmpeg::throwReading(output_, MediaError::Kind::unreadable, "none of its parts can be read");
        writer_.finish();
        result_.duration = static_cast<double>(written_) / audioRate;
        return std::move(result_);
    }

private:
    void padTo(std::int64_t position) {
        static std::vector<StereoSample> const silence(blockSamples);
        while (written_ < position)
            append(std::span(silence).first(
                static_cast<std::size_t>(std::min<std::int64_t>(blockSamples, position - written_))));
    }
    void append(std::span<StereoSample const> samples) {
        writer_.append(samples);
        written_ += static_cast<std::int64_t>(samples.size());
    }

    std::filesystem::path const output_;
    AudioFileWriter writer_;
    std::vector<StereoSample> block_ = std::vector<StereoSample>(blockSamples);
    std::int64_t written_ = 0;
    JoinedSound result_;
};

}

double readableSeconds(std::filesystem::path const& sound) {
    Readable readable(sound);
    std::vector<StereoSample> block(blockSamples);
    std::int64_t position = 0;
    while (auto const count = readable.read(position, block)) position += static_cast<std::int64_t>(count);
    return static_cast<double>(position) / audioRate;
}

JoinedSound joinSounds(std::vector<SoundPart> const& parts, std::filesystem::path const& output) {
    Joining joining(output);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        auto const isLast = i + 1 == parts.size();
        joining.add(parts[i], isLast ? std::numeric_limits<std::int64_t>::max()
                                     : static_cast<std::int64_t>(std::llround(parts[i + 1].start * audioRate)));
    }
    return joining.finish();
}

}
