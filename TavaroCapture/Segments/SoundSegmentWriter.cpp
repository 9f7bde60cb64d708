#include <TavaroCapture/Segments/Private/SoundSegmentWriter.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavaro {

namespace {

constexpr std::int64_t wavering = audioRate / 100;
constexpr int channels = 2;

double seconds(std::int64_t samples) { return static_cast<double>(samples) / audioRate; }

}

SoundSegmentWriter::SoundSegmentWriter(Options const& options)
    : segments_(options.manifest, options.role)
    , segmentSamples_(std::max<std::int64_t>(1, std::llround(options.segmentDuration * audioRate))) {
    options.manifest->enter(
        {.role = options.role, .codec = "pcm_s16le", .sampleRate = audioRate, .channels = channels});
}

void SoundSegmentWriter::append(std::span<StereoSample const> samples, double time, SoundJoint joint) {
    segments_.rethrowFailure();
    writing([&] {
        if (!offset_) {
            offset_ = time;
            segments_.manifest().enter(segments_.role(), time);
            segments_.manifest().write();
        }
        std::int64_t const gap = std::llround((time - *offset_) * audioRate) - written_;
        std::int64_t const tolerated = joint == SoundJoint::placed ? 0 : wavering;
        if (gap > tolerated) writeSilence(gap);
        if (gap < -tolerated) samples = samples.subspan(std::min(samples.size(), static_cast<std::size_t>(-gap)));
        write(samples);
    });
}

void SoundSegmentWriter::write(std::span<StereoSample const> samples) {
    while (!samples.empty()) {
        if (!file_)
            file_ = std::make_shared<AudioFileWriter>(segments_.openPath(), AudioFileFormat::whole16, channels,
                                                      AudioFileIntent::live);
        auto const room = static_cast<std::size_t>(segmentStart_ + segmentSamples_ - written_);
        auto const now = samples.first(std::min(samples.size(), room));
        file_->append(now);
        written_ += static_cast<std::int64_t>(now.size());
        samples = samples.subspan(now.size());
        if (written_ - segmentStart_ >= segmentSamples_) closeSegment();
    }
}

void SoundSegmentWriter::writeSilence(std::int64_t count) {
    std::vector<StereoSample> const silence(audioRate / 10);
    for (; count > 0; count -= static_cast<std::int64_t>(silence.size()))
        write(std::span(silence).first(std::min(silence.size(), static_cast<std::size_t>(count))));
}

void SoundSegmentWriter::closeSegment() {
    if (!file_) return;
    segments_.close(seconds(segmentStart_), seconds(written_ - segmentStart_),
                    [file = std::exchange(file_, nullptr)] { file->finish(); });
    segmentStart_ = written_;
}

void SoundSegmentWriter::finish() {
    closeSegment();
    segments_.wait();
}

}
