#include <Tavaro/Studio/Recorder/LiveSound.h>

#include <Tavaro/Studio/Recorder/Sentence.h>

#include <TavaroPlatform/Clocks/MediaClock.h>

namespace tavaro {

LiveSound::LiveSound(MainQueue& queue, SoundMeter& meter) : meter_(meter), device_(queue, "com.tavaro.studio.sound") {
    timer_.setInterval(50);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { show(); });
}

void LiveSound::listen(std::optional<SoundMonitor::Source> const& source) {
    if (source == source_) return;
    source_ = source;
    timer_.stop();
    meter_.clear();
    if (!source) return device_.close();
    device_.open([wanted = *source] { return std::make_unique<SoundMonitor>(wanted); },
                 [this](std::exception_ptr const& failure) {
                     if (failure) return meter_.fail(sentenceOf(failure));
                     timer_.start();
                 });
}

void LiveSound::show() {
    if (auto const* const monitor = device_.get()) meter_.show(monitor->state(), mediaClockNow());
}

}
