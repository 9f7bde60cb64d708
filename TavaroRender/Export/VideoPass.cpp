#include <TavaroRender/Export/Private/VideoPass.h>

#include <algorithm>
#include <exception>
#include <mutex>

#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Frames/PictureSink.h>
#include <TavaroPlatform/Queues/BoundedQueue.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/Exporter.h>
#include <TavaroRender/Painter/FramePainter.h>

namespace tavaro {

namespace {

// Enough that no stage waits for the jitter of another, few enough that 4K stays small.
constexpr std::size_t framesAhead = 3;
constexpr std::int64_t picturesUnderWay = 3;

struct Pipeline {
    explicit Pipeline(VideoPass const& pass) : pass(pass) {}

    VideoPass const& pass;
    BoundedQueue<FramePictures> decoded{framesAhead}; // one for every output frame, in order
    BoundedQueue<EncoderPicture> blank{picturesUnderWay};
    BoundedQueue<EncoderPicture> drawn{picturesUnderWay};
    std::atomic<std::int64_t> framesWritten{0};
    std::mutex mutex;
    std::exception_ptr failure; // the first one; guarded by `mutex`

    double time(std::int64_t frame) const { return static_cast<double>(frame) / pass.rate; }
    double filmTime(std::int64_t frame) const { return pass.start + time(frame); }

    /// Any stage: remembers why, and ends the others.
    void stop(std::exception_ptr const& reason) {
        {
            std::lock_guard const lock(mutex);
            if (!failure) failure = reason;
        }
        decoded.abandon();
        blank.abandon();
        drawn.abandon();
    }

    template<class Stage> void guarded(Stage const& stage) {
        try {
            stage();
        } catch (...) {
            stop(std::current_exception());
        }
    }

    void throwFailure() {
        std::lock_guard const lock(mutex);
        if (failure) std::rethrow_exception(failure);
    }

    void decode();
    void draw(std::function<void(ExportProgress const&)> const& progress);
    void encode();
};

void Pipeline::decode() {
    for (std::int64_t n = 0; n < pass.totalFrames; ++n) {
        if (!decoded.push(pass.painter.pictures(filmTime(n)))) return;
    }
}

void Pipeline::draw(std::function<void(ExportProgress const&)> const& progress) {
    std::int64_t reported = -1;
    for (std::int64_t n = 0; n < pass.totalFrames; ++n) {
        if (pass.isCancelled) throw ExportError::cancelled();
        auto const pictures = decoded.pop();
        if (!pictures) return;
        auto const canvas = pass.painter.draw(filmTime(n), *pictures);
        auto picture = blank.pop();
        if (!picture) return;
        fillPicture(*picture, canvas, PixelOrder::rgba, pass.painter.rows());
        if (!drawn.push(std::move(*picture))) return;
        if (auto const written = framesWritten.load(); progress && written != reported) {
            reported = written;
            progress({written, pass.totalFrames, ExportStage::rendering});
        }
    }
}

void Pipeline::encode() {
    try {
        // Pictures are lent on this thread, the sink's, and travel to the drawing thread and back.
        auto const lent = std::min(picturesUnderWay, pass.totalFrames);
        for (std::int64_t n = 0; n < lent; ++n) blank.push(pass.sink.picture());
        for (std::int64_t n = 0; n < pass.totalFrames; ++n) {
            auto picture = drawn.pop();
            if (!picture) return;
            pass.sink.append(std::move(*picture), time(n));
            framesWritten = n + 1;
            if (n + lent < pass.totalFrames && !blank.push(pass.sink.picture())) return;
        }
    } catch (MediaError const& error) {
        throw ExportError::writerFailed(error.detail());
    }
}

}

void runVideoPass(VideoPass const& pass, std::function<void(ExportProgress const&)> const& progress) {
    Pipeline pipeline(pass);
    {
        SerialQueue decoder("com.tavaro.export.decode");
        SerialQueue encoder("com.tavaro.export.encode");
        decoder.async([&] { pipeline.guarded([&] { pipeline.decode(); }); });
        encoder.async([&] { pipeline.guarded([&] { pipeline.encode(); }); });
        pipeline.guarded([&] { pipeline.draw(progress); });
    } // both threads are joined
    pipeline.throwFailure();
    if (pass.isCancelled) throw ExportError::cancelled();
    if (progress) progress({pipeline.framesWritten, pass.totalFrames, ExportStage::rendering});
}

}
