#pragma once

#include <TavaroCapture/Segments/Private/StreamSegments.h>
#include <TavaroMedia/Audio/AudioFileWriter.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace tavaro {

/// How samples join those before them: without a gap, as far as the clock can tell, or exactly where their time says.
enum class SoundJoint { following, placed };

/// Writes the sound of one stream of a take as a series of sound files, "microphone-000.caf" onward, which follow each
/// other without a gap, and lists them in the take's manifest. The stream begins with its first sample, wherever that
/// is on the take's timeline; sound that is missing in between is silence. One thread.
/// Failures are `CaptureError` (`writeFailed`), with "Could not write the recording: " and the reason.
class SoundSegmentWriter {
public:
    struct Options {
        std::shared_ptr<TakeManifest> manifest;
        StreamRole role = StreamRole::microphone;
        double segmentDuration = 10; // seconds
    };

    explicit SoundSegmentWriter(Options const& options);

    /// Adds samples, the first of which was captured at `time` of the take. Where they follow the ones before, a step
    /// of less than 10 ms is the wavering of a clock and no gap. What was written already is left out.
    void append(std::span<StereoSample const> samples, double time, SoundJoint joint = SoundJoint::following);
    /// Ends the last file and waits for all of them.
    void finish();

    std::int64_t samplesWritten() const { return written_; }

private:
    void write(std::span<StereoSample const> samples);
    void writeSilence(std::int64_t count);
    void closeSegment();

    StreamSegments segments_;
    std::int64_t const segmentSamples_;
    std::shared_ptr<AudioFileWriter> file_;
    std::optional<double> offset_;  // seconds of the take at which the stream begins
    std::int64_t written_ = 0;      // samples of the stream
    std::int64_t segmentStart_ = 0; // in samples of the stream
};

}
