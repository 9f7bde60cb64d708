#include "TestSounds.h"

#include <TavaroMedia/Audio/AudioGraph.h>
#include <TavaroMedia/Audio/LoudnessMeter.h>
#include <TavaroMedia/Audio/NoiseReduction.h>
#include <TavaroMedia/Audio/PeakLimiter.h>
#include <TavaroMedia/Errors/MediaError.h>

#include <gtest/gtest.h>

#include <cmath>

namespace tavaro {

namespace {

/// Pieces of odd sizes, as they come from files.
template<class Take> void inPieces(Sound const& sound, Take take) {
    std::size_t at = 0;
    for (std::size_t size = 1; at < sound.size(); size = size * 7 % 4999 + 1) {
        auto const count = std::min(size, sound.size() - at);
        take(std::span(sound).subspan(at, count));
        at += count;
    }
}

template<class Process> Sound processed(Process process, Sound const& sound) {
    Sound out;
    inPieces(sound, [&](auto piece) { process.process(piece, out); });
    process.finish(out);
    return out;
}

Sound filtered(std::string const& chain, Sound const& sound, int channels = 2) {
    AudioGraph graph(chain, channels);
    Sound out;
    inPieces(sound, [&](auto piece) {
        graph.push(piece);
        graph.pull(out);
    });
    graph.finish();
    graph.pull(out);
    return out;
}

std::span<StereoSample const> part(Sound const& sound, double from, double to) {
    auto const at = [](double seconds) { return static_cast<std::size_t>(seconds * audioRate); };
    return std::span(sound).subspan(at(from), at(to) - at(from));
}

TEST(AudioGraph, aChainFiltersWithoutMovingTheSound) {
    auto const sound = sum(tone(2, 50), tone(2, 1000));
    for (int const channels : {1, 2}) {
        auto const out = filtered("highpass=f=200", sound, channels);
        ASSERT_EQ(out.size(), sound.size());
        EXPECT_NEAR(levelAt(part(out, 0.5, 1.5), 1000), levelAt(part(sound, 0.5, 1.5), 1000), 0.2);
        EXPECT_LT(levelAt(part(out, 0.5, 1.5), 50), levelAt(part(sound, 0.5, 1.5), 50) - 20);
    }
}

TEST(AudioGraph, aFilterThatIsNotThereIsRefused) {
    EXPECT_THROW(AudioGraph("no_such_filter=1"), MediaError);
    EXPECT_THROW(AudioGraph("highpass=f=banana"), MediaError);
}

TEST(NoiseReduction, steadyNoiseFallsAndSpeechStays) {
    auto const speech = syllables(12, 0.3);
    auto const hiss = noise(12, 0.01);
    auto const noisy = sum(speech, hiss);
    auto const out = processed(NoiseReduction(1), noisy);
    ASSERT_EQ(out.size(), noisy.size());
    // A breath between two phrases.
    EXPECT_LT(level(part(out, 6.9, 7.4)), level(part(noisy, 6.9, 7.4)) - 12);
    EXPECT_NEAR(level(part(out, 5.0, 6.8)), level(part(speech, 5.0, 6.8)), 1.5);
    EXPECT_LT(level(part(out, 1.9, 2.4)), level(part(noisy, 1.9, 2.4)) - 8) << "the first breath too";
    auto const half = processed(NoiseReduction(0.4), noisy);
    EXPECT_LT(level(part(half, 6.9, 7.4)), level(part(noisy, 6.9, 7.4)) - 4);
    EXPECT_GT(level(part(half, 6.9, 7.4)), level(part(out, 6.9, 7.4)) + 3) << "strength is graded";
}

TEST(NoiseReduction, soundIsNeitherDelayedNorChangedInLength) {
    auto const sound = sum(syllables(6, 0.3), noise(6, 0.004));
    for (double const strength : {0.3, 0.6, 1.0}) {
        for (int const channels : {1, 2}) {
            auto const out = processed(NoiseReduction(strength, channels), sound);
            ASSERT_EQ(out.size(), sound.size());
            EXPECT_EQ(delay(part(sound, 3, 5), part(out, 3, 5), 800), 0) << strength;
        }
    }
    EXPECT_EQ(processed(NoiseReduction(0), sound), sound);
}

TEST(NoiseReduction, soundShorterThanItsLessonAndSilenceComeOutWhole) {
    for (double const seconds : {0.0, 0.001, 0.02, 1.0}) {
        auto const sound = tone(seconds, 300);
        EXPECT_EQ(processed(NoiseReduction(1), sound).size(), sound.size()) << seconds;
    }
    EXPECT_LT(peak(processed(NoiseReduction(1), Sound(200'000))), 1e-6);
}

double truePeak(Sound const& sound) {
    LoudnessMeter meter(LoudnessMeter::Peaks::measured);
    meter.add(sound);
    return meter.truePeak().value_or(-200);
}

TEST(PeakLimiter, noPeakPassesTheCeilingNotEvenBetweenTwoSamples) {
    // A quarter of the rate, half way between its crests, peaks 3 dB above its samples.
    auto between = tone(1, 12'000, 0);
    for (std::size_t n = 0; n < between.size(); ++n) {
        auto const value = static_cast<float>(1.1 * std::sin((static_cast<double>(n) * 0.5 + 0.25) * M_PI));
        between[n] = {value, value};
    }
    auto burst = sum(tone(2, 300, 0.2), Sound());
    for (std::size_t n = 40'000; n < 41'000; ++n) burst[n].left *= 12;
    for (auto const& sound : {between, burst, noise(2, 2.5), tone(2, 90, 3), sum(syllables(3, 2), noise(3, 0.3))}) {
        auto const out = processed(PeakLimiter(-1), sound);
        ASSERT_EQ(out.size(), sound.size());
        EXPECT_LE(truePeak(out), -0.9);
        EXPECT_GE(truePeak(out), -4) << "and no more is taken than needed";
    }
}

TEST(PeakLimiter, whatStaysBelowTheCeilingIsNotTouched) {
    auto sound = sum(syllables(3, 0.3), noise(3, 0.02));
    ASSERT_LT(truePeak(sound), -1.1);
    EXPECT_EQ(processed(PeakLimiter(-1), sound), sound);
    // A peak bends only what is near it.
    sound[72'000] = {1.5, -1.5};
    auto const out = processed(PeakLimiter(-1), sound);
    EXPECT_TRUE(std::equal(sound.begin(), sound.begin() + 72'000 - 500, out.begin()));
    EXPECT_TRUE(std::equal(sound.begin() + 72'000 + 60'000, sound.end(), out.begin() + 72'000 + 60'000));
    EXPECT_EQ(delay(part(sound, 1.4, 1.6), part(out, 1.4, 1.6), 300), 0);
}

TEST(LoudnessMeter, aToneOfKnownLevelMeasuresAsTheStandardSays) {
    LoudnessMeter meter(LoudnessMeter::Peaks::measured);
    meter.add(tone(5, 997, std::pow(10, -23 / 20.0)));
    EXPECT_NEAR(*meter.integrated(), -23, 0.1); // both sides: the standard's calibration
    EXPECT_NEAR(*meter.truePeak(), -23, 0.1);
    LoudnessMeter silent(LoudnessMeter::Peaks::measured);
    silent.add(Sound(audioRate));
    EXPECT_FALSE(silent.integrated());
    EXPECT_FALSE(silent.truePeak());
}

}

}
