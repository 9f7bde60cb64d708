#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

namespace tavaro {

class FramePainter;
class PictureSink;
struct ExportProgress;

/// What a video pass works with; everything stays the caller's.
struct VideoPass {
    FramePainter& painter; // used by the decoding and the drawing thread while the pass runs
    PictureSink& sink;     // by the encoding thread
    double rate = 60;      // frames a second
    double start = 0;      // seconds of the film, of the first frame
    std::int64_t totalFrames = 0;
    std::atomic<bool> const& isCancelled;
};

/// Draws every frame of the output and appends it to the sink, frame n, which the film has at start + n ÷ rate, at n ÷
/// rate. Decoding, drawing and encoding run beside each other, a few frames apart: the caller's thread draws and
/// reports. Returns when the last frame has been given to the sink, or throws `PaintError` or `ExportError` once all
/// three have stopped.
void runVideoPass(VideoPass const& pass, std::function<void(ExportProgress const&)> const& progress);

}
