#include <TavaroMedia/Audio/MonoSound.h>
#include <TavaroMedia/Errors/MediaError.h>

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace tavaro {

namespace {

MonoSound tone(double frequency, int rate, std::size_t length) {
    MonoSound sound{std::vector<float>(length), rate};
    for (std::size_t i = 0; i < length; ++i)
        sound.samples[i] = static_cast<float>(
            0.5 * std::sin(2 * std::numbers::pi * frequency * static_cast<double>(i) / static_cast<double>(rate)));
    return sound;
}

/// By how much two sounds differ at most, but at their ends.
double difference(MonoSound const& a, MonoSound const& b) {
    double most = 0;
    for (std::size_t i = 500; i + 500 < a.samples.size(); ++i)
        most = std::max(most, std::abs(static_cast<double>(a.samples[i]) - b.samples[i]));
    return most;
}

}

TEST(MonoSound, isTheSameAtAnotherRateInPlaceAndLength) {
    for (int const rate : {8000, 16'000, 22'050, 32'000, 44'100, 48'000, 96'000}) {
        auto const made = resampled(tone(1000, rate, static_cast<std::size_t>(rate)), 48'000);
        ASSERT_EQ(made.samples.size(), 48'000u) << rate;
        EXPECT_LT(difference(made, tone(1000, 48'000, 48'000)), 0.01) << rate;
    }
    EXPECT_TRUE(resampled({{}, 16'000}, 48'000).samples.empty());
    EXPECT_EQ(resampled(tone(100, 22'050, 1), 48'000).samples.size(), 2u);
    EXPECT_THROW(resampled(tone(100, 0, 10), 48'000), MediaError);
}

TEST(MonoSound, survivesAFile) {
    auto sound = tone(440, 22'050, 5000);
    sound.samples[7] = 3;
    sound.samples[8] = -3;
    auto const bytes = wavBytes(sound);
    auto const read = soundOfWAV(bytes);
    EXPECT_EQ(read.rate, 22'050);
    ASSERT_EQ(read.samples.size(), 5000u);
    EXPECT_FLOAT_EQ(read.samples[7], 32'767.0F / 32'768);
    EXPECT_FLOAT_EQ(read.samples[8], -1);
    EXPECT_LT(difference(read, sound), 1.0 / 32'768);
    auto const whole = soundOfFile(bytes, 10);
    EXPECT_EQ(whole.rate, 48'000);
    EXPECT_NEAR(static_cast<double>(whole.samples.size()), 5000.0 * 48'000 / 22'050, 2);
    EXPECT_THROW(soundOfFile(bytes, 0.1), MediaError) << "it is longer";

    for (std::size_t end = 0; end < 44; ++end) EXPECT_THROW(soundOfWAV(bytes.substr(0, end)), MediaError) << end;
    EXPECT_EQ(soundOfWAV(bytes.substr(0, 144)).samples.size(), 50u) << "its header promises more than comes";
    EXPECT_THROW(soundOfFile("no sound at all", 10), MediaError);
}

}
