#pragma once

#include <TavaroCapture/Recorder/Private/Absences.h>
#include <TavaroCapture/Recorder/Private/SideStream.h>
#include <TavaroCapture/Segments/Private/SegmentWriter.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>

namespace tavaro {

/// A camera beside the screen of a take, as a movie whose pictures keep their own moments. While it is away its last
/// picture stays; what is missing is counted.
class CameraStream final : public SideStream {
public:
    CameraStream(std::unique_ptr<CameraSource> source, TakeClock const& clock, SideStreamOptions const& options);
    ~CameraStream() override { stop(); }

    void start() override;
    void stop() override;
    std::vector<std::string> finish() override;
    std::vector<double> interruptedAt() const override;
    bool isCameraAway() const override { return absences_.isAway(); }

private:
    // The source's thread's.
    void take(CapturedPicture const& captured);
    void noteMissed(std::int64_t count);

    void write(EncoderPicture picture, double time);
    void append(EncoderPicture picture, double time);
    std::optional<std::string> lossSentence() const;

    std::unique_ptr<CameraSource> const source_;
    TakeClock const& clock_;
    StreamRole const role_;
    std::shared_ptr<TakeManifest> const manifest_;
    SegmentWriter writer_; // the queue's
    Absences absences_;
    int const mostUnderWay_; // half a second
    std::atomic<int> underWay_ = 0;
    std::atomic<std::int64_t> missed_ = 0; // pictures, in the take
    std::optional<double> offset_;         // the queue's
    std::optional<double> lastTime_;       // of the take; the queue's
    std::optional<std::string> failure_;   // of writing; the queue's
    SerialQueue queue_{"com.tavaro.capture.camera"};
};

}
