#pragma once

#include <TavaroCapture/Sources/Private/SoundSource.h>

#include <cstdint>
#include <deque>
#include <functional>

namespace tavaro::pulse {

/// Several sounds on the media clock as one, without a gap: where nothing sounds it is silent. One thread.
class SoundMix {
public:
    /// From that moment of the media clock on; what was not taken is dropped.
    void begin(double moment);
    void add(SoundBlock const& block);
    /// Hands on what lies before that moment; what is added to it later is left out.
    void take(double until, std::function<void(SoundBlock const&)> const& block);

private:
    double start_ = 0;
    std::int64_t taken_ = 0;         // samples since the start
    std::deque<StereoSample> mixed_; // those that follow, as far as something sounds
};

}
