#include <TavaroCapture/Recorder/Private/SoundStream.h>

#include <TavaroCapture/Events/Private/TakeClock.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace tavaro {

SoundStream::SoundStream(std::unique_ptr<SoundSource> source, TakeClock const& clock, SideStreamOptions const& options)
    : source_(std::move(source))
    , clock_(clock)
    , role_(options.role)
    , levels_(options.levels)
    , writer_({options.manifest, options.role, options.segmentSeconds}) {}

void SoundStream::start() {
    source_->start({.block = [this](SoundBlock const& block) { take(block); },
                    .lost = [this](double since) { absences_.begin(clock_.elapsed(since)); },
                    .returned =
                        [this](double at) {
                            heardUntil_ = 0; // what is missing is no loss of a device that is there
                            absences_.end(clock_.elapsed(at));
                        }});
}

void SoundStream::stop() {
    source_->stop();
    queue_.sync([] {});
}

/// What of the block lies in a pause is left out, to a few milliseconds.
void SoundStream::take(SoundBlock const& block) {
    constexpr std::size_t slice = audioRate / 200;
    noteGap(block);
    noteLoudness(block);
    Run run;
    for (std::size_t from = 0; from < block.samples.size(); from += slice) {
        auto const time = clock_.place(block.capturedAt + static_cast<double>(from) / audioRate);
        if (!time) {
            append(std::exchange(run, {}));
            isAfterPause_ = true;
            continue;
        }
        if (run.samples.empty()) run.time = *time;
        if (std::exchange(isAfterPause_, false)) run.joint = SoundJoint::placed;
        auto const part = block.samples.subspan(from, std::min(slice, block.samples.size() - from));
        run.samples.insert(run.samples.end(), part.begin(), part.end());
    }
    append(std::move(run));
}

void SoundStream::noteGap(SoundBlock const& block) {
    constexpr double rounding = 0.001;
    double const gap = block.capturedAt - heardUntil_;
    if (heardUntil_ > 0 && gap > rounding && clock_.place(heardUntil_)) lostSeconds_ = lostSeconds_ + gap;
    heardUntil_ = block.capturedAt + static_cast<double>(block.samples.size()) / audioRate;
}

/// A device that works has some noise at least.
void SoundStream::noteLoudness(SoundBlock const& block) {
    bool const isLoud = std::ranges::any_of(
        block.samples, [](StereoSample const& sample) { return sample.left != 0 || sample.right != 0; });
    if (isLoud || lastLoud_ == 0) lastLoud_ = heardUntil_;
}

void SoundStream::append(Run run) {
    if (run.samples.empty()) return;
    queue_.async([this, run = std::move(run)] { write(run); });
}

void SoundStream::write(Run const& run) {
    if (failure_) return;
    try {
        levels_->add(run.time, run.samples);
        writer_.append(run.samples, run.time, run.joint);
    } catch (CaptureError const& error) {
        failure_ = error.what();
    }
}

std::optional<SoundState> SoundStream::sound() const {
    SoundState state{
        .role = role_, .level = levels_->latest(), .isAway = absences_.isAway(), .awaited = source_->awaited()};
    double const lastLoud = lastLoud_;
    if (!state.isAway && lastLoud > 0) state.silentSeconds = std::max(mediaClockNow() - lastLoud, 0.0);
    if (state.isAway) state.level = 0;
    return state;
}

std::vector<double> SoundStream::interruptedAt() const {
    return lastLoud_ > 0 ? absences_.beginnings() : std::vector<double>();
}

std::vector<std::string> SoundStream::finish() {
    constexpr double leastLoss = 0.02;
    queue_.sync([this] {
        try {
            if (!failure_) writer_.finish();
        } catch (CaptureError const& error) {
            failure_ = error.what();
        }
    });
    auto const name = spokenName(role_);
    if (failure_) return {fmt::format("The {} ended early. {}", name, *failure_)};
    std::vector<std::string> warnings;
    auto const away = writer_.samplesWritten() > 0 ? absences_.sentence(role_) : std::nullopt;
    if (away) warnings.push_back(*away);
    if (auto const awaited = source_->awaited(); !awaited.empty())
        warnings.push_back(fmt::format("“{}” has not played anything; the {} is silent.", excerpt(awaited), name));
    if (lostSeconds_ >= leastLoss)
        warnings.push_back(
            fmt::format("{:.2f} seconds of the {} were lost; there is silence.", lostSeconds_.load(), name));
    return warnings;
}

}
