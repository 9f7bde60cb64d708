#include "../TemporaryFolder.h"
#include "../TestDisplay.h"

#include <TavaroCapture/Recorder/ScreenRecorder.h>
#include <TavaroCapture/Recovery/RecoveryStore.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <signal.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavaro {

using namespace std::chrono_literals;

namespace {

/// 0xRRGGBB of a movie's pixel at a time.
std::uint32_t pixel(MovieReader& reader, double time, int x, int y) {
    Image image;
    FrameConverter().convert(reader.frame(time), image);
    auto const* const p = image.row(y) + 4 * x;
    return static_cast<std::uint32_t>(p[0] << 16 | p[1] << 8 | p[2]);
}

bool isNear(std::uint32_t a, std::uint32_t b) {
    for (int shift : {0, 8, 16}) {
        if (std::abs(static_cast<int>(a >> shift & 255) - static_cast<int>(b >> shift & 255)) > 12) return false;
    }
    return true;
}

}

class ScreenRecorderTest : public DisplayTest {
protected:
    RecorderOptions options() {
        return {.source = AreaSource{{100, 50, 320, 240}},
                .display = display->name(),
                .recordingsFolder = recordings.path(),
                .segmentSeconds = 0.5};
    }
    /// Lets the take go on to that many seconds.
    static void recordUntil(ScreenRecorder& recorder, double seconds) {
        ASSERT_TRUE(eventually([&] { return recorder.waitForEnd(1ms) || recorder.progress().seconds >= seconds; }));
    }

    TemporaryFolder recordings;
};

TEST_F(ScreenRecorderTest, aTakeShowsWhatHappenedWhenItHappened) {
    auto const window = client->makeWindow({.frame = {0, 0, 640, 480}, .windowClass = "Painter", .color = 0x2040c0});
    client->setActive(window);
    ScreenRecorder recorder(options());
    recorder.start();
    recordUntil(recorder, 0.4);
    client->movePointer(260, 170);
    client->button(1, true), client->button(1, false);
    client->fill(window, {0, 0, 640, 480}, 0xe0a020);
    double const painted = recorder.progress().seconds;
    recordUntil(recorder, 1.2);
    auto const take = recorder.stop();

    EXPECT_FALSE(take.endedEarly);
    EXPECT_GE(take.duration, 1.2 - 1.0 / 60);
    MovieReader reader(take.movie);
    EXPECT_EQ(reader.info().width, 320);
    EXPECT_EQ(reader.info().height, 240);
    EXPECT_NEAR(reader.info().duration, take.duration, 1e-3);
    EXPECT_TRUE(isNear(pixel(reader, painted - 0.1, 160, 120), 0x2040c0));
    EXPECT_TRUE(isNear(pixel(reader, painted + 0.3, 160, 120), 0xe0a020));

    auto const& log = take.metadata;
    EXPECT_EQ(log.captureSize, (Size2{320, 240}));
    ASSERT_EQ(log.clicks.size(), 1u);
    EXPECT_EQ(log.clicks[0].position, (UnitPoint2{0.5, 0.5}));
    EXPECT_LE(log.clicks[0].t, painted);
    EXPECT_GE(log.clicks[0].t, 0.39);
    ASSERT_EQ(log.appSpans.size(), 1u);
    EXPECT_EQ(log.appSpans[0].name, "Painter");
    EXPECT_LE(static_cast<double>(log.cursorSamples.size()), take.duration * 60 + 1);
    EXPECT_GE(static_cast<double>(log.cursorSamples.size()), take.duration * 30);
    auto const& health = log.health;
    EXPECT_NEAR(static_cast<double>(health.framesWritten + health.droppedFrames), take.duration * 60, 0.1)
        << "every tick is a frame or a counted loss";
    EXPECT_EQ(reader.info().frameCount, health.framesWritten);
    EXPECT_GT(health.repeatedFrames, health.framesWritten / 2) << "the screen changed once";
    EXPECT_EQ(health.keyboardCaptured, true);
    EXPECT_TRUE(readManifest(take.directory)->isComplete);
    auto const kept = RecoveryStore::findRecoverable(recordings.path()).at(0).metadata.value();
    EXPECT_EQ(kept.cursorSamples.back(), log.cursorSamples.back()) << "all of the log outlives the process at once";
    EXPECT_EQ(kept.clicks, log.clicks);
    EXPECT_EQ(RecoveryStore::findRecoverable(recordings.path()).size(), 1u)
        << "a program that dies before the movie is in a project has lost nothing";
    RecoveryStore::removeWorkingDirectory(take.movie);
    EXPECT_TRUE(RecoveryStore::findRecoverable(recordings.path()).empty());
}

TEST_F(ScreenRecorderTest, aTakeOutlastsItsDisplayAndFindsItAgainWhereItIsPut) {
    PixelRect const left{0, 0, 320, 480}, right{320, 0, 320, 480};
    client->makeWindow({.frame = left, .color = 0x2040c0});
    client->makeWindow({.frame = right, .color = 0xe0a020});
    client->setDisplays({{"A", left}, {"B", right}});
    ScreenRecorder recorder(
        {.source = DisplaySource{"B"}, .display = display->name(), .recordingsFolder = recordings.path()});
    recorder.start();
    auto const click = [&](int x) { client->movePointer(x, 240), client->button(1, true), client->button(1, false); };
    recordUntil(recorder, 0.4);
    click(400);
    recordUntil(recorder, 0.6);
    client->setDisplays({{"A", left}});
    double const unplugged = recorder.progress().seconds;
    EXPECT_TRUE(eventually([&] { return recorder.progress().isScreenAway; }));
    recordUntil(recorder, unplugged + 0.5);
    client->setDisplays({{"A", right}, {"B", left}});
    EXPECT_TRUE(eventually([&] { return !recorder.progress().isScreenAway; }));
    recordUntil(recorder, recorder.progress().seconds + 0.3);
    click(80);
    double const clicked = recorder.progress().seconds;
    recordUntil(recorder, clicked + 0.3);
    auto const take = recorder.stop();

    EXPECT_FALSE(take.endedEarly);
    MovieReader reader(take.movie);
    EXPECT_NEAR(reader.info().duration, take.duration, 1e-3);
    EXPECT_TRUE(isNear(pixel(reader, unplugged + 0.25, 100, 100), 0xe0a020)) << "its last picture stays";
    EXPECT_TRUE(isNear(pixel(reader, clicked, 100, 100), 0x2040c0));
    ASSERT_EQ(take.metadata.clicks.size(), 2u);
    for (auto const& each : take.metadata.clicks) EXPECT_EQ(each.position, (UnitPoint2{0.25, 0.5}));
    auto const& health = take.metadata.health;
    EXPECT_TRUE(std::ranges::any_of(health.interruptedAt, [&](double at) { return std::abs(at - unplugged) < 0.3; }));
    EXPECT_FALSE(health.captureLost);
    ASSERT_EQ(take.warnings.size(), 1u);
    EXPECT_EQ(take.warnings[0].find("The screen was away from"), 0u) << take.warnings[0];
}

TEST_F(ScreenRecorderTest, aPauseIsNeitherInTheMovieNorInTheLog) {
    auto const window = client->makeWindow({.frame = {0, 0, 640, 480}, .color = 0x2040c0});
    ScreenRecorder recorder(options());
    double const began = mediaClockNow();
    recorder.start();
    recordUntil(recorder, 0.4);
    recorder.setPaused(true);
    double const pausedAt = recorder.progress().seconds;
    client->fill(window, {0, 0, 640, 480}, 0xff0000);
    EXPECT_FALSE(recorder.waitForEnd(400ms));
    client->fill(window, {0, 0, 640, 480}, 0xe0a020);
    EXPECT_TRUE(recorder.progress().isPaused);
    EXPECT_EQ(recorder.progress().seconds, pausedAt);
    recorder.setPaused(false);
    recordUntil(recorder, 0.8);
    auto const take = recorder.stop();
    EXPECT_LT(take.duration, mediaClockNow() - began - 0.4 + 2.0 / 60)
        << "the pause lasted 0.4 s, give or take a frame at each end";
    MovieReader reader(take.movie);
    EXPECT_TRUE(isNear(pixel(reader, pausedAt - 0.05, 160, 120), 0x2040c0));
    EXPECT_TRUE(isNear(pixel(reader, pausedAt + 0.3, 160, 120), 0xe0a020)) << "nothing of the pause between";
    auto const& samples = take.metadata.cursorSamples;
    auto const inPause = std::count_if(samples.begin(), samples.end(), [&](CursorSample const& sample) {
        return sample.t > pausedAt - 1e-6 && sample.t < pausedAt + 1e-6;
    });
    EXPECT_LE(inPause, 1);
    auto const& health = take.metadata.health;
    EXPECT_NEAR(static_cast<double>(health.framesWritten + health.droppedFrames), take.duration * 60, 0.1);
}

TEST_F(ScreenRecorderTest, aServerThatDiesEndsTheTakeAndKeepsIt) {
    ScreenRecorder recorder(options());
    recorder.start();
    recordUntil(recorder, 0.6);
    client.reset();
    display->kill();
    EXPECT_TRUE(recorder.waitForEnd(5s));
    auto const take = recorder.stop();
    EXPECT_TRUE(take.endedEarly);
    EXPECT_TRUE(take.metadata.health.captureLost);
    EXPECT_GE(take.duration, 0.5);
    EXPECT_NEAR(MovieReader(take.movie).info().duration, take.duration, 1e-3);
}

TEST_F(ScreenRecorderTest, aServerThatHangsIsToldOfAndHoldsUpNeitherPausesNorTheEnd) {
    ScreenRecorder recorder(options());
    recorder.start();
    recordUntil(recorder, 0.3);
    EXPECT_FALSE(recorder.progress().isScreenAway);
    display->freeze();
    EXPECT_TRUE(eventually([&] { return recorder.progress().isScreenAway; }));
    display->thaw();
    EXPECT_TRUE(eventually([&] { return !recorder.progress().isScreenAway; }));
    double const again = recorder.progress().seconds;
    display->freeze();
    EXPECT_TRUE(eventually([&] { return recorder.progress().isScreenAway; }));
    recorder.setPaused(true);
    recorder.setPaused(false);
    double const end = recorder.progress().seconds;
    auto const take = recorder.stop();
    EXPECT_GT(take.duration, end - 0.05) << "the last picture stays";
    EXPECT_NEAR(MovieReader(take.movie).info().duration, take.duration, 1e-3);
    EXPECT_FALSE(take.endedEarly);
    auto const& health = take.metadata.health;
    ASSERT_EQ(health.interruptedAt.size(), 2u);
    EXPECT_NEAR(health.interruptedAt[1], again, 0.5);
    EXPECT_NEAR(static_cast<double>(health.framesWritten + health.droppedFrames), take.duration * 60, 0.1);
    ASSERT_EQ(take.warnings.size(), 1u);
    EXPECT_TRUE(take.warnings[0].starts_with("No pictures came from the screen after ")) << take.warnings[0];
}

/// A disk of its own for as long as the object lives.
class SmallDisk {
public:
    SmallDisk(std::filesystem::path place, char const* size) : place_(std::move(place)) {
        std::filesystem::create_directory(place_);
        isMounted_ = mount("tmpfs", place_.c_str(), "tmpfs", 0, size) == 0;
    }
    ~SmallDisk() {
        if (isMounted_) umount2(place_.c_str(), MNT_DETACH);
    }
    SmallDisk(SmallDisk const&) = delete;
    SmallDisk& operator=(SmallDisk const&) = delete;

    bool isMounted() const { return isMounted_; }
    /// Leaves that many bytes of room.
    void fill(std::uintmax_t room) const {
        std::string const bytes(std::filesystem::space(place_).available - room, ' ');
        writeFileAtomically(place_ / "filler", bytes);
    }

private:
    std::filesystem::path const place_;
    bool isMounted_ = false;
};

TEST_F(ScreenRecorderTest, aDiskThatRunsFullEndsTheTakeWhileItCanBeSaved) {
    auto small = options();
    small.recordingsFolder = recordings.path() / "disk";
    SmallDisk const disk(small.recordingsFolder, "size=24m");
    if (!disk.isMounted()) GTEST_SKIP() << "no right to mount a small disk";
    auto const window = client->makeWindow({.frame = {0, 0, 640, 480}});
    std::mt19937 random(3);
    ScreenRecorder recorder(small);
    recorder.start();
    std::optional<double> toldRoom;
    EXPECT_TRUE(eventually([&] { // noise that no encoder makes small
        for (int i = 0; i < 200; ++i)
            client->fill(window, {static_cast<int>(random() % 420), static_cast<int>(random() % 290), 8, 8}, random());
        if (auto const room = recorder.progress().roomSeconds) toldRoom = room;
        return recorder.waitForEnd(0ms);
    })) << "it grows by some megabytes a second";
    EXPECT_LT(toldRoom.value_or(1e9), 60);
    auto const take = recorder.stop();
    EXPECT_NE(take.endedEarly.value_or("").find("is nearly full"), std::string::npos) << take.endedEarly.value_or("");
    EXPECT_FALSE(take.metadata.health.captureLost);
    EXPECT_NEAR(MovieReader(take.movie).info().duration, take.duration, 1e-3);
    disk.fill(1 << 20);
    EXPECT_THROW(ScreenRecorder(small).start(), CaptureError) << "what is recorded now could not be saved";
}

TEST_F(ScreenRecorderTest, theDiskThatTheProjectComesToEndsTheTakeTooAndIsNamed) {
    auto away = options();
    auto const place = recordings.path() / "stick";
    away.projectFolder = place / "made later";
    SmallDisk const disk(place, "size=24m");
    if (!disk.isMounted()) GTEST_SKIP() << "no right to mount a small disk";
    {
        ScreenRecorder recorder(away);
        recorder.start();
        recordUntil(recorder, 0.5);
        EXPECT_FALSE(recorder.waitForEnd(0ms));
        disk.fill(1 << 20);
        EXPECT_TRUE(eventually([&] { return recorder.waitForEnd(5ms); }));
        auto const take = recorder.stop();
        EXPECT_NE(take.endedEarly.value_or("").find("The disk of “" + away.projectFolder.string() + "” is nearly full"),
                  std::string::npos)
            << take.endedEarly.value_or("");
        EXPECT_GT(take.duration, 0.4);
    }
    EXPECT_THROW(ScreenRecorder(away).prepare(), CaptureError);
    EXPECT_THROW(ScreenRecorder(away).start(), CaptureError);
}

TEST_F(ScreenRecorderTest, aDiskThatOthersFillEndsTheTakeWithASentenceAndKeepsWhatWasThere) {
    auto small = options();
    small.recordingsFolder = recordings.path() / "disk";
    SmallDisk const disk(small.recordingsFolder, "size=12m");
    if (!disk.isMounted()) GTEST_SKIP() << "no right to mount a small disk";
    auto const window = client->makeWindow({.frame = {0, 0, 640, 480}});
    std::mt19937 random(3);
    {
        ScreenRecorder recorder(small);
        recorder.start();
        recordUntil(recorder, 1);
        disk.fill(100'000);
        EXPECT_TRUE(eventually([&] {
            for (int i = 0; i < 200; ++i)
                client->fill(window, {static_cast<int>(random() % 420), static_cast<int>(random() % 290), 8, 8},
                             random());
            return recorder.waitForEnd(0ms);
        }));
        try {
            EXPECT_TRUE(recorder.stop().endedEarly);
        } catch (CaptureError const& error) {
            EXPECT_EQ(error.kind, CaptureError::Kind::writeFailed);
            EXPECT_NE(std::string(error.what()).find(" full"), std::string::npos) << error.what();
        }
    }
    auto const takes = RecoveryStore::findRecoverable(small.recordingsFolder);
    ASSERT_EQ(takes.size(), 1u) << "what fitted can be recovered once there is room";
    EXPECT_GT(takes[0].estimatedDuration, 0);
}

TEST_F(ScreenRecorderTest, whatCannotBeRecordedFailsAtOnceAndLeavesNothing) {
    auto const kindOf = [](RecorderOptions const& options) -> std::optional<CaptureError::Kind> {
        std::optional<CaptureError::Kind> before;
        try {
            ScreenRecorder(options).prepare();
        } catch (CaptureError const& error) {
            before = error.kind;
        }
        try {
            ScreenRecorder recorder(options);
            recorder.start();
            return std::nullopt;
        } catch (CaptureError const& error) {
            EXPECT_TRUE(before == error.kind || error.kind == CaptureError::Kind::writeFailed);
            return error.kind;
        }
    };
    EXPECT_NO_THROW(ScreenRecorder(options()).prepare());
    auto bad = options();
    bad.source = AreaSource{{5000, 0, 100, 100}};
    EXPECT_EQ(kindOf(bad), CaptureError::Kind::badSource);
    bad = options();
    bad.fps = 0;
    EXPECT_EQ(kindOf(bad), CaptureError::Kind::badSource);
    bad = options();
    bad.display = ":4711";
    EXPECT_EQ(kindOf(bad), CaptureError::Kind::noDisplay);
    bad = options();
    bad.recordingsFolder = "/dev/null/recordings";
    EXPECT_EQ(kindOf(bad), CaptureError::Kind::writeFailed);
    EXPECT_TRUE(std::filesystem::is_empty(recordings.path()));

    ScreenRecorder idle(options());
    EXPECT_THROW(idle.stop(), CaptureError);
    ScreenRecorder cancelled(options());
    cancelled.start();
    cancelled.cancel();
    EXPECT_TRUE(std::filesystem::is_empty(recordings.path()));
}

namespace {

/// Of the media clock, no part of the take.
constexpr double pauseSeconds = 0.5;

/// In a process of its own: records until killed, with a pause after half a second, and tells how far it is through the
/// pipe.
[[noreturn]] void recordForever(RecorderOptions const& options, int out) {
    ScreenRecorder recorder(options);
    recorder.start();
    double pausedAt = 0;
    while (true) {
        double const seconds = recorder.progress().seconds;
        if (pausedAt == 0 && seconds > 0.5) {
            pausedAt = mediaClockNow();
            recorder.setPaused(true);
        }
        if (pausedAt > 0 && mediaClockNow() > pausedAt + pauseSeconds) recorder.setPaused(false);
        if (write(out, &seconds, sizeof seconds) < 0) _exit(1);
        recorder.waitForEnd(5ms);
    }
}

}

TEST_F(ScreenRecorderTest, aProcessKilledAtAnyInstantLosesAtMostTheLastSecond) {
    client->makeWindow({.frame = {0, 0, 640, 480}, .color = 0x2040c0});
    unsigned const seed = 11;
    std::mt19937 random(seed);
    for (int round = 0; round < 5; ++round) {
        double const target = 1.1 + std::uniform_real_distribution<>(0, 1.2)(random);
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        auto const settings = options();
        pid_t const child = fork();
        if (child == 0) recordForever(settings, ends[1]);
        close(ends[1]);
        double reached = 0;
        for (double seconds = 0; read(ends[0], &seconds, sizeof seconds) == sizeof seconds;) {
            reached = seconds;
            if (seconds >= target) kill(child, SIGKILL);
        }
        close(ends[0]);
        waitpid(child, nullptr, 0);

        auto const takes = RecoveryStore::findRecoverable(recordings.path());
        ASSERT_EQ(takes.size(), 1u) << "seed " << seed << ", round " << round;
        auto const recovered = RecoveryStore::recover(takes[0]);
        EXPECT_GT(recovered.duration, reached - 1.0) << "seed " << seed << ", round " << round;
        EXPECT_LT(recovered.duration, reached + 0.9 * pauseSeconds) << "the pause is in it";
        for (auto const& sample : recovered.metadata.cursorSamples) EXPECT_LE(sample.t, recovered.duration + 1e-6);
        EXPECT_NEAR(MovieReader(recovered.movie).info().duration, recovered.duration, 1e-3);
        RecoveryStore::removeWorkingDirectory(recovered.movie);
    }
}

}
