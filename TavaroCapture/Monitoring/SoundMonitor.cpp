#include <TavaroCapture/Monitoring/SoundMonitor.h>

#include <TavaroCapture/Devices/Private/OpenSources.h>
#include <TavaroMedia/Audio/SoundLevels.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

constexpr std::size_t levelWindows = 5; // a tenth of a second

std::unique_ptr<SoundSource> opened(SoundMonitor::Source const& source, std::string const& server) {
    if (auto const* const microphone = std::get_if<MicrophoneSource>(&source))
        return openMicrophone(*microphone, server);
    return openSystemSound(std::get<SystemSoundSource>(source), server);
}

StreamRole roleOf(SoundMonitor::Source const& source) {
    return std::holds_alternative<MicrophoneSource>(source) ? StreamRole::microphone : StreamRole::systemSound;
}

}

struct SoundMonitor::Ear {
    std::unique_ptr<SoundSource> const source;
    StreamRole const role;
    std::vector<StereoSample> window; // the source's thread's, as the next two
    std::array<float, levelWindows> levels{};
    std::size_t next = 0;
    std::atomic<float> level = 0;
    std::atomic<bool> isAway = false;
    std::atomic<double> lastLoud = mediaClockNow(); // moment of the media clock

    Ear(std::unique_ptr<SoundSource> source, StreamRole role) : source(std::move(source)), role(role) {
        this->source->start({.block = [this](SoundBlock const& block) { hear(block); },
                             .lost = [this](double) { isAway = true; },
                             .returned =
                                 [this](double) {
                                     lastLoud = mediaClockNow();
                                     isAway = false;
                                 }});
    }
    ~Ear() { source->stop(); }
    Ear(Ear const&) = delete;
    Ear& operator=(Ear const&) = delete;

    void hear(SoundBlock const& block) {
        for (auto const& sample : block.samples) {
            window.push_back(sample);
            if (window.size() == levelWindow) closeWindow();
        }
    }
    void closeWindow() {
        levels[next++ % levelWindows] = soundLevel(window);
        level = *std::ranges::max_element(levels);
        bool const isLoud =
            std::ranges::any_of(window, [](auto const& sample) { return sample.left != 0 || sample.right != 0; });
        if (isLoud) lastLoud = mediaClockNow();
        window.clear();
    }
};

SoundMonitor::SoundMonitor(Source const& source, std::string const& server)
    : SoundMonitor(opened(source, server), roleOf(source)) {}

SoundMonitor::SoundMonitor(std::unique_ptr<SoundSource> source, StreamRole role)
    : ear_(std::make_unique<Ear>(std::move(source), role)) {}

SoundMonitor::~SoundMonitor() = default;

SoundState SoundMonitor::state() const {
    SoundState state{
        .role = ear_->role, .level = ear_->level, .isAway = ear_->isAway, .awaited = ear_->source->awaited()};
    if (state.isAway)
        state.level = 0;
    else
        state.silentSeconds = std::max(mediaClockNow() - ear_->lastLoud, 0.0);
    return state;
}

}
