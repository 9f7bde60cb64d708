#pragma once

#include <TavaroCapture/PipeWire/Private/Connection.h>
#include <TavaroCapture/Sound/Private/ClockedSound.h>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace tavaro::pipewire {

/// Sound of one node: what a microphone hears, or what an output plays. The server tells of each of its cycles when it
/// was, so every sample's moment is known as exactly as the server knows its device, and what was lost shows. It is
/// never moved to another node. One thread, the connection's.
class SoundInput {
public:
    enum class Kind { microphone, output };
    struct Options {
        std::string node; // by name
        Kind kind = Kind::microphone;
        std::string title; // what the session's tools show
    };

    SoundInput(Connection& connection, Options const& options, std::function<void(SoundBlock const&)> block);
    ~SoundInput();
    SoundInput(SoundInput const&) = delete;
    SoundInput& operator=(SoundInput const&) = delete;

    /// To be called some dozens of times a second, after the connection ran: hands on what has come.
    void tend();
    /// Whether sound comes, or may still begin to.
    bool isLive() const;
    /// The moment of the media clock up to which sound was handed on.
    double deliveredUntil() const { return deliveredUntil_; }

private:
    /// What came in one cycle.
    struct Cycle {
        std::vector<StereoSample> samples;
        double moment = 0;    // of the first, on the media clock
        std::size_t lost = 0; // before the first
    };
    static void onState(void* self, pw_stream_state old, pw_stream_state state, char const* error);
    static void onProcess(void* self);
    void connect();
    void take(std::vector<StereoSample> samples);
    std::size_t lostBefore(pw_time const& time, std::size_t count);

    Connection& connection_;
    double const openedAt_;
    double firstDataAt_ = 0; // moments of the media clock; 0: not yet
    double lastDataAt_ = 0;
    double lastNotedAt_ = 0;
    double deliveredUntil_ = 0;
    ClockedSound sound_;
    pw_stream_state state_ = PW_STREAM_STATE_CONNECTING;
    double ticksUntil_ = -1; // the server's thread's: where the last cycle ended, in samples; below 0: none yet

    std::mutex lock_;
    std::vector<Cycle> cycles_; // guarded by lock_; those that came
    spa_hook hook_{};
    Stream stream_; // last: it ends before all that it reports to
};

}
