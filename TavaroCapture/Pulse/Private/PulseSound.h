#pragma once

#include <TavaroCapture/PipeWire/Private/Connection.h>
#include <TavaroCapture/Pulse/Private/RecordStream.h>
#include <TavaroCapture/Sources/Private/SoundSource.h>
#include <TavaroCapture/Sources/StreamRole.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>

namespace tavaro::pulse {

/// A microphone of a session's sound server, or what its default output plays. Where that server is a PipeWire server,
/// the sound itself comes from there, with exact moments. The device is open from `start` to
/// `stop`. When it is unplugged, or the server ends, it is looked for until it is there again: the same microphone by
/// its name. Another output that becomes the default is followed, as the ears of the user follow it; that counts as an
/// absence, too.
class PulseSound final : public SoundSource {
public:
    struct Options {
        std::string server; // as in `$PULSE_SERVER`; empty: that, or the session's own
        std::string source; // the server's name for it; empty: the default one of its kind
        StreamRole role = StreamRole::microphone;
    };

    /// Finds the device, and does not open it. Throws `CaptureError` (`noSound`) where there is no such device, and
    /// when no server answers.
    explicit PulseSound(Options const& options);
    ~PulseSound() override;

    void start(SoundHandlers handlers) override;
    void stop() override;

private:
    // The queue's, all of them.
    void run();
    void record(Server& server, ServerInfo const& info);
    bool listen(Server& server, ServerInfo const& info);
    std::unique_ptr<pipewire::Connection> connectionTo(ServerInfo const& info) const;
    bool listen(Server& server, pipewire::Connection& connection);
    void handOn(SoundBlock const& block);
    std::string title() const;
    void findOutput(Server& server);
    bool isElsewhere(Server& server);
    void idle(Server& server) const;
    void noteBegun(double at);
    void noteGone();
    bool isDone(double deliveredUntil) const;

    std::string const server_;
    StreamRole const role_;
    std::string source_; // the queue's once it runs
    bool const followsDefault_;
    SoundHandlers handlers_;
    std::atomic<bool> isEnding_ = false;
    std::atomic<double> endsAt_ = 0; // moment of the media clock; once it is ending

    std::mutex mutex_;
    std::condition_variable begun_;
    bool hasBegun_ = false; // guarded by mutex_

    bool isAway_ = false;   // the queue's
    double heardUntil_ = 0; // moment of the media clock; the queue's
    SerialQueue queue_;
};

}
