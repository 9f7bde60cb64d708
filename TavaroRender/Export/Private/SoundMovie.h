#pragma once

#include <cstdint>
#include <exception>

#include <TavaroMedia/Frames/PictureSink.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroRender/Export/Private/AudioPass.h>

namespace tavaro {

class MovieWriter;

/// A movie with sound: renders the mix on a queue of its own, a second ahead at most, and appends it to the writer
/// before the pictures that it goes with. Neither side waits for the other but for this: a picture for the sound up to
/// its time, and the mix for room in the queue. So it ends, whichever side fails. Used by the encoding thread alone.
class SoundMovie : public PictureSink {
public:
    /// What of the mix goes with the movie.
    struct Part {
        std::int64_t start = 0; // samples
        std::int64_t count = 0;
    };

    /// Begins to render at once. The writer and the mix stay the caller's.
    SoundMovie(MovieWriter& writer, MixRenderer& mix, Part part);
    /// Ends the audio pass, wherever it is.
    ~SoundMovie() override;

    EncoderPicture picture() override;
    /// Throws the `ExportError` of the audio pass where that failed.
    void append(EncoderPicture picture, double presentationTime) override;

    /// The rest of the sound; then the writer can be finished.
    void finishSound();

private:
    void appendSound(std::int64_t until);

    MovieWriter& writer_;
    std::int64_t const totalSamples_;
    BoundedQueue<AudioBlock> blocks_;
    std::exception_ptr failure_; // set before the queue is closed
    SerialQueue queue_;
};

}
