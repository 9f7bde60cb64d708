#include "TestSounds.h"

#include <TavaroMedia/Audio/SoundLevels.h>

#include <gtest/gtest.h>

using namespace tavaro;

TEST(SoundLevels, areThoseOfTheLoudestMomentOfEachEntry) {
    auto const file = std::filesystem::path(testing::TempDir()) / "tavaro-sound-levels.caf";
    auto sound = Sound(audioRate);
    for (auto& sample : std::span(sound).subspan(audioRate / 2, audioRate / 50)) sample = {0, 0.5f}; // 20 ms
    writeSound(file, sound);
    EXPECT_EQ(soundLevels(file, {.start = -1, .seconds = 3, .entries = 6}), (std::vector<float>{0, 0, 0, 0.5f, 0, 0}));
    EXPECT_EQ(soundLevels(file, {.seconds = 1, .entries = 3}), (std::vector<float>{0, 0.5f, 0}));
    EXPECT_EQ(soundLevels(file, {.seconds = 0.01, .entries = 2}), (std::vector<float>{0, 0}));
    EXPECT_TRUE(soundLevels(file, {}).empty());
    std::filesystem::remove(file);
}
