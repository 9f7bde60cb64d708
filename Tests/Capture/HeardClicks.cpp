#include "HeardClicks.h"

#include <TavaroCapture/Pulse/Private/PulseSound.h>

#include <cmath>

namespace tavaro {

namespace {

constexpr float loud = 0.2f;
constexpr double shortestGap = 0.02; // seconds
constexpr double betweenClicks = 0.1;

}

HeardClicks::HeardClicks(std::string const& server)
    : source_(std::make_unique<pulse::PulseSound>(
          pulse::PulseSound::Options{.server = server, .role = StreamRole::systemSound})) {
    source_->start({.block = [this](SoundBlock const& block) { listen(block); }, .lost = [](double) {}});
}

HeardClicks::~HeardClicks() { source_->stop(); }

void HeardClicks::listen(SoundBlock const& block) {
    double at = block.capturedAt;
    for (auto const& sample : block.samples) {
        if (std::abs(sample.left) > loud) {
            if (at - loudAt_ > betweenClicks) note(at);
            if (at - loudAt_ <= shortestGap)
                loudSeconds_ = loudSeconds_ + (at - loudAt_);
            else if (loudAt_ > 0)
                ++gaps_;
            loudAt_ = at;
        }
        at += 1.0 / audioRate;
    }
}

}
