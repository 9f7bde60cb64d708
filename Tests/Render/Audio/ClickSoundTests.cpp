#include "../../Media/Audio/TestSounds.h"

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Audio/Private/AudioMixer.h>
#include <TavaroRender/Audio/Private/ClickSound.h>

#include <gtest/gtest.h>

#include <cmath>

#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

TEST(ClickSounds, clicksSoundWhereverTheEditShowsThemAndNotTooClose) {
    DemoProject project;
    project.cursor.clickSound = true;
    project.intro = TitleCard{.text = "Hello", .duration = 1};
    // [0, 2) and [5, 8) of the recording, the second twice as fast.
    project.timeline.clips = {{.asset = "s", .start = 0, .sourceStart = 0, .duration = 2},
                              {.asset = "s", .start = 2, .sourceStart = 5, .duration = 1.5, .speed = 2}};
    project.metadata.edit().clicks = {{.t = 7}, {.t = 1}, {.t = 1.05}, {.t = 1.09}, {.t = 3}, {.t = 5.5}, {.t = 5.6}};
    auto const times = clickTimes(project);
    ASSERT_EQ(times.size(), 4u); // 1.05 is too close to 1; 1.09 is not; 3 is cut; 5.6 lies 0.05 behind 5.5
    double const wanted[] = {2, 2.09, 3.25, 4};
    for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(times[i], wanted[i], 1e-9);
    project.timeline.clips.push_back({.asset = "s", .start = 3.5, .sourceStart = 0.5, .duration = 0.54});
    project.timeline.clips.push_back({.asset = "other", .start = 4.04, .sourceStart = 0.5, .duration = 1});
    ASSERT_EQ(clickTimes(project).size(), 5u) << "what two clips show is heard twice, but not over another movie";
    EXPECT_NEAR(clickTimes(project)[4], 5, 1e-9);
    project.cursor.clickSound = false;
    EXPECT_TRUE(clickTimes(project).empty());
}

TEST(ClickSounds, theSoundHasItsLengthPeakAndPitches) {
    auto const& samples = ClickSound::samples();
    ASSERT_EQ(samples.size(), 3'360u);
    float peak = 0;
    Sound sound;
    for (auto const value : samples) {
        peak = std::max(peak, std::abs(value));
        sound.push_back({value, value});
    }
    EXPECT_FLOAT_EQ(peak, 0.6f);
    EXPECT_EQ(samples[0], 0);
    EXPECT_GT(levelAt(sound, 3100), levelAt(sound, 1200) + 6);
    EXPECT_LT(level(std::span(sound).subspan(2'880)), -60) << "it has died away";
    auto const folder = fs::path(testing::TempDir()) / ("tavaro-click-" + std::to_string(getpid()));
    auto const file = ClickSound::ensureFile(folder);
    EXPECT_EQ(file.filename(), "click-sound-v1.caf");
    EXPECT_EQ(soundOf(file), sound);
    auto const written = fs::last_write_time(file);
    EXPECT_EQ(fs::last_write_time(ClickSound::ensureFile(folder)), written) << "written once";
    fs::remove_all(folder);
}

}

}
