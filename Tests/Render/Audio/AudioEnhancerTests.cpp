#include "../../Media/Audio/TestSounds.h"
#include "../../Media/Files/FullDisk.h"

#include <TavaroMedia/Audio/AudioFileWriter.h>
#include <TavaroMedia/Audio/LoudnessMeter.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroRender/Audio/Private/AudioEnhancer.h>

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>

#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

class Enhancer : public testing::Test {
protected:
    Enhancer() { fs::create_directories(folder); }
    ~Enhancer() override { fs::remove_all(folder); }

    fs::path const folder = fs::path(testing::TempDir()) / ("tavaro-enhancer-" + std::to_string(getpid()));
    AudioEnhancer const enhancer{folder / "cache"};
    static constexpr EnhancementSettings everything{true, 0.6, true, true};

    Sound enhanced(Sound const& sound, EnhancementSettings const& settings, int channels = 2) {
        auto const file = folder / ("in" + std::to_string(++number) + ".caf");
        writeSound(file, sound, channels);
        return soundOf(*enhancer.enhanced(file, settings));
    }
    int number = 0;
};

std::span<StereoSample const> part(Sound const& sound, double from, double to) {
    auto const at = [](double seconds) { return static_cast<std::size_t>(seconds * audioRate); };
    return std::span(sound).subspan(at(from), at(to) - at(from));
}

LoudnessMeter measured(Sound const& sound) {
    LoudnessMeter meter(LoudnessMeter::Peaks::measured);
    meter.add(sound);
    return meter;
}

/// Both sides differ, so that nothing can be taken for one channel.
Sound widened(Sound sound) {
    for (auto& sample : sound) sample.right *= 0.8f;
    return sound;
}

TEST_F(Enhancer, everySettingKeepsEachSampleInItsPlace) {
    auto const speech = sum(syllables(8, 0.3), noise(8, 0.004));
    for (auto const& settings :
         {EnhancementSettings{true, 0.6, false, false}, {false, 0, true, false}, {false, 0, false, true}, everything}) {
        for (auto const& sound : {speech, widened(speech)}) {
            auto const out = enhanced(sound, settings);
            ASSERT_EQ(out.size(), sound.size());
            EXPECT_NEAR(delay(part(sound, 2.6, 4.2), part(out, 2.6, 4.2), 600), 0, 12)
                << settings.noiseReduction << settings.voiceClarity << settings.normalize;
        }
    }
}

TEST_F(Enhancer, everyVoiceComesToTheSameLoudnessBelowTheSamePeak) {
    auto quiet = syllables(10, 0.02);
    auto loud = sum(syllables(10, 0.9), noise(10, 0.002));
    auto peaky = syllables(10, 0.05); // a knock on the table
    for (std::size_t n = 240'000; n < 240'060; ++n) peaky[n].left = peaky[n].right = n % 2 ? 0.9f : -0.9f;
    for (auto const& settings : {EnhancementSettings{false, 0, false, true}, everything}) {
        for (auto const& sound : {quiet, loud, peaky, widened(loud)}) {
            auto const meter = measured(enhanced(sound, settings));
            EXPECT_NEAR(*meter.integrated(), -16, 0.5);
            EXPECT_LE(*meter.truePeak(), -1.5);
        }
    }
}

TEST_F(Enhancer, noiseFallsByStrengthAndClarityTakesTheRumbleNotTheVoice) {
    auto const noisy = sum(syllables(10, 0.3), noise(10, 0.008));
    auto const breath = level(part(noisy, 6.9, 7.4));
    auto const half = level(part(enhanced(noisy, {true, 0.3, false, false}), 6.9, 7.4));
    auto const full = level(part(enhanced(noisy, {true, 1, false, false}), 6.9, 7.4));
    EXPECT_LT(half, breath - 3);
    EXPECT_LT(full, half - 5);
    auto const rumbling = sum(sum(syllables(10, 0.3), tone(10, 30, 0.2)), tone(10, 1500, 0.02));
    auto const clear = enhanced(rumbling, {false, 0, true, false});
    auto const heard = [](Sound const& sound) { return levelAt(part(sound, 6.9, 7.4), 1500); };
    EXPECT_GE(heard(clear), heard(rumbling) - 1);
    EXPECT_GT(heard(clear) - levelAt(part(clear, 1, 9), 30), heard(rumbling) - levelAt(part(rumbling, 1, 9), 30) + 12);
}

TEST_F(Enhancer, silenceAndTheShortestSoundsStayWhatTheyAre) {
    for (double const seconds : {0.001, 0.1, 0.39, 3.0}) {
        auto const out = enhanced(Sound(static_cast<std::size_t>(seconds * audioRate)), everything);
        EXPECT_EQ(out.size(), static_cast<std::size_t>(seconds * audioRate));
        EXPECT_LT(peak(out), 1e-3) << seconds;
    }
    EXPECT_EQ(enhanced(tone(0.2, 440), everything).size(), 9'600u);
}

TEST_F(Enhancer, aFileAndItsSettingsAreEnhancedOnceAndAnythingElseAnew) {
    auto const file = folder / "voice.caf";
    writeSound(file, syllables(2));
    auto const first = *enhancer.enhanced(file, everything);
    auto const made = fs::last_write_time(first);
    bool isWorking = false;
    auto const watch = [&](double) { return isWorking = true; };
    EXPECT_EQ(enhancer.enhanced(file, everything, watch), first);
    EXPECT_FALSE(isWorking) << "it lay in the cache";
    EXPECT_GE(fs::last_write_time(first), made) << "and counts as used";
    EXPECT_NE(enhancer.cachedFile(file, {true, 0.5, true, true}), first);
    EXPECT_NE(enhancer.cachedFile(file, {false, 0, true, true}), first);
    fs::last_write_time(file, fs::last_write_time(file) + std::chrono::seconds(2));
    EXPECT_NE(enhancer.cachedFile(file, everything), first);
    EXPECT_EQ(enhancer.enhanced(file, {}), file) << "nothing to do";
}

TEST_F(Enhancer, aDamagedFileInTheCacheIsMadeAnew) {
    auto const file = folder / "voice.caf";
    writeSound(file, syllables(2));
    auto const kept = *enhancer.enhanced(file, everything);
    auto const bytesOf = [](fs::path const& path) {
        std::ifstream in(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    };
    auto const whole = bytesOf(kept);
    for (std::size_t const length : {std::size_t{0}, std::size_t{10}, whole.size() / 2}) {
        fs::resize_file(kept, length);
        EXPECT_EQ(enhancer.enhanced(file, everything), kept);
        EXPECT_EQ(bytesOf(kept), whole) << length;
    }
    std::ofstream(kept) << "this is no sound";
    enhancer.enhanced(file, everything);
    EXPECT_EQ(bytesOf(kept), whole);
}

TEST_F(Enhancer, stoppedOrFailingItLeavesNothingBehind) {
    auto const file = folder / "voice.caf";
    writeSound(file, widened(sum(syllables(6), noise(6, 0.01))));
    for (double const last : {0.1, 0.7, 0.85}) {
        EXPECT_FALSE(enhancer.enhanced(file, everything, [&](double done) { return done < last; }));
        EXPECT_EQ(filesIn(folder / "cache"), 0) << last;
    }
    {
        FullDisk const full(300'000);
        EXPECT_THROW(enhancer.enhanced(file, everything), MediaError);
    }
    EXPECT_THROW(enhancer.enhanced(folder / "gone.caf", everything), MediaError);
    EXPECT_EQ(filesIn(folder / "cache"), 0);
}

TEST_F(Enhancer, theCacheForgetsWhatWasUnusedForLongest) {
    fs::create_directories(folder / "cache");
    auto const now = fs::file_time_type::clock::now();
    for (int days = 0; days < 6; ++days) {
        auto const file = folder / "cache" / (std::to_string(days) + ".caf");
        std::ofstream(file) << std::string(1000, 'x');
        fs::last_write_time(file, now - std::chrono::hours(24 * days));
    }
    enhancer.prune(3500);
    EXPECT_EQ(filesIn(folder / "cache"), 3);
    EXPECT_FALSE(fs::exists(folder / "cache/3.caf"));
    enhancer.prune(0);
    EXPECT_EQ(filesIn(folder / "cache"), 1) << "what was used today may be in use";
}

}

}
