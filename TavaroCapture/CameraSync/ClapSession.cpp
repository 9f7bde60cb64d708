#include <TavaroCapture/CameraSync/Private/ClapSession.h>

#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr std::int64_t mostSamples = std::int64_t{120} * audioRate;

}

void ClapSession::start() {
    start_ = mediaClockNow();
    microphone_.start({.block = [this](SoundBlock const& block) { hear(block); }, .lost = [](double) {}});
    camera_.start({.picture =
                       [this](CapturedPicture const& picture) {
                           std::lock_guard const guard(lock_);
                           motion_.add(picture);
                       },
                   .lost = [](double) {}});
}

void ClapSession::stop() {
    camera_.stop();
    microphone_.stop();
}

void ClapSession::hear(SoundBlock const& block) {
    auto const at = std::llround((block.capturedAt - start_) * audioRate);
    auto const skipped = std::clamp<std::int64_t>(-at, 0, std::ssize(block.samples));
    auto const samples = block.samples.subspan(static_cast<std::size_t>(skipped));
    auto const end = at + std::ssize(block.samples);
    if (samples.empty() || end > mostSamples) return;
    std::lock_guard const guard(lock_);
    if (std::ssize(sound_) < end) sound_.resize(static_cast<std::size_t>(end));
    std::ranges::copy(samples, sound_.begin() + (at + skipped));
}

ClapMatch ClapSession::match() const {
    std::lock_guard const guard(lock_);
    return matchedClaps(clapsHeard(sound_, start_), motion_.motions());
}

}
