#pragma once

#include <TavaroCapture/Pulse/Private/PulseServer.h>
#include <TavaroCapture/Sound/Private/ClockedSound.h>

#include <optional>

namespace tavaro::pulse {

/// What a server's sound is timed by: PulseAudio tells how long each sample was on its way; PipeWire, speaking
/// PulseAudio's protocol, tells nothing of the kind, but hands on what it captures at once, so the earliest arrivals
/// tell the time.
enum class Timing { latencies, arrivals };

/// Records one source of a server, from its making to the end of the object or of the source: it is never moved to
/// another one. Works while its server runs. One thread, the server's.
class RecordStream {
public:
    struct Options {
        std::string source;
        std::string title; // what mixers show
        Timing timing = Timing::latencies;
        std::optional<std::uint32_t> playback; // the only one of those that a monitor's sink plays; none: all
    };

    RecordStream(Server& server, Options const& options, std::function<void(SoundBlock const&)> block);
    ~RecordStream();
    RecordStream(RecordStream const&) = delete;
    RecordStream& operator=(RecordStream const&) = delete;

    /// To be called some dozens of times a second: keeps up with the server's clock.
    void tend();
    /// Whether sound comes, or may still do so.
    bool isLive() const;
    /// Whether nothing has come for longer than it takes a device that works.
    bool isQuiet() const;
    bool hasBegun() const { return hasBegun_; }
    /// The moment of the media clock up to which sound was handed on.
    double deliveredUntil() const { return deliveredUntil_; }

private:
    static void onReadable(pa_stream*, std::size_t, void* self) { static_cast<RecordStream*>(self)->read(); }
    static void onTiming(pa_stream*, int success, void* self);
    void read();
    void noteQuiet(double now);
    void askForLatencies(double now);
    void noteLatencies(pa_timing_info const& info);
    void noteArrival(double now);

    Timing const timing_;
    double const openedAt_;
    double firstDataAt_ = 0; // moments of the media clock; 0: not yet
    double lastDataAt_ = 0;
    double lastTendedAt_ = 0;
    double lastAskedAt_ = 0;
    double quiet_ = 0; // seconds without data, in which this thread was there to see it
    bool hasBegun_ = false;
    double deliveredUntil_ = 0;
    ClockedSound sound_;

    struct Arrivals {
        double until = 0;
        std::int64_t sample = 0;
        double moment = 0; // the earliest for its sample
    };
    std::optional<Arrivals> arrivals_; // of the present fraction of a second
    Operation asking_;
    Stream stream_; // last: it ends before all that it reports to
};

}
