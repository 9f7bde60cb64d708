#include <algorithm>
#include <cmath>
#include <random>
#include <set>
#include <span>

#include <gtest/gtest.h>

#include <Tests/Capture/TemporaryFolder.h>
#include <Tests/Media/Movie/NumberedMovie.h>

namespace tavaro {
namespace {

constexpr int frames = 97;

struct Rate {
    char const* name;
    double value;
};
constexpr Rate rates[] = {{"24000/1001", 24000 / 1001.0}, {"24", 24}, {"25", 25},
                          {"30000/1001", 30000 / 1001.0}, {"30", 30}, {"50", 50},
                          {"60000/1001", 60000 / 1001.0}, {"60", 60}};

struct Film {
    char const* name;
    char const* coding;
    double soundSeconds; // beyond the pictures' end; none where negative
};
// The first two are tried at every rate.
constexpr Film films[] = {{"silent.mkv", "-c:v copy", -1},
                          {"opus-on.mkv", "-c:v copy -c:a libopus", 0.4},
                          {"opus.mkv", "-c:v copy -c:a libopus", 0},
                          {"aac.mkv", "-c:v copy -c:a aac", 0},
                          {"pcm.mkv", "-c:v copy -c:a pcm_s16le", 0},
                          {"flac.mkv", "-c:v copy -c:a flac", 0},
                          {"aac.flv", "-c:v copy -c:a aac", 0.1},
                          {"pcm.avi", "-c:v mpeg4 -qscale 3 -c:a pcm_s16le", 0},
                          {"opus.webm", "-c:v libvpx -deadline realtime -cpu-used 8 -b:v 4M -c:a libopus", 0}};

/// A stream of numbered pictures without any times.
std::filesystem::path pictures(std::filesystem::path const& folder) {
    auto const movie = folder / "numbered.mp4";
    auto const bare = folder / "numbered.h264";
    writeNumbered(movie, smallMovie(), steadyTimes(frames, 30));
    return runFFmpeg("-i '" + movie.string() + "' -c copy '" + bare.string() + "'") ? bare : std::filesystem::path();
}

void expectItsOwnFrames(std::filesystem::path const& file, double rate) {
    MovieReader reader(file);
    EXPECT_NEAR(reader.info().duration * rate, frames, 1e-4);
    EXPECT_NEAR(reader.info().frameRate / rate, 1, 1e-6);
    auto const expectFrame = [&](int n, char const* how) {
        ASSERT_EQ(numberAt(reader, n / rate), n) << how;
        ASSERT_EQ(numberAt(reader, (n + 0.99) / rate), n) << how;
        ASSERT_NEAR(reader.frame(n / rate).presentationTime(), n / rate, 1e-9) << how;
    };
    for (int n = 0; n < frames; ++n) expectFrame(n, "forward");
    for (auto const n : {60, 3, 96, 45, 46, 0}) expectFrame(n, "in any order");
}

TEST(FrameClock, aMovieOfASteadyRateHasExactlyItsFramesWhateverItsContainerRounds) {
    TemporaryFolder folder;
    auto const bare = pictures(folder.path());
    if (bare.empty()) GTEST_SKIP() << "no ffmpeg program";
    for (auto const& [rate, value] : rates) {
        auto const isTriedWithAll = value == 60 || value == 24000 / 1001.0;
        for (auto const& [name, coding, soundSeconds] : std::span(films).first(isTriedWithAll ? std::size(films) : 2)) {
            auto const file = folder.path() / name;
            auto const sound = soundSeconds < 0 ? std::string()
                                                : "-f lavfi -t " + std::to_string(frames / value + soundSeconds) +
                                                      " -i sine=sample_rate=48000 ";
            ASSERT_TRUE(runFFmpeg("-r " + std::string(rate) + " -i '" + bare.string() + "' " + sound + coding + " '" +
                                  file.string() + "'"));
            SCOPED_TRACE(std::string(name) + " at " + rate);
            expectItsOwnFrames(file, value);
        }
    }
}

TEST(FrameClock, shownAtSixtyNoFrameOfASlowerMovieIsLeftOut) {
    TemporaryFolder folder;
    auto const bare = pictures(folder.path());
    if (bare.empty()) GTEST_SKIP() << "no ffmpeg program";
    for (auto const& [rate, value] : rates) {
        auto const file = folder.path() / "film.mkv";
        ASSERT_TRUE(
            runFFmpeg("-r " + std::string(rate) + " -i '" + bare.string() + "' -c copy '" + file.string() + "'"));
        MovieReader reader(file);
        std::vector<int> shown;
        for (int n = 0; n < std::ceil(frames * 60 / value - 1e-6); ++n) shown.push_back(numberAt(reader, n / 60.0));
        EXPECT_EQ(std::set<int>(shown.begin(), shown.end()).size(), std::size_t{frames}) << rate;
        for (int number = 0; number < frames; ++number) // none is on show for a frame less than it could be
            ASSERT_GE(std::ranges::count(shown, number), std::floor(60 / value)) << number << " at " << rate;
    }
}

// Of a take remuxed into Matroska: its times are what was, to the millisecond.
TEST(FrameClock, aRecordingOfAChangingRateKeepsItsTimes) {
    TemporaryFolder folder;
    std::mt19937 random(11);
    for (auto const longest : {0.004, 0.05}) {
        std::vector<double> times{0};
        while (times.size() < 300)
            times.push_back(times.back() + 1 / 60.0 + std::uniform_real_distribution(0.0, longest)(random));
        auto settings = smallMovie();
        settings.fps = 60;
        auto const take = folder.path() / "take.mp4";
        auto const film = folder.path() / "take.mkv";
        writeNumbered(take, settings, times);
        if (!runFFmpeg("-i '" + take.string() + "' -c copy '" + film.string() + "'"))
            GTEST_SKIP() << "no ffmpeg program";
        MovieReader reader(film);
        for (std::size_t n = 0; n < times.size(); ++n) {
            auto const frame = reader.frame(times[n]);
            ASSERT_EQ(numberOf(frame), n);
            auto const milliseconds = frame.presentationTime() * 1000;
            ASSERT_NEAR(milliseconds, times[n] * 1000, 1.001) << "frame " << n;
            ASSERT_NEAR(milliseconds, std::round(milliseconds), 1e-6) << "frame " << n;
        }
    }
}

}
}
