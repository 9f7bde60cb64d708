#pragma once

#include <TavaroCapture/Pulse/Private/RecordStream.h>
#include <TavaroCapture/Pulse/Private/SoundMix.h>
#include <TavaroCapture/Sources/Private/SoundSource.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>
#include <map>
#include <memory>
#include <string>

namespace tavaro::pulse {

/// What one application plays, and nothing else: all of its playbacks, also those that begin later. It is silent while
/// the application is.
class ApplicationSound final : public SoundSource {
public:
    /// `application` by its name, its program or its id; `server` as in `$PULSE_SERVER`. Throws `CaptureError`
    /// (`noSound`) when no server answers.
    ApplicationSound(std::string server, std::string application);
    ~ApplicationSound() override;

    void start(SoundHandlers handlers) override;
    void stop() override;
    std::string awaited() const override { return hasPlayed_ ? std::string() : application_; }

private:
    // The queue's, all of them.
    void run();
    void record(Server& server, Timing timing);
    void follow(Server& server, Timing timing);
    void handOn(double until);

    std::string const server_;
    std::string const application_;
    SoundHandlers handlers_;
    std::atomic<bool> isEnding_ = false;
    std::atomic<bool> hasPlayed_ = false; // there has been a playback of the application
    std::atomic<double> endsAt_ = 0;      // moment of the media clock; once it is ending
    double heardUntil_ = 0;               // moment of the media clock
    SoundMix mix_;
    std::map<std::uint32_t, std::unique_ptr<RecordStream>> streams_; // by the server's number of the playback
    SerialQueue queue_{"com.tavaro.capture.systemSound", SerialQueue::Urgency::prompt};
};

}
