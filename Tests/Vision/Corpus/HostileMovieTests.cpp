#include "CheckedFilm.h"

#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Movie/MovieWriter.h>

#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

class HostileMovie : public testing::Test {
protected:
    HostileMovie() : folder(fs::path(testing::TempDir()) / ("tavaro-hostile-" + std::to_string(getpid()))) {
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    ~HostileMovie() override { fs::remove_all(folder); }

    ScanOutcome scanned(
        fs::path const& movie, std::function<void(ScanProgress const&)> const& told = [](auto const&) {},
        std::stop_token const& stop = {}) const {
        return scanMovie({.movie = movie, .settings = sceneSettings(), .key = {{1, 2}}}, told, stop);
    }

    /// A movie of that many frames at ten a second, each filled by `fill`.
    fs::path movieOf(int width, int height, int frames, std::function<void(DrawnScreen&, int)> const& fill) const {
        auto const file = folder / "movie.mp4";
        MovieWriter writer(file, {.intent = MovieIntent::live, .width = width, .height = height, .fps = 10});
        DrawnScreen screen(width, height);
        for (int n = 0; n < frames; ++n) {
            fill(screen, n);
            auto picture = writer.picture();
            fillPicture(picture, screen.pixels(), PixelOrder::bgra);
            writer.append(std::move(picture), n / 10.0);
        }
        writer.finish();
        return file;
    }

    fs::path filmed(ScreenScene const& scene) const {
        auto const file = folder / "scene.mp4";
        writeMovie(scene, file);
        return file;
    }

    fs::path folder;
};

void writeSecret(DrawnScreen& screen, int x, int y, double size) {
    screen.write("DB_PASSWORD=Kranich-4711-Mond", x, y, {"JetBrains Mono", size}, {20, 20, 20});
}

ScreenScene longerScene() {
    return printingScene(
        {.name = "test", .colors = lightColors, .textSize = 15, .width = 1280, .height = 720, .seconds = 6, .seed = 0});
}

/// Sends a signal to the readers that this program has started.
int signalReaders(int signal) {
    int reached = 0;
    for (auto const& thread : fs::directory_iterator("/proc/self/task")) {
        std::ifstream children(thread.path() / "children");
        for (pid_t child = 0; children >> child;) {
            std::string name;
            std::getline(std::ifstream("/proc/" + std::to_string(child) + "/comm") >> std::ws, name);
            if (name == "tavaro-reader") reached += kill(child, signal) == 0;
        }
    }
    return reached;
}

}

TEST_F(HostileMovie, nothingIsFoundWhereThereIsNoText) {
    auto const flat = scanned(movieOf(640, 360, 10, [](DrawnScreen& screen, int) {
        screen.fill({0, 0, 640, 360}, {90, 120, 150});
    }));
    EXPECT_THAT(flat.findings, IsEmpty());
    EXPECT_FALSE(flat.isStopped);
    auto const noise = scanned(movieOf(640, 360, 20, [](DrawnScreen& screen, int n) {
        auto state = static_cast<std::uint32_t>(n + 1);
        for (int y = 0; y < 360; y += 4) {
            for (int x = 0; x < 640; x += 4) {
                state = state * 1664525 + 1013904223;
                auto const level = static_cast<std::uint8_t>(state >> 24);
                screen.fill({x, y, 4, 4}, {level, level, level});
            }
        }
    }));
    EXPECT_THAT(noise.findings, IsEmpty());
    auto const tiny = scanned(movieOf(2, 2, 3, [](DrawnScreen& screen, int) {
        screen.fill({0, 0, 2, 2}, {255, 255, 255});
    }));
    EXPECT_THAT(tiny.findings, IsEmpty());
}

TEST_F(HostileMovie, aPictureOfEightThousandColumnsIsReadLikeAnyOther) {
    auto const outcome = scanned(movieOf(7680, 4320, 4, [](DrawnScreen& screen, int) {
        screen.fill({0, 0, 7680, 4320}, {250, 250, 250});
        writeSecret(screen, 7000, 4200, 28);
        writeSecret(screen, 60, 100, 28);
    }));
    ASSERT_EQ(outcome.findings.size(), 2U);
    for (auto const& finding : outcome.findings) {
        auto const box = coveredAt(finding, 0.2, 7680, 4320);
        EXPECT_LT(box.width, 600);
        EXPECT_LT(box.height, 100);
    }
}

TEST_F(HostileMovie, aMovieThatEndsTooSoonIsReadToItsEnd) {
    auto const scene = longerScene();
    auto const movie = filmed(scene);
    fs::resize_file(movie, fs::file_size(movie) * 6 / 10);
    auto const outcome = scanned(movie);
    EXPECT_FALSE(outcome.findings.empty());
    for (auto const& finding : outcome.findings) EXPECT_LT(finding.start, 0.9 * scene.seconds);
}

TEST_F(HostileMovie, whatIsNoMovieIsRefusedInASentence) {
    EXPECT_THROW(scanned(folder / "missing.mp4"), MediaError);
    std::ofstream(folder / "text.mp4") << "no movie";
    EXPECT_THROW(scanned(folder / "text.mp4"), MediaError);
}

// As long as a reader that hangs is waited for, about fifteen seconds.
TEST_F(HostileMovie, readersThatAreKilledOrHangInTheMiddleHideNothing) {
    auto const scene = longerScene();
    auto const movie = filmed(scene);
    auto const undisturbed = judge(scene, scanned(movie).findings);
    EXPECT_GT(undisturbed.found, 2);
    for (int const signal : {SIGKILL, SIGSTOP}) {
        int reached = 0;
        auto const most = signal == SIGKILL ? 6 : 1;
        auto const outcome = scanned(movie, [&](ScanProgress const& progress) {
            if (progress.seconds > 0.5 * reached && reached < most) reached += signalReaders(signal);
        });
        EXPECT_GE(reached, 1);
        auto const judged = judge(scene, outcome.findings);
        EXPECT_EQ(judged.found, undisturbed.found) << testing::PrintToString(judged.missed);
        EXPECT_EQ(judged.legibleFrames, undisturbed.legibleFrames) << testing::PrintToString(judged.legible);
    }
}

TEST_F(HostileMovie, whatWasFoundUntilAScanIsStoppedIsKept) {
    auto const scene = longerScene();
    std::stop_source stop;
    auto const outcome = scanned(
        filmed(scene),
        [&](ScanProgress const& progress) {
            if (progress.seconds > scene.seconds / 2) stop.request_stop();
        },
        stop.get_token());
    EXPECT_TRUE(outcome.isStopped);
    EXPECT_FALSE(outcome.findings.empty());
    ASSERT_EQ(outcome.ranges.size(), 1U);
    EXPECT_GT(outcome.ranges[0].duration, scene.seconds / 4);
    EXPECT_LT(outcome.ranges[0].duration, 0.95 * scene.seconds);
    constexpr double lookedAtAgain = 1; // seconds before the stop, of which some may not have been read
    for (auto const& finding : outcome.findings) EXPECT_LE(finding.start, outcome.ranges[0].end() + lookedAtAgain);
}

TEST_F(HostileMovie, aScanThatIsStoppedAllTheTimeGetsToTheEnd) {
    auto const scene = printingScene(
        {.name = "test", .colors = lightColors, .textSize = 15, .width = 800, .height = 450, .seconds = 3, .seed = 0});
    auto const movie = filmed(scene);
    std::vector<ScreenFinding> findings;
    double reached = 0;
    int rounds = 0;
    for (bool isDone = false; !isDone && rounds < 20; ++rounds) {
        std::stop_source stop;
        ScanRequest request{.movie = movie, .settings = sceneSettings(), .key = {{1, 2}}};
        request.ranges = {{reached, scene.seconds - reached}};
        auto const outcome = scanMovie(
            request,
            [&](ScanProgress const& progress) {
                if (progress.seconds > 0.5) stop.request_stop();
            },
            stop.get_token());
        ASSERT_FALSE(outcome.ranges.empty()) << "nothing came of it from " << reached << " s on";
        reached = outcome.ranges.back().end();
        isDone = !outcome.isStopped;
        findings.insert(findings.end(), outcome.findings.begin(), outcome.findings.end());
    }
    EXPECT_GT(rounds, 3);
    EXPECT_DOUBLE_EQ(reached, scene.seconds);
    auto const judged = judge(scene, findings), atOnce = judge(scene, scanned(movie).findings);
    EXPECT_EQ(judged.found, atOnce.found) << testing::PrintToString(judged.missed);
    EXPECT_EQ(judged.legibleFrames, 0) << testing::PrintToString(judged.legible);
}

}
