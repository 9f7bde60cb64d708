#include <TavaroCapture/Sound/Private/ClockedSound.h>
#include <TavaroCapture/Sound/Private/FractionalSample.h>

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <random>

namespace tavaro {

namespace {

constexpr double pitch = 250; // so that an error shows up to 2 ms

/// A device whose clock is `ppm` fast, in a world where everything has a known moment. It sends 20 ms at a time, and a
/// reading of its clock ten times a second, some of them late or far off.
class Device {
public:
    explicit Device(double ppm, unsigned seed = 1) : rate_(audioRate * (1 + ppm * 1e-6)), random_(seed) {}

    /// What it would hear at a moment.
    static float heard(double moment) {
        return 0.5f * static_cast<float>(std::sin(2 * std::numbers::pi * pitch * moment));
    }
    void capture(ClockedSound& sound, double seconds) {
        constexpr std::int64_t fragment = audioRate / 50;
        for (double const end = seconds_ + seconds; seconds_ < end; seconds_ = static_cast<double>(captured_) / rate_) {
            std::vector<StereoSample> samples(fragment);
            for (auto& sample : samples) {
                float const value = heard(start + static_cast<double>(captured_++) / rate_);
                sample = {value, -value};
            }
            sent_ += fragment;
            sound.append(samples);
            if (++fragments_ % 5 == 0 || fragments_ < 10) sound.noteTime(sent_, reading());
        }
    }
    /// Captured, but lost on the way.
    void lose(double seconds) {
        captured_ += std::llround(seconds * rate_);
        seconds_ = static_cast<double>(captured_) / rate_;
    }

    static constexpr double start = 5000;

private:
    double reading() {
        double const error = std::normal_distribution<>(0, 0.0003)(random_);
        bool const isOff = std::bernoulli_distribution(0.1)(random_);
        return start + static_cast<double>(captured_) / rate_ + error + (isOff ? 0.08 : 0);
    }

    double const rate_;
    std::mt19937 random_;
    std::int64_t captured_ = 0;
    std::int64_t sent_ = 0;
    std::int64_t fragments_ = 0;
    double seconds_ = 0;
};

/// What comes out, checked as it comes.
struct Film {
    struct Stretch {
        double from;
        std::vector<float> samples;
        double to() const { return from + static_cast<double>(samples.size()) / audioRate; }
    };
    std::vector<Stretch> stretches; // without a gap inside

    void take(SoundBlock const& block) {
        bool const follows = !stretches.empty() && std::abs(block.capturedAt - stretches.back().to()) < 1e-6;
        if (!stretches.empty()) {
            EXPECT_GT(block.capturedAt, stretches.back().to() - 1e-6) << "blocks overlap";
        }
        if (!follows) stretches.push_back({block.capturedAt, {}});
        for (auto const& sample : block.samples) {
            EXPECT_EQ(sample.left, -sample.right);
            stretches.back().samples.push_back(sample.left);
        }
    }
    /// By how many seconds a tenth of a second from there on is late, and how much of it is not the tone.
    std::pair<double, double> errorAt(double moment) const {
        for (auto const& stretch : stretches) {
            if (moment < stretch.from || moment + 0.1 > stretch.to()) continue;
            auto const first = static_cast<std::size_t>(std::llround((moment - stretch.from) * audioRate));
            return toneError(std::span(stretch.samples).subspan(first, audioRate / 10),
                             stretch.from + static_cast<double>(first) / audioRate);
        }
        ADD_FAILURE() << "nothing was heard at " << moment;
        return {};
    }

private:
    static std::pair<double, double> toneError(std::span<float const> samples, double from) {
        double sine = 0, cosine = 0, power = 0;
        auto const angle = [&](std::size_t i) {
            return 2 * std::numbers::pi * pitch * (from + static_cast<double>(i) / audioRate);
        };
        for (std::size_t i = 0; i < samples.size(); ++i) {
            sine += samples[i] * std::sin(angle(i));
            cosine += samples[i] * std::cos(angle(i));
            power += samples[i] * samples[i];
        }
        double const tone = 2 * (sine * sine + cosine * cosine) / static_cast<double>(samples.size());
        double const late = -std::atan2(cosine, sine) / (2 * std::numbers::pi * pitch);
        return {late, 10 * std::log10(std::max(power - tone, 1e-12) / power)};
    }
};

}

TEST(ClockedSound, followsADeviceWhoseClockIsAnothersForAMinute) {
    for (double const ppm : {-500.0, -20.0, 0.0, 200.0, 500.0}) {
        Film film;
        ClockedSound sound([&](SoundBlock const& block) { film.take(block); });
        Device(ppm).capture(sound, 60);
        ASSERT_EQ(film.stretches.size(), 1u) << ppm << " ppm: no gap";
        EXPECT_NEAR(film.stretches[0].from, Device::start, 0.02) << "nothing of the beginning is lost";
        EXPECT_NEAR(film.stretches[0].to(), Device::start + 60, 0.05);
        double worst = 0, loudest = -200;
        for (double at = 1; at < 59; at += 0.25) {
            auto const [late, noise] = film.errorAt(Device::start + at);
            worst = std::max(worst, std::abs(late));
            if (at > 10) loudest = std::max(loudest, noise);
        }
        EXPECT_LT(worst, 0.001) << ppm << " ppm";
        EXPECT_LT(loudest, -40) << ppm << " ppm";
    }
}

TEST(ClockedSound, whatIsLostLeavesAGapOfItsLength) {
    for (double const lost : {0.096, 0.5, 3.0}) {
        Film film;
        ClockedSound sound([&](SoundBlock const& block) { film.take(block); });
        Device device(100);
        device.capture(sound, 12);
        device.lose(lost);
        device.capture(sound, 8);
        ASSERT_EQ(film.stretches.size(), 2u);
        EXPECT_NEAR(film.stretches[1].from - film.stretches[0].to(), lost, 0.003);
        for (double at = 14.5 + lost; at < 19 + lost; at += 0.25)
            EXPECT_LT(std::abs(film.errorAt(Device::start + at).first), 0.001) << lost << " at " << at;
    }
}

TEST(ClockedSound, aHoleIsSilentAndMovesNothing) {
    std::vector<StereoSample> made;
    double from = -1;
    ClockedSound sound([&](SoundBlock const& block) {
        if (from < 0) from = block.capturedAt;
        made.insert(made.end(), block.samples.begin(), block.samples.end());
    });
    for (std::int64_t sample = 0; sample < 4800; sample += 480) sound.noteTime(sample, 7 + sample / 48000.0);
    std::vector<StereoSample> const loud(2400, {0.5f, 0.5f});
    sound.append(loud);
    sound.appendHole(2400);
    sound.append(loud);
    auto const at = [&](double moment) {
        return made.at(static_cast<std::size_t>(std::llround((moment - from) * audioRate))).left;
    };
    EXPECT_NEAR(at(7.04), 0.5, 1e-3);
    EXPECT_NEAR(at(7.075), 0, 1e-3);
    EXPECT_NEAR(at(7.12), 0.5, 1e-3);
}

TEST(ClockedSound, nothingIsHandedOnUntilItsTimeIsKnownAndThenAllOfIt) {
    double from = -1;
    ClockedSound sound([&](SoundBlock const& block) { from = from < 0 ? block.capturedAt : from; });
    sound.append(std::vector<StereoSample>(4800));
    EXPECT_EQ(from, -1);
    for (int i = 0; i < 3; ++i) sound.noteTime(4800, 9.1);
    sound.append(std::vector<StereoSample>(480));
    EXPECT_NEAR(from, 9, 0.001);
}

TEST(FractionalSample, isTheToneBetweenItsSamples) {
    for (double const tone : {50.0, 1000.0, 8000.0, 15'000.0}) {
        std::vector<StereoSample> samples(200);
        auto const exact = [&](double place) { return std::sin(2 * std::numbers::pi * tone * place / audioRate); };
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i].left = static_cast<float>(exact(static_cast<double>(i)));
        double worst = 0;
        for (double place = fractionalReach; place < 200 - fractionalReach - 1; place += 0.0371)
            worst = std::max(worst, std::abs(fractionalSample(samples, place).left - exact(place)));
        EXPECT_LT(worst, 1e-3) << tone << " Hz";
    }
}

}
