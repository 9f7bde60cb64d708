#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Voiceover/Private/EvenSpeech.h>

#include <TavaroMedia/Audio/LoudnessMeter.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace tavaro {

namespace {

/// Syllables of a buzzing voice, each with a sharp beginning, at that amplitude.
Speech voice(double seconds, double amplitude, double sharpness, double silence = 0.4) {
    Speech speech;
    std::mt19937 random(7);
    std::normal_distribution<float> breath(0, 0.02f);
    auto const count = static_cast<std::size_t>((seconds + 2 * silence) * 48'000);
    speech.samples.resize(count);
    for (std::size_t n = static_cast<std::size_t>(silence * 48'000); n + silence * 48'000 < count; ++n) {
        double const t = static_cast<double>(n) / 48'000 - silence;
        double const syllable = std::fmod(t, 0.2) / 0.2;
        double sum = 0;
        for (int harmonic = 1; harmonic <= 12; ++harmonic)
            sum += std::cos(2 * std::numbers::pi * 120 * harmonic * t) / harmonic;
        double const shape = std::exp(-sharpness * syllable);
        speech.samples[n] = static_cast<float>(amplitude * shape * (0.3 * sum + breath(random)));
    }
    speech.words = {{"Hello", silence, silence + seconds / 2}, {"there", silence + seconds / 2, silence + seconds}};
    return speech;
}

struct Measured {
    double loudness;
    double peak;
};

/// As a player of the film measures it; short sounds repeated, since the standard measures no less than 0.4 s.
Measured measured(Speech const& speech) {
    std::vector<StereoSample> sides;
    for (float const sample : speech.samples) sides.push_back({sample, sample});
    LoudnessMeter meter(LoudnessMeter::Peaks::measured);
    for (int i = 0; i < (speech.duration() < 1 ? 8 : 1); ++i) meter.add(sides);
    return {meter.integrated().value_or(-100), meter.truePeak().value_or(-100)};
}

TEST(EvenSpeech, isAsLoudWhateverAnEngineMakesOfIt) {
    for (double const seconds : {0.15, 0.5, 4.0}) {
        for (double const amplitude : {0.003, 0.1, 0.9, 4.0}) {
            for (double const sharpness : {0.5, 3.0}) {
                auto const line = evened(voice(seconds, amplitude, sharpness));
                auto const [loudness, peak] = measured(line);
                EXPECT_NEAR(loudness, lineLoudness, 0.5) << seconds << " s, " << amplitude << ", " << sharpness;
                EXPECT_LE(peak, -1) << seconds << " s, " << amplitude << ", " << sharpness;
            }
        }
    }
}

TEST(EvenSpeech, beginsWithItsFirstSoundAndItsWordsWithIt) {
    auto const line = evened(voice(2, 0.3, 1, 0.7));
    std::size_t first = 0;
    while (std::abs(line.samples[first]) < 0.02) ++first;
    EXPECT_LT(static_cast<double>(first) / 48'000, 0.04);
    EXPECT_NEAR(line.words[0].start, static_cast<double>(first) / 48'000, 0.03);
    EXPECT_NEAR(line.words[1].end - line.words[0].start, 2, 0.05);
    EXPECT_NEAR(line.duration(), 2.17, 0.05) << "a breath of silence stays behind it";
    EXPECT_NEAR(evened(line).duration(), line.duration(), 0.02) << "there is nothing more to take";
}

TEST(EvenSpeech, ofNothingIsAFailureWithASentence) {
    for (auto const& samples : {std::vector<float>(), std::vector<float>(48'000), std::vector<float>(48'000, 1e-6f),
                                std::vector<float>(48'000, std::nanf(""))}) {
        Speech speech{.samples = samples};
        try {
            evened(speech);
            FAIL() << samples.size();
        } catch (VoiceError const& error) {
            EXPECT_EQ(error.kind, VoiceError::Kind::noSound);
        }
    }
    EXPECT_THROW(evened({.samples = std::vector<float>(100, 0.5f), .sampleRate = 16'000}), VoiceError);
}

}

}
