#include "FakeOutput.h"

#include "../../Capture/TestDisplay.h"
#include "../../Media/Audio/TestSounds.h"
#include "../../Render/Export/TestTake.h"

#include <Tavaro/Studio/Playback/FilmPlayback.h>

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <cmath>

namespace tavaro {

namespace {

constexpr double filmSeconds = 3;
constexpr float slope = 0.25f; // of the sound, a second: it tells where the film is

Sound ramp() {
    Sound sound(static_cast<std::size_t>(filmSeconds * audioRate));
    for (std::size_t i = 0; i < sound.size(); ++i) {
        auto const value = slope * static_cast<float>(i) / audioRate;
        sound[i] = {value, value};
    }
    return sound;
}

/// A film of three seconds, played on a device of the test's.
class FilmPlaybackTest : public testing::Test {
protected:
    FilmPlaybackTest() {
        writeSound(take.package.assetURL("ramp.caf"), ramp());
        take.project.audioTracks = {
            {.role = AudioRole::music, .clips = {{.asset = "ramp.caf", .duration = filmSeconds}}}};
        playback.show(take.project);
    }

    /// Output seconds that are heard now.
    double heard() const { return device->heard() / slope; }
    static bool comesTrue(std::function<bool()> const& isSo) {
        return eventually([&] {
            QCoreApplication::processEvents();
            return isSo();
        });
    }
    /// Does what makes the device begin, and waits until it plays.
    void begin(std::function<void()> const& order) {
        int const before = device->timesOpened();
        order();
        ASSERT_TRUE(comesTrue([&] { return device->timesOpened() > before && device->isFed(); }));
    }
    void play() {
        begin([&] { playback.play(); });
    }

    TestTake take{"playback"};
    std::shared_ptr<FakeDevice> device = std::make_shared<FakeDevice>();
    FilmPlayback playback{take.package, {std::make_unique<FakeOutput>(device), [this] { return device->time(); }}};
};

}

TEST_F(FilmPlaybackTest, whatIsHeardIsWhereTheFilmIsAtEverySpeed) {
    for (double const speed : {1.0, 0.5, 1.5, 2.0}) {
        SCOPED_TRACE(speed);
        playback.setSpeed(speed);
        playback.seek(0.5);
        play();
        device->turn(0.1);
        double const before = playback.position();
        device->turn(0.4);
        EXPECT_NEAR(playback.position() - before, 0.4 * speed, 0.03);
        EXPECT_NEAR(heard(), playback.position(), 0.03);
        playback.pause();
        double const paused = playback.position();
        device->turn(0.2);
        EXPECT_EQ(playback.position(), paused);
        EXPECT_TRUE(comesTrue([&] { return device->heard() == 0; })) << "sound goes on in a pause";
    }
}

TEST_F(FilmPlaybackTest, aFilmThatPlaysGoesOnWhereItIsSoughtAndStopsAtItsEnd) {
    play();
    device->turn(0.3);
    begin([&] {
        playback.seek(2.6);
        EXPECT_EQ(playback.position(), 2.6);
    });
    device->turn(0.2);
    EXPECT_NEAR(playback.position(), 2.8, 0.05);
    EXPECT_NEAR(heard(), playback.position(), 0.03);
    device->turn(0.6);
    EXPECT_TRUE(comesTrue([&] { return !playback.isPlaying(); }));
    EXPECT_NEAR(playback.position(), filmSeconds, 1e-6);
    playback.play();
    EXPECT_EQ(playback.position(), 0) << "at the end it begins anew";
}

TEST_F(FilmPlaybackTest, aSelectionPlaysOverAndOver) {
    begin([&] { playback.loop(1, 1.5); });
    for (int i = 0; i < 12; ++i) {
        device->turn(0.1);
        EXPECT_GE(playback.position(), 1 - 1e-6);
        EXPECT_LE(playback.position(), 1.5 + 1e-6);
        bool const isAtSeam = std::abs(playback.position() - 1) < 0.04 || playback.position() > 1.46;
        if (!isAtSeam && heard() > 0) EXPECT_NEAR(heard(), playback.position(), 0.03);
    }
    EXPECT_TRUE(playback.isPlaying());
    EXPECT_EQ(device->timesOpened(), 1) << "a lap is no new beginning";
}

TEST_F(FilmPlaybackTest, whatIsToRepeatDoesSoFromEveryPlayUntilItIsTakenBack) {
    playback.repeat(TimeRange{1, 0.5});
    EXPECT_FALSE(playback.isPlaying());
    for (int round = 0; round < 2; ++round) {
        play(); // from its start, and the second time from where it was paused
        device->turn(0.7);
        EXPECT_GE(playback.position(), 1 - 1e-6);
        EXPECT_LE(playback.position(), 1.5 + 1e-6);
        playback.pause();
    }
    begin([&] { playback.play(); });
    begin([&] { playback.repeat(TimeRange{}); });
    begin([&] { playback.seek(2.8); });
    device->turn(0.5);
    EXPECT_TRUE(playback.isPlaying()) << "all of it repeats";
    EXPECT_LT(playback.position(), 1);
    begin([&] { playback.repeat(std::nullopt); });
    begin([&] { playback.seek(2.8); });
    device->turn(0.5);
    EXPECT_TRUE(comesTrue([&] { return !playback.isPlaying(); }));
}

TEST_F(FilmPlaybackTest, theVolumeHereIsNotTheFilms) {
    playback.setVolume(0.5);
    playback.seek(1);
    play();
    device->turn(0.6);
    EXPECT_NEAR(heard(), playback.position() / 2, 0.03);
    playback.setMuted(true);
    device->turn(0.6); // what was written before is heard first
    EXPECT_EQ(device->heard(), 0);
    playback.setMuted(false);
    device->turn(0.5);
    EXPECT_NEAR(heard(), playback.position() / 2, 0.03);
    EXPECT_EQ(playback.volume(), 0.5);
}

TEST_F(FilmPlaybackTest, aFilmThatIsScrubbedIsHeardWhereItIsAndStaysThere) {
    auto const hears = [&](double at) {
        return comesTrue([&] {
            device->pass(0.01);
            return std::abs(heard() - at) < 0.07 && heard() > 0.1;
        });
    };
    playback.scrub(1);
    EXPECT_TRUE(hears(1));
    playback.scrub(2.5);
    EXPECT_TRUE(hears(2.5));
    EXPECT_EQ(playback.position(), 2.5);
    EXPECT_EQ(device->timesOpened(), 1) << "it stays open meanwhile";
    EXPECT_FALSE(playback.clock().isRunning());
    device->pass(5);
    EXPECT_TRUE(comesTrue([&] { return device->heard() == 0 && !device->isOpen(); })) << "and no longer";
    playback.setScrubsAloud(false);
    playback.scrub(1);
    EXPECT_EQ(playback.position(), 1);
    play(); // and what plays next is heard as ever
    device->turn(0.4);
    EXPECT_NEAR(heard(), playback.position(), 0.03);
    EXPECT_EQ(device->timesOpened(), 2);
}

TEST_F(FilmPlaybackTest, anEditIsTakenOverWithoutAStop) {
    play();
    device->turn(0.4);
    take.project.audioTracks[0].gain = 0.5;
    playback.show(take.project);
    device->turn(0.6); // what was mixed before is heard first
    EXPECT_NEAR(heard(), playback.position() / 2, 0.03);
    EXPECT_NEAR(playback.position(), 1, 0.1);
    take.project.timeline.clips[0].duration = 1.4;
    playback.show(take.project);
    EXPECT_EQ(playback.duration(), 1.4);
    device->turn(0.8);
    EXPECT_TRUE(comesTrue([&] { return !playback.isPlaying(); }));
    EXPECT_NEAR(playback.position(), 1.4, 1e-6);
    EXPECT_EQ(device->timesOpened(), 1);
}

TEST_F(FilmPlaybackTest, aDeviceThatGoesAndComesBackDoesNotStopTheFilm) {
    int told = 0;
    QObject::connect(&playback, &FilmPlayback::reportChanged, [&] { told += !playback.noSound().isEmpty(); });
    begin([&] { playback.loop(0, filmSeconds); });
    device->turn(0.3);
    device->unplug();
    ASSERT_TRUE(comesTrue([&] { return !playback.noSound().isEmpty(); }));
    EXPECT_EQ(playback.noSound(), "The film plays without sound: the device was unplugged.");
    double const silent = playback.position();
    device->turn(0.5);
    EXPECT_NEAR(playback.position() - silent, 0.5, 0.03) << "the clock goes on";
    device->plug();
    device->turn(1); // until it is looked for again
    ASSERT_TRUE(comesTrue([&] { return device->timesOpened() == 2; }));
    device->turn(0.3);
    ASSERT_TRUE(comesTrue([&] { return playback.noSound().isEmpty(); }));
    device->turn(0.2);
    EXPECT_NEAR(heard(), playback.position(), 0.03);
    EXPECT_EQ(told, 1);
    playback.pause();
}

TEST_F(FilmPlaybackTest, soundThatVanishedIsASentenceAndTheRestIsHeard) {
    take.project.audioTracks.push_back(
        {.role = AudioRole::music, .clips = {{.asset = "gone.caf", .duration = filmSeconds}}});
    playback.show(take.project);
    play();
    device->turn(0.5);
    EXPECT_TRUE(
        comesTrue([&] { return playback.soundProblems() == QStringList{"Missing asset 'gone.caf' in the project."}; }));
    EXPECT_NEAR(heard(), playback.position(), 0.03);
}

TEST_F(FilmPlaybackTest, aFilmWithoutSoundPlaysByTheClockAndOpensNoDevice) {
    take.project.audioTracks.clear();
    playback.show(take.project);
    playback.play();
    ASSERT_TRUE(comesTrue([&] { return playback.clock().isRunning(); }));
    device->turn(0.5);
    EXPECT_NEAR(playback.position(), 0.5, 1e-6);
    EXPECT_EQ(device->timesOpened(), 0);
    EXPECT_EQ(playback.noSound(), "");
    playback.pause();
    take.project.timeline.clips.clear();
    playback.show(take.project);
    playback.play();
    EXPECT_FALSE(playback.isPlaying()) << "there is nothing to play";
}

}
