#include <Tavaro/Studio/Timeline/FilmStills.h>
#include <Tavaro/Studio/Timeline/PeakFile.h>
#include <Tavaro/Studio/Timeline/SoundWaves.h>

#include <TavaroMedia/Errors/MediaError.h>

#include <Tests/Media/Audio/TestSounds.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <string>

#include <unistd.h>

using namespace tavaro;

namespace {

Sound loudAndQuiet(int samples, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> any(-1.2f, 1.2f);
    Sound sound;
    for (int i = 0; i < samples; ++i) {
        float const loud = (i / 1000) % 3 == 0 ? 1.0f : 0.1f;
        sound.push_back({any(random) * loud, any(random) * loud * 0.5f});
    }
    return sound;
}

/// The lowest and highest sample of a stretch, looked at one by one.
SoundPeak bruteForce(Sound const& sound, std::size_t from, std::size_t to) {
    if (from >= sound.size()) return {};
    float low = 2, high = -2;
    for (auto i = from; i < std::min(to, sound.size()); ++i) {
        low = std::min({low, sound[i].left, sound[i].right});
        high = std::max({high, sound[i].left, sound[i].right});
    }
    auto const stored = [](float v) {
        return static_cast<std::int16_t>(std::lround(std::clamp(v, -1.0f, 1.0f) * 32767));
    };
    return {stored(low), stored(high)};
}

PeakPyramid pyramidOf(Sound const& sound, std::size_t piece = 777) {
    PeakMeter meter;
    for (std::size_t i = 0; i < sound.size(); i += piece) {
        meter.feed(std::span(sound).subspan(i, std::min(piece, sound.size() - i)));
    }
    return PeakPyramid(meter.take());
}

struct Folder {
    Folder() { std::filesystem::remove_all(path); }
    ~Folder() { std::filesystem::remove_all(path); }
    std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("tavaro-peaks-" + std::to_string(::getpid()));
};

}

TEST(PeakPyramid, everyScaleIsWhatLookingAtEachSampleGives) {
    auto const sound = loudAndQuiet(300'000, 1);
    auto const pyramid = pyramidOf(sound);
    constexpr double base = 256.0 / audioRate;
    for (int const blocks : {1, 2, 3, 4, 5, 16, 17, 64, 200}) {
        // What begins and ends with a peak of the level that answers is exact.
        int level = 1;
        while (level * 4 <= blocks) level *= 4;
        if (blocks % level) continue;
        int const count = 300'000 / 256 / blocks + 2;
        auto const peaks = pyramid.peaks(0, blocks * base, count);
        ASSERT_EQ(peaks.size(), static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) {
            auto const from = static_cast<std::size_t>(i) * blocks * 256;
            ASSERT_EQ(peaks[i], bruteForce(sound, from, from + blocks * 256)) << blocks << " " << i;
        }
    }
}

TEST(PeakPyramid, anyStretchHoldsWhatIsInItAndLittleBeside) {
    auto const sound = loudAndQuiet(200'000, 2);
    auto const pyramid = pyramidOf(sound);
    std::mt19937 random(3);
    std::uniform_real_distribution<double> starts(-1, 5), lengths(0.0005, 0.7);
    for (int i = 0; i < 500; ++i) {
        double const start = starts(random), each = lengths(random);
        auto const peak = pyramid.peaks(start, each, 1)[0];
        auto const sampleAt = [](double t) {
            return static_cast<std::size_t>(std::max(0.0, std::round(t * audioRate)));
        };
        auto const inside =
            bruteForce(sound, sampleAt(start) + 1, std::max(sampleAt(start + each), sampleAt(start) + 2) - 1);
        double const slack = std::max(256.0 / audioRate, each);
        auto const around = bruteForce(sound, sampleAt(start - slack), sampleAt(start + each + slack));
        if (start + each <= 0 || start > 200'000.0 / audioRate) continue;
        ASSERT_LE(peak.low, inside.low) << i;
        ASSERT_GE(peak.high, inside.high) << i;
        ASSERT_GE(peak.low, around.low) << i;
        ASSERT_LE(peak.high, around.high) << i;
    }
    EXPECT_EQ(pyramid.peaks(-10, 1, 3), std::vector<SoundPeak>(3));
    EXPECT_EQ(pyramid.peaks(100, 1, 3), std::vector<SoundPeak>(3));
    EXPECT_EQ(pyramid.peaks(0, 0, 2), std::vector<SoundPeak>(2));
    EXPECT_EQ(PeakPyramid().peaks(0, 1, 2), std::vector<SoundPeak>(2));
}

TEST(PeakFolder, peaksAreMeasuredOnceAndAnewWhenTheSoundChanges) {
    Folder const folder;
    std::filesystem::create_directories(folder.path);
    auto const sound = folder.path / "voice.caf";
    writeSound(sound, tone(1.5, 300, 0.5));
    PeakFolder const kept(folder.path / "cache");
    int measured = 0;
    auto const proceed = [&] {
        ++measured;
        return true;
    };
    auto const first = kept.peaks(sound, proceed);
    ASSERT_TRUE(first);
    EXPECT_NEAR(first->seconds(), 1.5, 0.01);
    EXPECT_NEAR(first->peaks(0.2, 1, 1)[0].high, 0.5 * 32767, 300);
    EXPECT_GT(measured, 0);
    measured = 0;
    auto const again = kept.peaks(sound, proceed);
    EXPECT_EQ(measured, 0);
    EXPECT_TRUE(std::ranges::equal(first->base(), again->base()));
    writeSound(sound, tone(2, 300, 0.1));
    EXPECT_NEAR(kept.peaks(sound, proceed)->seconds(), 2, 0.01);
    EXPECT_GT(measured, 0);
    for (auto const& entry : std::filesystem::directory_iterator(folder.path / "cache")) {
        std::ofstream(entry.path(), std::ios::binary) << "damaged";
    }
    EXPECT_NEAR(kept.peaks(sound, proceed)->seconds(), 2, 0.01);
    writeSound(sound, tone(3, 300, 0.1));
    EXPECT_FALSE(kept.peaks(sound, [] { return false; }));
    EXPECT_THROW(kept.peaks(folder.path / "none.caf", proceed), MediaError);
    kept.prune(0);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path / "cache"));
}

TEST(WaveTile, aTileShowsItsPartOfTheSoundAsLoudAsItIs) {
    Sound sound(4 * audioRate);
    for (int i = audioRate; i < 2 * audioRate; ++i) sound[i] = {i % 2 ? 0.9f : -0.9f, 0};
    auto const pyramid = pyramidOf(sound);
    WaveTile tile{
        .asset = "a", .scale = WaveTile::scaleFor(0.01), .number = 0, .height = 40, .color = qRgb(10, 200, 100)};
    EXPECT_LE(tile.secondsPerPixel(), 0.01);
    EXPECT_GT(tile.secondsPerPixel(), 0.007);
    auto const picture = drawWave(pyramid, tile);
    auto const heightAt = [&](double seconds) {
        int const x = static_cast<int>(seconds / tile.secondsPerPixel());
        int covered = 0;
        for (int y = 0; y < 40; ++y) covered += qAlpha(picture.pixel(x, y)) > 128;
        return covered;
    };
    EXPECT_LE(heightAt(0.5), 2);
    EXPECT_GE(heightAt(1.5), 34);
    tile.number = 1;
    EXPECT_NEAR(tile.start(), 256 * tile.secondsPerPixel(), 1e-12);
}

TEST(FilmStill, momentsAreFewWhereTheyAreFarApart) {
    for (double const apart : {0.01, 0.3, 1.0, 7.0, 500.0}) {
        std::set<std::int64_t> moments;
        for (double t = 0; t < 1000; t += 0.37) {
            auto const moment = FilmStill::momentFor(t, apart);
            EXPECT_LE(static_cast<double>(moment) / FilmStill::momentsPerSecond, t);
            EXPECT_GE(static_cast<double>(moment) / FilmStill::momentsPerSecond, t - std::max(apart, 0.0625) - 1e-9);
            moments.insert(moment);
        }
        EXPECT_LE(static_cast<double>(moments.size()), 2 * 1000 / std::max(apart, 0.07) + 2);
    }
}
