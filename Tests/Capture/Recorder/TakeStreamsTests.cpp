#include "../FakeSources.h"
#include "../TemporaryFolder.h"
#include "../TestDisplay.h"

#include <TavaroCapture/Recorder/ScreenRecorder.h>
#include <TavaroCapture/Recovery/RecoveryStore.h>
#include <TavaroMedia/Audio/SoundLevels.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <fstream>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tavaro {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace {

constexpr double screenFrame = 1.0 / 60;
constexpr double cameraFrame = 1.0 / 30;

/// Takes of a screen, a camera, a microphone and the system's sound, without any real device.
class TakeStreamsTest : public testing::Test {
protected:
    RecorderOptions options() const { return {.recordingsFolder = recordings.path(), .segmentSeconds = 0.4}; }
    TakeSources sources() const {
        return {fakeScreen(scene), fakeEvents(), fakeCamera(scene), fakeMicrophone(scene), fakeMicrophone(scene)};
    }
    static void recordUntil(ScreenRecorder& recorder, double seconds) {
        ASSERT_TRUE(eventually([&] { return recorder.waitForEnd(5ms) || recorder.progress().seconds >= seconds; }));
    }
    static TakeStream streamOf(std::vector<TakeStream> const& streams, StreamRole role) {
        auto const found = std::ranges::find(streams, role, &TakeStream::role);
        return found == streams.end() ? TakeStream{role, {}, 0, -1} : *found;
    }
    /// The flash is at the same time of the take in all of its streams.
    static void expectInStep(fs::path const& movie, std::vector<TakeStream> const& streams) {
        double const shown = flashInMovie(movie);
        ASSERT_GT(shown, 0);
        for (auto const& stream : streams) {
            bool const isHeard = isSound(stream.role);
            double const flash = isHeard ? flashInSound(stream.file) : flashInMovie(stream.file);
            ASSERT_GE(flash, 0) << nameOf(stream.role);
            EXPECT_NEAR(flash + stream.offset, shown, (isHeard ? screenFrame : screenFrame + cameraFrame) + 0.005)
                << nameOf(stream.role);
        }
    }

    TemporaryFolder recordings;
    FakeScene scene{mediaClockNow() + 0.9};
};

}

TEST_F(TakeStreamsTest, allStreamsOfATakeAreInStep) {
    ScreenRecorder recorder(options(), sources());
    recorder.start();
    recordUntil(recorder, 1.5);
    auto const take = recorder.stop();
    ASSERT_EQ(take.streams.size(), 3u);
    expectInStep(take.movie, take.streams);
    for (auto const& stream : take.streams)
        EXPECT_NEAR(stream.offset + stream.duration, take.duration, 0.15) << nameOf(stream.role);
    EXPECT_TRUE(take.warnings.empty());
    EXPECT_EQ(take.metadata.health.cameraLost, false);
    EXPECT_EQ(take.metadata.health.microphoneLost, false);
    auto const manifest = readManifest(take.directory);
    ASSERT_TRUE(manifest);
    EXPECT_TRUE(manifest->isComplete);
    for (auto const& stream : streamsOf(*manifest))
        EXPECT_GE(stream.segments.size(), 3u) << nameOf(stream.role) << " rotates on its own";
}

/// Blinks whose moments between two frames are never the same: what is seen is as often too early as too late.
TEST_F(TakeStreamsTest, theScreenIsNeitherBehindTheSoundNorAheadOfIt) {
    FakeScene const blinking{mediaClockNow() + 0.3, 0.0531};
    ScreenRecorder recorder(options(),
                            {fakeScreen(blinking), fakeEvents(), nullptr, fakeMicrophone(blinking), nullptr});
    recorder.start();
    recordUntil(recorder, 2.5);
    auto const take = recorder.stop();
    auto const sound = streamOf(take.streams, StreamRole::microphone);
    double const began = flashInSound(sound.file) + sound.offset;
    std::vector<double> late;
    for (double const at : blinksInMovie(take.movie)) {
        double const blinks = (at - began) / blinking.blinkSeconds;
        late.push_back((blinks - std::round(blinks)) * blinking.blinkSeconds);
    }
    ASSERT_GE(late.size(), 20u);
    std::ranges::sort(late);
    EXPECT_NEAR(late[late.size() / 2], 0, screenFrame / 4);
}

namespace {

/// Hangs once, for longer than a second.
class HangingScreen final : public ScreenSource {
public:
    explicit HangingScreen(std::unique_ptr<ScreenSource> screen) : screen_(std::move(screen)) {}
    Size2 size() const override { return screen_->size(); }
    PixelRect frame() const override { return screen_->frame(); }
    double scaleFactor() const override { return 1; }
    ImageView picture() const override { return screen_->picture(); }
    Outcome grab(double now) override {
        if (++grabs_ == 31) eventually([&] { return mediaClockNow() > now + 1.3; });
        return screen_->grab(now);
    }

private:
    std::unique_ptr<ScreenSource> const screen_;
    int grabs_ = 0;
};

}

TEST_F(TakeStreamsTest, aScreenThatHangsIsAnInterruptionWhereItHung) {
    auto hanging = sources();
    hanging.screen = std::make_unique<HangingScreen>(std::move(hanging.screen));
    ScreenRecorder recorder(options(), std::move(hanging));
    recorder.start();
    recordUntil(recorder, 2.2);
    auto const health = recorder.stop().metadata.health;
    ASSERT_EQ(health.interruptions, 1);
    EXPECT_NEAR(health.interruptedAt.at(0), 0.5, 0.3);
    EXPECT_GE(health.droppedFrames, 60);
    EXPECT_FALSE(health.captureLost);
}

TEST_F(TakeStreamsTest, aPauseIsInNoStream) {
    ScreenRecorder recorder(options(), sources());
    recorder.start();
    recordUntil(recorder, 0.3);
    recorder.setPaused(true);
    EXPECT_FALSE(recorder.waitForEnd(300ms));
    recorder.setPaused(false);
    recordUntil(recorder, 1.1);
    auto const take = recorder.stop();
    ASSERT_EQ(take.streams.size(), 3u);
    expectInStep(take.movie, take.streams);
}

TEST_F(TakeStreamsTest, streamsThatComeLateGoEarlyOrNeverComeCostOnlyThemselves) {
    double const now = mediaClockNow();
    auto some = sources();
    some.camera = fakeCamera(scene, {now + 0.5});
    some.microphone = fakeMicrophone(scene, {.from = now + 100});
    some.systemSound = fakeMicrophone(scene, {.to = now + 1.1});
    ScreenRecorder recorder(options(), std::move(some));
    recorder.start();
    double const began = mediaClockNow() - recorder.progress().seconds;
    recordUntil(recorder, 1.5);
    auto const take = recorder.stop();
    ASSERT_EQ(take.streams.size(), 2u);
    expectInStep(take.movie, take.streams);
    EXPECT_NEAR(streamOf(take.streams, StreamRole::camera).offset, now + 0.5 - began, cameraFrame + 0.05);
    auto const sound = streamOf(take.streams, StreamRole::systemSound);
    EXPECT_NEAR(sound.offset + sound.duration, now + 1.1 - began, 0.05);
    EXPECT_EQ(take.metadata.health.microphoneLost, true);
    EXPECT_EQ(take.metadata.health.cameraLost, false);
    EXPECT_EQ(take.metadata.health.interruptions, 1) << "a sound that never came back is no clean take";
    ASSERT_EQ(take.warnings.size(), 1u);
    EXPECT_TRUE(take.warnings[0].starts_with("The system's sound went away ")) << take.warnings[0];
}

TEST_F(TakeStreamsTest, aMicrophoneThatWasAwayIsSilentThereAndTheTakeSaysSo) {
    double const now = mediaClockNow();
    auto some = sources();
    some.microphone = fakeMicrophone({now}, {.to = now + 0.6, .back = now + 1.2});
    ScreenRecorder recorder(options(), std::move(some));
    recorder.start();
    double const began = mediaClockNow() - recorder.progress().seconds;
    recordUntil(recorder, now + 0.9 - began);
    EXPECT_TRUE(recorder.progress().sounds.at(0).isAway);
    recordUntil(recorder, 1.8);
    auto const sound = recorder.progress().sounds.at(0);
    EXPECT_FALSE(sound.isAway);
    EXPECT_NEAR(sound.level, 0.354, 0.01);
    auto const take = recorder.stop();
    auto const& health = take.metadata.health;
    EXPECT_EQ(health.interruptions, 1);
    ASSERT_EQ(health.interruptedAt.size(), 1u);
    EXPECT_NEAR(health.interruptedAt[0], now + 0.6 - began, 0.1);
    EXPECT_EQ(health.warning(), "The capture was interrupted 1 time and recovered.");
    ASSERT_EQ(take.warnings.size(), 1u);
    EXPECT_TRUE(take.warnings[0].starts_with("The microphone was away from ")) << take.warnings[0];

    auto const& levels = take.metadata.micLevels;
    ASSERT_EQ(std::ssize(levels), std::lround(take.duration * 10));
    for (std::size_t i = 0; i < levels.size(); ++i) {
        double const from = began + static_cast<double>(i) / 10, to = from + 0.1;
        bool const isHeard = (from > now && to < now + 0.6) || (from > now + 1.2 && i + 1 < levels.size());
        bool const isSilent = from > now + 0.6 && to < now + 1.2;
        float const least = isHeard ? 0.34f : 0;
        EXPECT_GE(levels[i], least) << i;
        // Of an entry in which it begins or ends there may be a few samples only, as loud as the tone's peak.
        EXPECT_LE(levels[i], isSilent ? 0 : isHeard ? 0.36f : 0.51f) << i;
    }
    auto const stream = streamOf(take.streams, StreamRole::microphone);
    auto const inFile =
        soundLevels(stream.file, {.start = -stream.offset, .seconds = take.duration, .entries = levels.size()});
    for (std::size_t i = 0; i < levels.size(); ++i) {
        double const middle = began + (static_cast<double>(i) + 0.5) / 10;
        // Where the sound ends or begins, entries that lie a little otherwise have another level.
        if (std::abs(middle - (now + 0.6)) < 0.15 || std::abs(middle - (now + 1.2)) < 0.15) continue;
        EXPECT_NEAR(levels[i], inFile[i], 0.005) << "the level of the take as it went is not that of its file at " << i;
    }
}

TEST_F(TakeStreamsTest, devicesThatGoTogetherForGoodAreOneLostSpotAlsoInATakeThatIsRecovered) {
    double const now = mediaClockNow();
    auto some = sources();
    some.microphone = fakeMicrophone({now}, {.to = now + 0.6});
    some.systemSound = fakeMicrophone({now}, {.to = now + 0.65});
    double lost = 0;
    {
        ScreenRecorder recorder(options(), std::move(some));
        recorder.start();
        lost = now + 0.6 - (mediaClockNow() - recorder.progress().seconds);
        recordUntil(recorder, 1.4);
    }
    auto const recovered = RecoveryStore::recover(RecoveryStore::findRecoverable(recordings.path()).at(0));
    auto const& health = recovered.metadata.health;
    EXPECT_FALSE(health.isClean());
    EXPECT_EQ(health.interruptions, 1);
    ASSERT_EQ(health.interruptedAt.size(), 1u);
    EXPECT_NEAR(health.interruptedAt[0], lost, 0.1);
}

TEST_F(TakeStreamsTest, aTakeWhoseFolderIsRemovedEndsAndSaysWhy) {
    auto whole = options();
    whole.segmentSeconds = 60;
    ScreenRecorder recorder(whole, sources());
    recorder.start();
    recordUntil(recorder, 0.3);
    for (auto const& entry : fs::directory_iterator(recordings.path())) fs::remove_all(entry.path());
    EXPECT_TRUE(eventually([&] { return recorder.waitForEnd(5ms); }));
    try {
        recorder.stop();
        ADD_FAILURE() << "there is nothing to hand back";
    } catch (CaptureError const& error) {
        EXPECT_THAT(error.what(), testing::EndsWith("was removed.")) << "and nothing is kept";
    }
}

TEST_F(TakeStreamsTest, aStreamThatCannotStartCostsOnlyItself) {
    struct Deaf : SoundSource {
        void start(SoundHandlers) override {
            throw CaptureError(CaptureError::Kind::badSource, "The microphone is in use.");
        }
        void stop() override {}
    };
    auto some = sources();
    some.microphone = std::make_unique<Deaf>();
    ScreenRecorder recorder(options(), std::move(some));
    recorder.start();
    recordUntil(recorder, 1.2);
    auto const take = recorder.stop();
    EXPECT_EQ(take.metadata.health.microphoneLost, true);
    EXPECT_EQ(take.metadata.health.cameraLost, false);
    EXPECT_GT(take.duration, 1);
    EXPECT_EQ(take.warnings, std::vector<std::string>{"The microphone is in use."});
}

TEST_F(TakeStreamsTest, anApplicationThatNeverPlayedIsNamed) {
    struct Awaiting : SoundSource {
        void start(SoundHandlers handlers) override {
            std::vector<StereoSample> const silence(audioRate / 2);
            handlers.block({silence, mediaClockNow()});
        }
        void stop() override {}
        std::string awaited() const override { return "Music"; }
    };
    auto some = sources();
    some.systemSound = std::make_unique<Awaiting>();
    ScreenRecorder recorder(options(), std::move(some));
    recorder.start();
    recordUntil(recorder, 0.3);
    EXPECT_EQ(recorder.progress().sounds.at(1).awaited, "Music");
    EXPECT_THAT(recorder.stop().warnings,
                testing::Contains("“Music” has not played anything; the system's sound is silent."));
}

TEST_F(TakeStreamsTest, aCameraWhosePicturesCannotBeEncodedCostsOnlyItself) {
    struct Vast : CameraSource {
        Size2 size() const override { return {100'000, 100'000}; }
        int fps() const override { return 30; }
        void start(CameraHandlers) override {}
        void stop() override {}
    };
    auto some = sources();
    some.camera = std::make_unique<Vast>();
    ScreenRecorder recorder(options(), std::move(some));
    recorder.start();
    recordUntil(recorder, 1.2);
    auto const take = recorder.stop();
    EXPECT_EQ(take.metadata.health.cameraLost, true);
    EXPECT_EQ(take.metadata.health.microphoneLost, false);
    EXPECT_GT(take.duration, 1);
    ASSERT_EQ(take.warnings.size(), 1u);
    EXPECT_TRUE(take.warnings[0].starts_with("The camera is not recorded. ")) << take.warnings[0];
}

TEST_F(TakeStreamsTest, aKilledTakeComesBackWithAllItsStreamsInStep) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    pid_t const child = fork();
    if (child == 0) {
        ScreenRecorder recorder(options(), sources());
        recorder.start();
        for (double seconds = 0;; recorder.waitForEnd(5ms)) {
            seconds = recorder.progress().seconds;
            if (write(ends[1], &seconds, sizeof seconds) < 0) _exit(1);
        }
    }
    close(ends[1]);
    double reached = 0;
    for (double seconds = 0; read(ends[0], &seconds, sizeof seconds) == sizeof seconds;) {
        reached = seconds;
        if (seconds >= 2.1) kill(child, SIGKILL);
    }
    close(ends[0]);
    waitpid(child, nullptr, 0);

    auto const takes = RecoveryStore::findRecoverable(recordings.path());
    ASSERT_EQ(takes.size(), 1u);
    auto const recovered = RecoveryStore::recover(takes[0]);
    ASSERT_EQ(recovered.streams.size(), 3u);
    expectInStep(recovered.movie, recovered.streams);
    for (auto const& stream : recovered.streams)
        EXPECT_GT(stream.offset + stream.duration, reached - 1) << nameOf(stream.role);
    EXPECT_TRUE(recovered.warnings.empty());
    auto const& levels = recovered.metadata.micLevels;
    EXPECT_TRUE(levels.empty() || levels.back() > 0.3f) << "what the last checkpoint lacks is not silence";
}

TEST_F(TakeStreamsTest, damagedStreamsDoNotLoseTheTake) {
    {
        ScreenRecorder recorder(options(), sources());
        recorder.start();
        recordUntil(recorder, 1.5);
    }
    auto const takes = RecoveryStore::findRecoverable(recordings.path());
    ASSERT_EQ(takes.size(), 1u);
    auto const directory = takes[0].directory();
    auto const damage = [&](std::int64_t index, StreamRole role) {
        std::ofstream(directory / segmentFileName(index, role), std::ios::trunc) << "damaged";
    };
    for (std::int64_t i = 0; i < 9; ++i) damage(i, StreamRole::camera);
    damage(0, StreamRole::microphone);
    fs::remove(directory / segmentFileName(1, StreamRole::systemSound));
    auto const recovered = RecoveryStore::recover(RecoveryStore::findRecoverable(recordings.path()).at(0));
    EXPECT_GT(recovered.duration, 0.9);
    EXPECT_EQ(recovered.streams.size(), 2u);
    expectInStep(recovered.movie, recovered.streams);
    EXPECT_EQ(recovered.metadata.health.cameraLost, true);
    EXPECT_EQ(recovered.metadata.health.microphoneLost, false);
    EXPECT_EQ(recovered.warnings.size(), 2u);
}

TEST_F(TakeStreamsTest, aTakeThatLostItsFirstSegmentBeginsWithTheSecondInAllItsStreams) {
    {
        ScreenRecorder recorder(options(), sources());
        recorder.start();
        recordUntil(recorder, 1.5);
    }
    auto const directory = RecoveryStore::findRecoverable(recordings.path()).at(0).directory();
    std::ofstream(directory / segmentFileName(0), std::ios::trunc) << "damaged";
    auto const recovered = RecoveryStore::recover(RecoveryStore::findRecoverable(recordings.path()).at(0));
    EXPECT_NEAR(MovieReader(recovered.movie).info().duration, recovered.duration, 1e-3);
    ASSERT_EQ(recovered.streams.size(), 3u);
    expectInStep(recovered.movie, recovered.streams);
}

TEST_F(TakeStreamsTest, progressAndTheEndCanBeAskedForWhileTheTakeStops) {
    for (bool const isKept : {true, false}) {
        ScreenRecorder recorder(options(), {fakeScreen(scene), fakeEvents()});
        recorder.start();
        std::atomic<bool> isAsking = false;
        std::thread asking([&] {
            while (!recorder.waitForEnd(0ms)) {
                recorder.progress();
                isAsking = true;
            }
        });
        EXPECT_TRUE(eventually([&] { return isAsking.load(); }));
        if (isKept)
            recorder.stop();
        else
            recorder.cancel();
        asking.join();
        auto const last = recorder.progress();
        EXPECT_GT(last.framesWritten, 0);
        EXPECT_EQ(recorder.progress().seconds, last.seconds) << "the take is over";
        EXPECT_THROW(recorder.stop(), CaptureError);
    }
}

}
