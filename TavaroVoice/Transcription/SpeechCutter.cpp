#include <TavaroVoice/Transcription/Private/SpeechCutter.h>

#include <TavaroMedia/Audio/StereoSample.h>
#include <TavaroVoice/Transcription/Private/Recogniser.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavaro {

namespace {

constexpr std::size_t window = audioRate / 50; // samples of one level
constexpr std::size_t pause = 15;              // windows that are looked at together
constexpr std::size_t around = audioRate / 2;  // samples on either side of a piece

double powerOf(std::span<float const> samples) {
    double sum = 0;
    for (auto const sample : samples) sum += static_cast<double>(sample) * sample;
    return sum / static_cast<double>(std::max<std::size_t>(samples.size(), 1));
}

std::vector<float> levelsOf(std::span<float const> samples) {
    std::vector<float> levels;
    for (std::size_t i = 0; i < samples.size(); i += window)
        levels.push_back(
            static_cast<float>(std::sqrt(powerOf(samples.subspan(i, std::min(window, samples.size() - i))))));
    return levels;
}

double secondsOf(std::int64_t samples) { return static_cast<double>(samples) / audioRate; }

}

SpeechCutter::SpeechCutter(double mostSeconds, std::function<void(SpeechPiece)> take)
    : most_(static_cast<std::size_t>(std::max(mostSeconds, 1.0) * audioRate))
    , take_(std::move(take)) {}

void SpeechCutter::feed(std::span<float const> samples) {
    while (!samples.empty()) {
        auto const room = before_ + most_ + around - held_.size();
        auto const count = std::min(room, samples.size());
        held_.insert(held_.end(), samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(count));
        samples = samples.subspan(count);
        if (count == room) cutAt(quietest(), false);
    }
}

void SpeechCutter::finish() {
    if (held_.size() > before_) cutAt(held_.size(), true);
}

/// The middle of the quietest pause in the second half of the piece.
std::size_t SpeechCutter::quietest() const {
    auto const from = before_ + most_ / 2;
    auto const span = std::span(held_).subspan(from, most_ - most_ / 2);
    std::vector<double> powers;
    for (std::size_t i = 0; i + window <= span.size(); i += window) powers.push_back(powerOf(span.subspan(i, window)));
    std::size_t best = 0;
    double least = -1, sum = 0;
    for (std::size_t i = 0; i < powers.size(); ++i) {
        sum += powers[i] - (i >= pause ? powers[i - pause] : 0);
        if (i + 1 < pause || (least >= 0 && sum >= least)) continue;
        least = sum;
        best = i + 1 - pause / 2;
    }
    return from + best * window;
}

void SpeechCutter::cutAt(std::size_t sample, bool isLast) {
    auto const end = std::min(held_.size(), sample + around);
    MonoSound const piece{{held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(end)}, audioRate};
    take_({.sound = resampled(piece, speechRate),
           .start = secondsOf(position_),
           .from = secondsOf(position_ + static_cast<std::int64_t>(before_)),
           .to = secondsOf(position_ + static_cast<std::int64_t>(isLast ? end : sample)),
           .levels = levelsOf(piece.samples)});
    auto const kept = sample - std::min(sample, around);
    before_ = sample - kept;
    held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(kept));
    position_ += static_cast<std::int64_t>(kept);
}

}
