#pragma once

#include <TavaroCapture/Recorder/Private/Absences.h>
#include <TavaroCapture/Recorder/Private/SideStream.h>
#include <TavaroCapture/Segments/Private/SoundSegmentWriter.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>

namespace tavaro {

/// A microphone, or what the machine plays, beside the screen of a take. What is missing of it is silence, and counted.
class SoundStream final : public SideStream {
public:
    SoundStream(std::unique_ptr<SoundSource> source, TakeClock const& clock, SideStreamOptions const& options);
    ~SoundStream() override { stop(); }

    void start() override;
    void stop() override;
    std::vector<std::string> finish() override;
    std::vector<double> interruptedAt() const override;
    std::optional<SoundState> sound() const override;

private:
    /// Sound that lies together on the take's timeline.
    struct Run {
        double time = 0;
        SoundJoint joint = SoundJoint::following;
        std::vector<StereoSample> samples;
    };
    // The source's thread's.
    void take(SoundBlock const& block);
    void noteGap(SoundBlock const& block);
    void noteLoudness(SoundBlock const& block);
    void append(Run run);

    void write(Run const& run);

    std::unique_ptr<SoundSource> const source_;
    TakeClock const& clock_;
    StreamRole const role_;
    std::shared_ptr<LevelLog> const levels_;
    Absences absences_;
    std::optional<std::string> failure_; // of writing; the queue's
    SoundSegmentWriter writer_;          // the queue's

    bool isAfterPause_ = false;           // the source's thread's, as the next two
    double heardUntil_ = 0;               // moment of the media clock; 0: nothing follows
    std::atomic<double> lostSeconds_ = 0; // of sound, in a device that was there
    std::atomic<double> lastLoud_ = 0;    // moment of the media clock; 0: nothing was heard yet
    SerialQueue queue_{"com.tavaro.capture.sound"};
};

}
