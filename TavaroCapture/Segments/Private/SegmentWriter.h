#pragma once

#include <TavaroCapture/Segments/Private/TakeManifest.h>
#include <TavaroMedia/Frames/EncoderPicture.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace tavaro {

/// Writes the pictures of one stream of a take as a series of short movies, "segment-000.mov" onward, and lists them in
/// the take's manifest, which is rewritten as segments close. All times are on the stream's timeline: pauses are
/// already out of it, so they are in no segment and in no segment's start.
///
/// A segment ends, and the next begins, at the first frame that is `segmentDuration` or more after the segment's start.
/// Closed segments are finished in the background, while the next one already records.
///
/// `picture` and `append` may run on two threads; everything else belongs to the thread that appends.
/// Failures are `CaptureError` (`writeFailed`), with "Could not write the recording: " and the reason.
class SegmentWriter {
public:
    struct Options {
        std::shared_ptr<TakeManifest> manifest;
        StreamRole role = StreamRole::screen;
        int width = 0;
        int height = 0;
        int fps = 60;
        double segmentDuration = 10; // seconds
    };

    explicit SegmentWriter(Options const& options);
    ~SegmentWriter();
    SegmentWriter(SegmentWriter const&) = delete;
    SegmentWriter& operator=(SegmentWriter const&) = delete;

    /// Opens the first segment and writes the manifest, so that a folder that cannot be written fails before the take.
    void prepare();

    /// A free picture to fill and append.
    EncoderPicture picture();
    /// Encodes a frame. One that the encoder refuses is counted and left out; false then.
    bool append(EncoderPicture picture, double time);

    /// Ends the last segment one frame after the last, and waits for all of them. Without a frame there is none.
    void finish();

    /// The closed segments; all of them after `finish`, even where that failed.
    std::vector<SegmentRecord> const& segments() const;

    /// End of the last frame, in seconds. Any thread.
    double duration() const;
    /// Any thread.
    std::int64_t framesWritten() const;
    std::int64_t writerRejectedFrames() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
