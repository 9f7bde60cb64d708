#pragma once

#include <TavaroMedia/Audio/StereoSample.h>

#include <functional>
#include <span>

namespace tavaro {

/// Sound that follows without a gap, 48,000 samples a second.
struct SoundBlock {
    std::span<StereoSample const> samples;
    double capturedAt = 0; // moment of the first sample on the media clock, when it was heard, not when it arrived
};

/// What a source of sound reports, on a thread of its own.
struct SoundHandlers {
    std::function<void(SoundBlock const&)> block; // good during the call
    std::function<void()> lost;                   // no more sound comes
};

/// A microphone, or what the machine plays.
class SoundSource {
public:
    virtual ~SoundSource() = default;
    virtual void start(SoundHandlers handlers) = 0;
    /// No handler runs after it.
    virtual void stop() = 0;
};

}
