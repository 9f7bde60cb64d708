#pragma once

#include <TavaroMedia/Audio/StereoSample.h>

#include <functional>
#include <span>
#include <string>

namespace tavaro {

/// Sound without a gap, 48,000 samples a second of the media clock: a source whose device keeps another time resamples.
/// A block follows the one before to the sample, or there is nothing between the two: silence.
struct SoundBlock {
    std::span<StereoSample const> samples;
    double capturedAt = 0; // moment of the first sample on the media clock, when it was heard, not when it arrived
};

/// What a source of sound reports, on a thread of its own.
struct SoundHandlers {
    std::function<void(SoundBlock const&)> block; // good during the call
    std::function<void(double since)> lost;       // the device went away; sound is missing from that moment on
    std::function<void(double at)> returned = [](double) {}; // it is back, itself and never another one
};

/// A microphone, or what the machine plays.
class SoundSource {
public:
    virtual ~SoundSource() = default;
    /// Returns when sound comes, or after two seconds without any.
    virtual void start(SoundHandlers handlers) = 0;
    /// No handler runs after it. Returns within seconds, whatever the device does.
    virtual void stop() = 0;
    /// Any thread. The application that is to be heard, as long as it has not played anything; empty where there is
    /// none.
    virtual std::string awaited() const { return {}; }
};

}
