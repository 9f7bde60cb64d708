#include <TavaroCapture/Recorder/Private/SideStream.h>

#include <TavaroCapture/Events/Private/TakeClock.h>
#include <TavaroCapture/Recorder/Private/SoundStream.h>
#include <TavaroCapture/Segments/Private/SegmentWriter.h>
#include <TavaroCapture/Segments/Private/StreamSegments.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <algorithm>
#include <atomic>
#include <fmt/format.h>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

/// Why a stream ended before the take, if it did.
class EarlyEnd {
public:
    EarlyEnd(StreamRole role, TakeClock const& clock) : role_(role), clock_(clock) {}

    /// On the stream's queue: steps of writing, until one fails.
    template<class Step> void write(Step step) {
        if (failure_) return;
        try {
            step();
        } catch (CaptureError const& error) {
            failure_ = error.what();
        }
    }
    /// Any thread.
    void noteLoss() { lostAt_ = clock_.elapsed(mediaClockNow()); }

    /// A sentence; when nothing is written any more.
    std::optional<std::string> sentence() const {
        if (failure_) return fmt::format("The {} ended early. {}", spokenName(role_), *failure_);
        if (lostAt_ < 0) return std::nullopt;
        return fmt::format("The {} went away {:.1f} seconds into the take.", spokenName(role_), lostAt_.load());
    }

private:
    StreamRole const role_;
    TakeClock const& clock_;
    std::optional<std::string> failure_;
    std::atomic<double> lostAt_ = -1; // seconds of the take; below 0: never
};

class CameraStream final : public SideStream {
public:
    CameraStream(std::unique_ptr<CameraSource> source, TakeClock const& clock, SideStreamOptions const& options)
        : source_(std::move(source))
        , clock_(clock)
        , manifest_(options.manifest)
        , writer_({.manifest = options.manifest,
                   .role = options.role,
                   .width = static_cast<int>(source_->size().width),
                   .height = static_cast<int>(source_->size().height),
                   .fps = source_->fps(),
                   .segmentDuration = options.segmentSeconds})
        , mostUnderWay_(std::max(source_->fps() / 2, 2))
        , end_(options.role, clock) {
        writer_.prepare();
    }
    ~CameraStream() override { stop(); }

    void start() override {
        source_->start({.picture = [this](CapturedPicture const& picture) { take(picture); },
                        .lost = [this] { end_.noteLoss(); }});
    }
    void stop() override {
        source_->stop();
        queue_.sync([] {});
    }
    StreamReport finish() override {
        queue_.sync([this] { end_.write([this] { writer_.finish(); }); });
        auto const sentence = end_.sentence();
        return sentence ? StreamReport{.warnings = {*sentence}} : StreamReport{};
    }

private:
    /// On the source's thread. A picture for which the encoder has no time is left out; the one before it lasts longer.
    void take(CapturedPicture const& captured) {
        auto const time = clock_.place(captured.capturedAt);
        if (!time || underWay_ >= mostUnderWay_) return;
        auto const picture = std::make_shared<EncoderPicture>(writer_.picture());
        fillPicture(*picture, captured.pixels, captured.order);
        ++underWay_;
        queue_.async([this, picture, time = *time] {
            end_.write([&] { append(std::move(*picture), time); });
            --underWay_;
        });
    }

    void append(EncoderPicture picture, double time) {
        if (!offset_) {
            offset_ = time;
            manifest_->enter(StreamRole::camera, time);
            writing([&] { manifest_->write(); });
        }
        writer_.append(std::move(picture), time - *offset_);
    }

    std::unique_ptr<CameraSource> const source_;
    TakeClock const& clock_;
    std::shared_ptr<TakeManifest> const manifest_;
    SegmentWriter writer_;
    int const mostUnderWay_; // half a second
    std::atomic<int> underWay_ = 0;
    std::optional<double> offset_; // the queue's
    EarlyEnd end_;
    SerialQueue queue_{"com.tavaro.capture.camera"};
};

}

std::unique_ptr<SideStream> recordCamera(std::unique_ptr<CameraSource> source, TakeClock const& clock,
                                         SideStreamOptions const& options) {
    return std::make_unique<CameraStream>(std::move(source), clock, options);
}

std::unique_ptr<SideStream> recordSound(std::unique_ptr<SoundSource> source, TakeClock const& clock,
                                        SideStreamOptions const& options) {
    return std::make_unique<SoundStream>(std::move(source), clock, options);
}

}
