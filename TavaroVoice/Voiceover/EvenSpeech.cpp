#include <TavaroVoice/Voiceover/Private/EvenSpeech.h>

#include <TavaroMedia/Audio/LoudnessMeter.h>
#include <TavaroMedia/Audio/PeakLimiter.h>
#include <TavaroVoice/Errors/VoiceError.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

constexpr double leastMeasured = 1.5; // seconds; what is shorter is measured over and over
constexpr double quietest = 0.0001;   // full scale; less is no sound at all
constexpr double window = 0.01;       // seconds of one level
constexpr double audible = 0.01;      // of the loudest moment, −40 dB; less is silence around the line
constexpr double certain = 0.1;       // and this is a voice
constexpr double kept = 0.02;         // seconds of it that stay before the line
constexpr double rest = 0.15;         // and behind it, as the shortest breath between two lines
constexpr double exact = 0.1;         // decibels
constexpr double leastYield = 0.2;
constexpr int mostPasses = 12;
constexpr double mostLimited = 24; // decibels that are taken from peaks

std::size_t samplesIn(double seconds) { return static_cast<std::size_t>(seconds * audioRate); }

/// The root mean square of each hundredth of a second.
std::vector<double> levels(std::span<float const> samples) {
    auto const count = samplesIn(window);
    std::vector<double> result;
    for (std::size_t at = 0; at < samples.size(); at += count) {
        auto const part = samples.subspan(at, std::min(count, samples.size() - at));
        double power = 0;
        for (float const sample : part) power += static_cast<double>(sample) * sample;
        result.push_back(std::sqrt(power / static_cast<double>(part.size())));
    }
    return result;
}

std::size_t firstAbove(std::vector<double> const& heights, double level) {
    return static_cast<std::size_t>(std::ranges::find_if(heights, [&](double h) { return h > level; }) -
                                    heights.begin());
}

/// Where the line begins, in samples. Some voices breathe or hiss before their first word, which is known then.
std::size_t beginning(Speech const& speech, std::vector<double> const& heights, double loudest) {
    double begin = static_cast<double>(firstAbove(heights, loudest * audible)) * window;
    if (!speech.words.empty()) {
        double const loud = static_cast<double>(firstAbove(heights, loudest * certain)) * window;
        begin = std::max(begin, std::min(speech.words.front().start, loud));
    }
    return samplesIn(std::max(begin - kept, 0.0));
}

std::size_t ending(std::vector<double> const& heights, double loudest) {
    auto const last = std::find_if(heights.rbegin(), heights.rend(), [&](double h) { return h > loudest * audible; });
    return static_cast<std::size_t>(last.base() - heights.begin()) * samplesIn(window);
}

/// Takes the silence around what is heard.
void trim(Speech& speech) {
    auto const heights = levels(speech.samples);
    double const loudest = heights.empty() ? 0 : *std::ranges::max_element(heights);
    if (!(loudest > quietest)) throw VoiceError(VoiceError::Kind::noSound, "The voice made no sound of this line.");
    auto const begin = beginning(speech, heights, loudest);
    speech.samples.resize(ending(heights, loudest) + samplesIn(rest));
    speech.samples.erase(speech.samples.begin(), speech.samples.begin() + static_cast<std::ptrdiff_t>(begin));
    double const before = static_cast<double>(begin) / audioRate;
    for (auto& word : speech.words) {
        word.start = std::clamp(word.start - before, 0.0, speech.duration());
        word.end = std::clamp(word.end - before, word.start, speech.duration());
    }
}

std::vector<float> amplified(std::vector<float> const& samples, double decibels) {
    auto const gain = static_cast<float>(std::pow(10, decibels / 20));
    std::vector<StereoSample> sides(samples.size());
    std::ranges::transform(samples, sides.begin(), [&](float s) { return StereoSample{s * gain, s * gain}; });
    std::vector<StereoSample> limited;
    limited.reserve(sides.size());
    PeakLimiter limiter(linePeak);
    limiter.process(sides, limited);
    limiter.finish(limited);
    std::vector<float> result(limited.size());
    std::ranges::transform(limited, result.begin(), &StereoSample::left);
    return result;
}

/// The gain that brings the loudest sample to full scale; sound as quiet as that is measured as silence.
double fullGain(std::vector<float> const& samples) {
    float peak = 0;
    for (float const sample : samples) peak = std::max(peak, std::abs(sample));
    return -20 * std::log10(peak);
}

/// The limiter takes some loudness with the peaks, which more gain brings back: the more it takes, the more of it.
std::vector<float> levelled(std::vector<float> const& samples) {
    double gain = fullGain(samples), yield = 1; // how much louder a decibel makes it
    double const most = gain + mostLimited;
    auto result = amplified(samples, gain);
    auto loudness = speechLoudness(result);
    for (int pass = 0; loudness && pass < mostPasses; ++pass) {
        double const missing = lineLoudness - *loudness;
        double const step = std::min(missing / yield, most - gain);
        if (std::abs(missing) < exact || step == 0) break;
        result = amplified(samples, gain += step);
        auto const before = std::exchange(loudness, speechLoudness(result));
        if (loudness) yield = std::clamp((*loudness - *before) / step, leastYield, 1.0);
    }
    return result;
}

}

std::optional<double> speechLoudness(std::span<float const> samples) {
    if (samples.empty()) return std::nullopt;
    std::vector<StereoSample> sides(samples.size());
    std::ranges::transform(samples, sides.begin(), [](float s) { return StereoSample{s, s}; });
    LoudnessMeter meter;
    for (std::size_t measured = 0; measured == 0 || measured < samplesIn(leastMeasured); measured += sides.size())
        meter.add(sides);
    return meter.integrated();
}

Speech evened(Speech speech) {
    if (speech.sampleRate != audioRate)
        throw VoiceError(VoiceError::Kind::failed, "The voice's sound has another rate than 48 kHz.");
    for (auto& sample : speech.samples)
        if (!std::isfinite(sample)) sample = 0;
    trim(speech);
    speech.samples = levelled(speech.samples);
    return speech;
}

}
