#include "../../Media/Audio/TestSounds.h"

#include <TavaroCore/Editing/TimelineEdits.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Audio/Private/AudioMixer.h>
#include <TavaroRender/Audio/Private/MixRenderer.h>
#include <TavaroRender/Audio/Private/SignalDucking.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <fstream>
#include <limits>
#include <random>

#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

/// A project of some seconds, and a folder with its sounds.
class Mix : public testing::Test {
protected:
    Mix() {
        fs::create_directories(folder);
        show(10);
    }
    ~Mix() override { fs::remove_all(folder); }

    fs::path const folder = fs::path(testing::TempDir()) / ("tavaro-mix-" + std::to_string(getpid()));
    DemoProject project;

    void show(double seconds) { project.timeline.clips = {{.asset = "screen.mp4", .duration = seconds}}; }

    AudioTrack& track(AudioRole role, std::vector<AudioClip> clips) {
        project.audioTracks.push_back({.role = role, .clips = std::move(clips), .duckAmount = 0.7});
        return project.audioTracks.back();
    }

    MixRenderer renderer() const {
        auto plan = AudioMixer::build(project);
        std::vector<fs::path> files;
        for (auto const& source : plan.sources) files.push_back(folder / source.asset);
        resolveDucking(plan, files);
        return MixRenderer(std::move(plan), files);
    }

    /// The whole mix, asked for in pieces of odd sizes.
    Sound mixed() const {
        auto mix = renderer();
        Sound sound(static_cast<std::size_t>(mix.plan().length));
        for (std::size_t at = 0, size = 700; at < sound.size(); at += size, size = size * 5 % 9973 + 1) {
            size = std::min(size, sound.size() - at);
            mix.render(static_cast<std::int64_t>(at), std::span(sound).subspan(at, size));
        }
        return sound;
    }
};

/// `ticks` as a WAV file of one channel and 16 bits. The silence between them takes no room on the disk.
void writeTicks(fs::path const& file, double seconds, std::vector<std::int64_t> const& positions) {
    std::ofstream stream(file, std::ios::binary);
    auto const number = [&](std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) stream.put(static_cast<char>(value >> (8 * i)));
    };
    auto const dataBytes = static_cast<std::uint32_t>(seconds * audioRate) * 2;
    stream << "RIFF";
    number(36 + dataBytes, 4);
    stream << "WAVEfmt ";
    number(16, 4);
    number(1, 2); // whole numbers
    number(1, 2); // one channel
    number(audioRate, 4);
    number(audioRate * 2, 4);
    number(2, 2);
    number(16, 2);
    stream << "data";
    number(dataBytes, 4);
    auto const one = ticks(0.01, {240});
    for (auto const position : positions) {
        stream.seekp(44 + (position - 240) * 2);
        for (auto const& sample : one) number(static_cast<std::uint16_t>(std::lround(sample.left * 32767)), 2);
    }
    stream.close();
    fs::resize_file(file, 44 + std::uintmax_t{dataBytes});
}

std::span<StereoSample const> part(Sound const& sound, double from, double to) {
    auto const at = [](double seconds) { return static_cast<std::size_t>(std::llround(seconds * audioRate)); };
    return std::span(sound).subspan(at(from), at(to) - at(from));
}

constexpr double toneLevel = -9.03; // of `tone` at amplitude 0.5
constexpr double quietLevel = toneLevel - 6.02;

TEST_F(Mix, clipsSoundWhereTheyLieWithTheirGainsAndNothingElseDoes) {
    writeSound(folder / "a.caf", tone(10, 440));
    writeSound(folder / "b.caf", tone(10, 1000));
    track(AudioRole::microphone, {{.asset = "a.caf", .start = 1, .sourceStart = 2, .duration = 3, .gain = 0.5}}).gain =
        0.5;
    track(AudioRole::music, {{.asset = "b.caf", .start = 3, .duration = 2}});
    track(AudioRole::system, {{.asset = "a.caf", .start = 0, .duration = 10}}).isMuted = true;
    auto const sound = mixed();
    ASSERT_EQ(sound.size(), 480'000u);
    EXPECT_EQ(peak(part(sound, 0, 1)), 0);
    EXPECT_NEAR(level(part(sound, 1.1, 2.9)), toneLevel - 12.04, 0.05);
    EXPECT_NEAR(levelAt(part(sound, 3.1, 3.9), 1000), toneLevel, 0.05);
    EXPECT_NEAR(levelAt(part(sound, 3.1, 3.9), 440), toneLevel - 12.04, 0.05);
    EXPECT_EQ(peak(part(sound, 5, 10)), 0);
}

TEST_F(Mix, samplesKeepTheirPlacesOverAnHour) {
    constexpr double hour = 3600;
    show(hour);
    std::vector<std::int64_t> places;
    for (std::int64_t minute = 0; minute < 60; ++minute)
        places.push_back(minute * 60 * audioRate + 12'345 + minute * 7);
    writeTicks(folder / "hour.wav", hour, places);
    // Cut into pieces of odd lengths that lie end to end, as silence removal leaves them; every fourth second is gone.
    std::vector<AudioClip> clips;
    std::vector<double> wanted;
    double start = 0;
    std::mt19937 random(3);
    double source = 0;
    while (source < hour - 60) {
        double const length = 0.5 + static_cast<double>(random() % 100'000) / 1000;
        clips.push_back({.asset = "hour.wav", .start = start, .sourceStart = source, .duration = length});
        for (auto const place : places) {
            double const t = static_cast<double>(place) / audioRate;
            if (t > source + 0.01 && t < source + length - 0.01) wanted.push_back(start + t - source);
        }
        start += length;
        source += length + (random() % 4 == 0 ? 1.25 : 0);
    }
    track(AudioRole::microphone, clips);
    project.intro = TitleCard{.text = "Hello", .duration = 2.5};
    auto mix = renderer();
    ASSERT_GT(wanted.size(), 40u);
    Sound around(4'800);
    for (auto const at : wanted) {
        auto const sample = std::llround((at + 2.5) * audioRate);
        mix.render(sample - 2'400, around);
        auto const found = peaks(around, 0.5);
        ASSERT_EQ(found.size(), 1u) << at << " s, seed 3";
        EXPECT_NEAR(found[0], 2'400, 1) << at << " s";
    }
}

TEST_F(Mix, noCutClicksAndClipsThatContinueEachOtherPlayThroughUntouched) {
    writeSound(folder / "a.caf", tone(10, 97, 0.5)); // half its turn away, a hard cut would step by a full crest
    auto const steepness = steepest(tone(1, 97, 0.5));
    track(AudioRole::microphone, {{.asset = "a.caf", .start = 0.5, .sourceStart = 0.5, .duration = 1.5},
                                  {.asset = "a.caf", .start = 2, .sourceStart = 2, .duration = 1},
                                  {.asset = "a.caf", .start = 3, .sourceStart = 7.0051, .duration = 1},
                                  {.asset = "a.caf", .start = 4, .sourceStart = 8.0051, .duration = 1, .gain = 0.3},
                                  {.asset = "a.caf", .start = 6, .sourceStart = 1.0026, .duration = 1}});
    auto const sound = mixed();
    EXPECT_LT(steepest(sound), steepness + 0.5 * 2 / 288 + 0.002);
    auto const original = tone(10, 97, 0.5);
    EXPECT_TRUE(std::ranges::equal(part(sound, 0.6, 2.9), part(original, 0.6, 2.9))) << "across the joint at 2 s";
    EXPECT_GT(level(part(sound, 2.98, 3.02)), toneLevel - 6) << "no hole at the cut";
    EXPECT_EQ(peak(part(sound, 5.01, 5.99)), 0);
}

TEST_F(Mix, fadesRunOverTheTimeTheyWereGiven) {
    writeSound(folder / "a.caf", tone(10, 1000));
    track(AudioRole::music, {{.asset = "a.caf", .start = 1, .duration = 6, .fadeIn = 2, .fadeOut = 3}});
    auto const sound = mixed();
    EXPECT_LT(level(part(sound, 1, 1.1)), toneLevel - 35);
    EXPECT_NEAR(level(part(sound, 1.98, 2.02)), toneLevel - 6.02, 0.3) << "half way";
    EXPECT_NEAR(level(part(sound, 3, 4)), toneLevel, 0.05);
    EXPECT_NEAR(level(part(sound, 5.48, 5.52)), toneLevel - 6.02, 0.3);
    EXPECT_LT(level(part(sound, 6.9, 7)), toneLevel - 35);
    // Both longer than the clip: they share it.
    project.audioTracks[0].clips[0].fadeIn = project.audioTracks[0].clips[0].fadeOut = 50;
    EXPECT_NEAR(level(part(mixed(), 3.99, 4.01)), toneLevel, 0.1);
}

TEST_F(Mix, anotherSpeedKeepsPitchAndPlace) {
    writeSound(folder / "song.caf", tone(20, 440));
    auto& music = track(AudioRole::music, {{.asset = "song.caf", .start = 1, .duration = 6, .speed = 1.5}});
    auto sound = mixed();
    EXPECT_NEAR(levelAt(part(sound, 2, 2.25), 440), toneLevel, 1);
    EXPECT_NEAR(level(part(sound, 2, 6)), toneLevel, 0.3);
    EXPECT_EQ(peak(part(sound, 0, 0.99)), 0);
    EXPECT_NEAR(level(part(sound, 1.05, 1.25)), toneLevel, 1);
    EXPECT_EQ(peak(part(sound, 7, 10)), 0);
    // A note that begins in the middle begins where the speed brings it.
    Sound late(audioRate * 6);
    auto const note = sum(late, tone(6, 440));
    auto delayed = Sound(audioRate * 6);
    delayed.insert(delayed.end(), note.begin(), note.end());
    writeSound(folder / "late.caf", delayed);
    for (double const speed : {0.75, 1.5, 2.0}) {
        music.clips = {{.asset = "late.caf", .start = 1, .duration = 8.5, .speed = speed}};
        sound = mixed();
        auto const begins = 1 + 6 / speed;
        std::size_t first = 0;
        while (first < sound.size() && std::abs(sound[first].left) < 0.25) ++first;
        EXPECT_NEAR(static_cast<double>(first) / audioRate, begins, 0.001) << speed;
    }
}

TEST_F(Mix, manyShortSpansOfManySpeedsNeitherDriftNorClick) {
    constexpr double seconds = 900;
    std::vector<std::int64_t> places;
    for (std::int64_t second = 1; second < seconds; ++second) places.push_back(second * audioRate + second % 997 * 31);
    writeTicks(folder / "ticks.wav", seconds, places);
    writeSound(folder / "tone.caf", tone(30, 97, 0.5));
    std::vector<AudioClip> clips;
    std::vector<AudioClip> sung;
    std::vector<double> wanted;
    std::mt19937 random(9);
    double start = 0;
    std::size_t tick = 0;
    for (double source = 0; source < seconds - 1;) {
        double const speed = std::array{1.0, 2.0, 4.0, 0.5, 1.25, 8.0}.at(random() % 6);
        double const length = std::min(0.3 + static_cast<double>(random() % 3000) / 1000, seconds - 1 - source);
        clips.push_back(
            {.asset = "ticks.wav", .start = start, .sourceStart = source, .duration = length / speed, .speed = speed});
        if (source < 29) {
            sung.push_back(clips.back());
            sung.back().asset = "tone.caf";
        }
        for (; static_cast<double>(places[tick]) / audioRate < source + length - 0.02; ++tick) {
            double const t = static_cast<double>(places[tick]) / audioRate;
            if (t > source + 0.02) wanted.push_back(start + (t - source) / speed);
        }
        start += length / speed;
        source += length;
    }
    show(start);
    track(AudioRole::system, clips);
    auto const sound = mixed();
    ASSERT_GT(wanted.size(), 500u);
    for (auto const t : wanted) {
        auto const found = peaks(part(sound, t - 0.01, t + 0.01), 0.4);
        ASSERT_EQ(found.size(), 1u) << t << " s, seed 9";
        EXPECT_NEAR(found[0], 480, 48) << t << " s, seed 9";
    }
    project.audioTracks[0].clips = sung;
    EXPECT_LT(steepest(mixed()), 1.6 * steepest(tone(1, 97, 0.5)) + 0.5 * 2 / 288 + 0.002);
}

TEST_F(Mix, recordedSoundIsSilentUnderMutedClipsAndMusicIsNot) {
    writeSound(folder / "a.caf", tone(10, 440, 0.25));
    writeSound(folder / "b.caf", tone(10, 1000, 0.25));
    project.timeline.clips = {{.asset = "screen.mp4", .start = 0, .duration = 4},
                              {.asset = "screen.mp4", .start = 4, .sourceStart = 4, .duration = 2, .isMuted = true},
                              {.asset = "screen.mp4", .start = 6, .sourceStart = 6, .duration = 4}};
    track(AudioRole::system, {{.asset = "a.caf", .duration = 10}});
    track(AudioRole::music, {{.asset = "b.caf", .duration = 10}});
    auto const sound = mixed();
    EXPECT_NEAR(levelAt(part(sound, 3, 3.99), 440), quietLevel, 0.1);
    EXPECT_LT(levelAt(part(sound, 4.1, 5.9), 440), -90);
    EXPECT_NEAR(levelAt(part(sound, 6.01, 7), 440), quietLevel, 0.1);
    EXPECT_NEAR(levelAt(part(sound, 4.1, 5.9), 1000), quietLevel, 0.1);
    EXPECT_LT(steepest(part(sound, 3.99, 6.01)), steepest(sum(tone(1, 440, 0.25), tone(1, 1000, 0.25))) + 0.01);
}

TEST_F(Mix, voiceOverLowersTheOthersBeforeItSpeaksAndLetsThemRiseSlowly) {
    writeSound(folder / "song.caf", tone(10, 440));
    writeSound(folder / "line.caf", tone(2, 2000, 0.25));
    project.voiceover = VoiceoverPlan{.ducksOtherAudio = true, .duckAmount = 0.6};
    project.voiceover->segments = {{.text = "Hello", .audioAsset = "line.caf", .audioDuration = 2.0, .start = 4}};
    track(AudioRole::system, {{.asset = "song.caf", .duration = 10}});
    auto sound = mixed();
    auto const song = [&](double from, double to) { return levelAt(part(sound, from, to), 440) - toneLevel; };
    EXPECT_NEAR(song(2.8, 3.84), 0, 0.1);
    EXPECT_NEAR(song(4, 6), 20 * std::log10(0.4), 0.1);
    EXPECT_LT(song(6.1, 6.2), -1);
    EXPECT_NEAR(song(6.41, 7.4), 0, 0.1);
    EXPECT_NEAR(levelAt(part(sound, 4.2, 5.8), 2000), -15.05, 0.1) << "it is heard itself, once, and not lowered";
    EXPECT_LT(steepest(sound), steepest(sum(tone(1, 440), tone(1, 2000, 0.25))) + 0.01);

    project.audioTracks[0].role = AudioRole::music;
    sound = mixed();
    EXPECT_NEAR(song(4, 6), 20 * std::log10(0.3), 0.1) << "music goes 0.1 deeper";
    project.voiceover->duckAmount = 0.85;
    EXPECT_DOUBLE_EQ(duckAmount(project, project.audioTracks[0]), 0.9);
    project.voiceover->ducksOtherAudio = false;
    sound = mixed();
    EXPECT_NEAR(song(4, 6), 0, 0.1);

    // The same line on a track of its own is not spoken twice.
    track(AudioRole::voiceover, {{.asset = "line.caf", .start = 4, .duration = 2}});
    sound = mixed();
    EXPECT_NEAR(levelAt(part(sound, 4.2, 5.8), 2000), -15.05, 0.1);
}

TEST_F(Mix, aLineWhosePictureWasSpedUpIsSaidWholeInItsTimeAtItsOwnPitch) {
    writeSound(folder / "line.caf", sum(ticks(4, {48'000, 144'000}), tone(4, 440, 0.1)));
    project.assetDurations["line.caf"] = 4;
    project.voiceover = VoiceoverPlan();
    auto& lines = project.voiceover->segments;
    lines = {{.text = "Hello", .audioAsset = "line.caf", .audioDuration = 4.0, .start = 2, .isDirty = false}};
    timeWarp(project, {2, 4}, 0.5, 2);
    auto sound = mixed();
    EXPECT_NEAR(pitch(part(sound, 2.1, 2.4)), 440, 4);
    EXPECT_EQ(peak(part(sound, 4.01, 10)), 0);
    auto const found = peaks(sound, 0.4);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_NEAR(static_cast<double>(found[0]), 2.5 * audioRate, 500);
    EXPECT_NEAR(static_cast<double>(found[1]), 3.5 * audioRate, 500);

    lines[0].isDirty = true; // cut inside: what is left has no other pace
    sound = mixed();
    EXPECT_NEAR(static_cast<double>(peaks(sound, 0.4).at(0)), 3.0 * audioRate, 500);
}

TEST_F(Mix, aTrackGivesWayToTheSoundOfTheRoleItNames) {
    writeSound(folder / "song.caf", tone(10, 440, 0.1));
    writeSound(folder / "talk.caf", sum(Sound(10 * audioRate), noise(10, 0.0005)));
    auto talk = noise(10, 0.0005);
    for (std::size_t n = 3 * audioRate; n < 5 * audioRate; ++n)
        talk[n].left = talk[n].right = 0.2f * std::sin(n * 0.1f);
    writeSound(folder / "talk.caf", talk);
    track(AudioRole::music, {{.asset = "song.caf", .duration = 10}}).duckedBy = AudioRole::microphone;
    track(AudioRole::microphone, {{.asset = "talk.caf", .duration = 10}});
    auto const sound = mixed();
    auto const song = [&](double from, double to) { return levelAt(part(sound, from, to), 440) + 23.01; };
    EXPECT_NEAR(song(1, 2.8), 0, 0.1);
    EXPECT_NEAR(song(3, 5), 20 * std::log10(0.3), 0.2);
    EXPECT_NEAR(song(5.5, 9), 0, 0.1);
}

TEST_F(Mix, theIntroMovesAllSoundAndOnlyMusicGoesOnUnderTheOutro) {
    project.intro = TitleCard{.text = "Hello", .duration = 1.5};
    project.outro = TitleCard{.text = "Bye", .duration = 2};
    writeSound(folder / "a.caf", tone(30, 440, 0.25));
    writeSound(folder / "b.caf", tone(30, 1000, 0.25));
    track(AudioRole::microphone, {{.asset = "a.caf", .duration = 30}});
    track(AudioRole::music, {{.asset = "b.caf", .duration = 30}});
    auto const sound = mixed();
    ASSERT_EQ(sound.size(), static_cast<std::size_t>(13.5 * audioRate));
    EXPECT_EQ(peak(part(sound, 0, 1.5)), 0);
    EXPECT_NEAR(levelAt(part(sound, 1.6, 11.4), 440), quietLevel, 0.1);
    EXPECT_LT(levelAt(part(sound, 11.5, 13.2), 440), -90);
    EXPECT_NEAR(levelAt(part(sound, 11.6, 13.2), 1000), quietLevel, 0.1);
    EXPECT_LT(level(part(sound, 13.49, 13.5)), quietLevel - 30) << "and fades out at the end";
}

TEST_F(Mix, aLoudMixIsHeldBelowFullScale) {
    writeSound(folder / "a.caf", tone(10, 440, 0.9));
    for (int i = 0; i < 3; ++i) track(AudioRole::music, {{.asset = "a.caf", .duration = 10}}).gain = 2;
    auto const sound = mixed();
    EXPECT_LE(peak(sound), 0.8913);
    EXPECT_GT(peak(part(sound, 1, 9)), 0.85);
}

TEST_F(Mix, anyPieceOfTheMixIsTheSameAskedForAlone) {
    writeSound(folder / "a.caf", sum(syllables(10, 0.2), noise(10, 0.1)));
    writeSound(folder / "b.caf", noise(10, 0.15, 5));
    project.cursor.clickSound = true;
    project.metadata.edit().clicks = {{.t = 2}, {.t = 5.01}, {.t = 7.7}};
    track(AudioRole::microphone, {{.asset = "a.caf", .duration = 4},
                                  {.asset = "a.caf", .start = 4, .sourceStart = 4.7, .duration = 4, .gain = 0.8}});
    track(AudioRole::music,
          {{.asset = "b.caf", .start = 1, .duration = 7, .fadeIn = 1}, {.asset = "b.caf", .start = 3, .duration = 1}});
    auto const whole = mixed();
    ASSERT_LT(peak(whole), 0.85) << "the limiter is at rest";
    auto mix = renderer();
    std::mt19937 random(11);
    for (int turn = 0; turn < 40; ++turn) {
        auto const at = random() % 450'000;
        Sound piece(1 + random() % 20'000);
        mix.render(static_cast<std::int64_t>(at), piece);
        double difference = 0;
        for (std::size_t n = 0; n < piece.size(); ++n)
            difference = std::max(difference, std::abs(double{piece[n].left} - whole[at + n].left));
        ASSERT_LT(difference, 1e-6) << "at " << at << ", seed 11";
    }
}

TEST_F(Mix, whatIsNeverHeardAndWhatIsNoNumberIsLeftOut) {
    auto const nan = std::numeric_limits<double>::quiet_NaN();
    auto const infinite = std::numeric_limits<double>::infinity();
    track(AudioRole::music, {{.asset = "gone.caf", .start = nan, .duration = 1},
                             {.asset = "gone.caf", .start = 0, .duration = infinite},
                             {.asset = "gone.caf", .start = 0, .duration = -1},
                             {.asset = "gone.caf", .start = 0, .duration = 1, .gain = 0},
                             {.asset = "gone.caf", .start = 0, .duration = 1, .gain = nan},
                             {.asset = "gone.caf", .start = 0, .duration = 1, .speed = 0},
                             {.asset = "gone.caf", .start = 0, .duration = 1, .speed = -2},
                             {.asset = "gone.caf", .start = 11, .duration = 1},
                             {.asset = "gone.caf", .start = -3, .duration = 2},
                             {.asset = "", .start = 0, .duration = 2}});
    track(AudioRole::system, {{.asset = "gone.caf", .duration = 1}}).gain = nan;
    EXPECT_TRUE(AudioMixer::build(project).isSilent());
    show(0);
    EXPECT_EQ(AudioMixer::build(project).length, 0);
}

}

}
