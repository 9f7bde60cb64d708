#pragma once

#include <TavaroCore/Files/ReleaseWith.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <pulse/pulseaudio.h>
#include <string>
#include <string_view>
#include <vector>

/// The handles of libpulse and a connection to a sound server. For the sources of this library only.
namespace tavaro::pulse {

template<auto part, auto release> struct PartAndRelease {
    void operator()(auto* handle) const {
        part(handle);
        release(handle);
    }
};
using Loop = std::unique_ptr<pa_mainloop, ReleaseWith<pa_mainloop_free>>;
using Context = std::unique_ptr<pa_context, PartAndRelease<pa_context_disconnect, pa_context_unref>>;
using Stream = std::unique_ptr<pa_stream, PartAndRelease<pa_stream_disconnect, pa_stream_unref>>;
using Operation = std::unique_ptr<pa_operation, ReleaseWith<pa_operation_unref>>;

/// A source of the server: a microphone, or what one of its outputs plays.
struct SourceInfo {
    std::string name; // its id: stays the same when the device is plugged in again
    std::string description;
    bool isMonitor = false;
};

struct ServerInfo {
    std::string defaultSource;
    std::string defaultSink;
    bool isPipeWire = false;  // speaks for a PipeWire server, which knows no latencies
    std::uint32_t cookie = 0; // of the server, that one's where it speaks for it
};

/// Something that an application plays.
struct Playback {
    std::uint32_t number = 0;
    std::string monitor; // the source that lets hear the output on which it plays
    std::string application;
    std::string program;
    std::string id; // of the application's desktop entry, where it says

    /// Whether it is that application's, whichever of the three it is called by, in whichever case.
    bool isOf(std::string_view name) const;
};

/// A connection to the sound server of a session, PulseAudio's own or PipeWire's. It never starts one. It runs on the
/// thread that calls it, and only during the calls; streams that are made on it report then, too.
class Server {
public:
    using Clock = std::chrono::steady_clock;

    /// `address` as in `$PULSE_SERVER`; an empty one means that, or the session's own. Nothing here waits any longer
    /// once `isOver` says so.
    explicit Server(
        std::string const& address, std::function<bool()> isOver = [] { return false; });
    ~Server();
    Server(Server const&) = delete;
    Server& operator=(Server const&) = delete;

    pa_context* get() const { return context_.get(); }
    /// Waits for the server; false when none answers.
    bool connect(std::chrono::milliseconds atMost);
    bool isAlive() const;
    /// Why the last thing asked for was not done.
    std::string reason() const;

    /// Lets events in, for so long at most.
    void run(std::chrono::milliseconds atMost);

    /// None when the server is gone.
    std::optional<ServerInfo> info();
    std::vector<SourceInfo> sources();
    /// The source that lets hear what a sink plays; empty when there is none.
    std::string monitorOf(std::string const& sink);
    std::vector<Playback> playbacks();
    /// From now on, whether outputs or what is the default came, went or changed since the last time that this was
    /// asked.
    bool hasOtherOutputs();

private:
    bool finish(pa_operation* operation);

    enum class Watch { none, quiet, changed };
    std::function<bool()> const isOver_;
    Watch outputs_ = Watch::none;
    Loop loop_;
    Context context_;
};

}
