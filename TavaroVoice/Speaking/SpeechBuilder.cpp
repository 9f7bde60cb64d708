#include <TavaroVoice/Speaking/Private/SpeechBuilder.h>

#include <TavaroVoice/Errors/VoiceError.h>

#include <TavaroMedia/Audio/StereoSample.h>
#include <TavaroMedia/Audio/TimeStretch.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <utility>

namespace tavaro {

void SpeechBuilder::append(MonoSound const& sound, SpokenPhrase const& phrase, std::vector<WordTime> const& times) {
    auto const before = speech_.duration();
    auto const fitting = resampled(sound, speech_.sampleRate);
    auto const length = static_cast<double>(fitting.samples.size()) / speech_.sampleRate;
    speech_.samples.insert(speech_.samples.end(), fitting.samples.begin(), fitting.samples.end());
    hasTimes_ = hasTimes_ && times.size() == phrase.size();
    double last = 0;
    for (std::size_t i = 0; hasTimes_ && i < phrase.size(); ++i) {
        auto const start = std::clamp(times[i].start, last, length);
        last = std::clamp(times[i].end, start, length);
        speech_.words.push_back({phrase[i].shown, before + start, before + last});
    }
}

Speech SpeechBuilder::take() {
    if (!hasTimes_) speech_.words.clear();
    return std::move(speech_);
}

double audibleSpeed(double speed) {
    constexpr double slowest = 0.25, fastest = 4;
    return std::isfinite(speed) && speed > 0 ? std::clamp(speed, slowest, fastest) : 1;
}

Speech stretched(Speech speech, double speed) {
    if (speed == 1 || speech.samples.empty()) return speech;
    auto const& source = speech.samples;
    TimeStretch stretch(speed, [&](std::int64_t position, std::span<StereoSample> samples) {
        for (auto& sample : samples) {
            bool const isWithin = position >= 0 && position < std::ssize(source);
            auto const value = isWithin ? source[static_cast<std::size_t>(position)] : 0;
            sample = {value, value};
            ++position;
        }
    });
    std::vector<StereoSample> heard(static_cast<std::size_t>(std::llround(static_cast<double>(source.size()) / speed)));
    stretch.read(heard);
    speech.samples.resize(heard.size());
    std::ranges::transform(heard, speech.samples.begin(), [](StereoSample sample) { return sample.left; });
    for (auto& word : speech.words) word.start /= speed, word.end /= speed;
    return speech;
}

void expectNoStop(std::stop_token const& stop) {
    if (stop.stop_requested()) throw cancelledSpeech();
}

}
