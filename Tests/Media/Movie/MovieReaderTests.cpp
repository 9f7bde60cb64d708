#include <algorithm>
#include <numeric>
#include <random>

#include <cmath>
#include <ctime>

#include <gmock/gmock.h>

#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <Tests/Capture/TemporaryFolder.h>
#include <Tests/Media/Movie/NumberedMovie.h>

namespace tavaro {
namespace {

using Kind = MediaError::Kind;

// Forward, backward, at random, at both ends of each frame's time, before the first and after the last.
void expectEveryFrame(std::filesystem::path const& file, int count, double fps) {
    MovieReader reader(file);
    SCOPED_TRACE(file.filename());
    EXPECT_NEAR(reader.info().duration, count / fps, 0.5 / fps);
    std::vector<int> order(static_cast<std::size_t>(count));
    std::iota(order.begin(), order.end(), 0);
    auto const check = [&](char const* how) {
        for (auto const n : order) {
            ASSERT_EQ(numberAt(reader, n / fps), n) << how;
            ASSERT_EQ(numberAt(reader, (n + 0.9) / fps), n) << how;
        }
    };
    check("forward");
    std::ranges::reverse(order);
    check("backward");
    std::mt19937 random(7);
    std::ranges::shuffle(order, random);
    check("shuffled with seed 7");
    EXPECT_EQ(numberAt(reader, -5), 0);
    EXPECT_EQ(numberAt(reader, 1e9), count - 1);
    EXPECT_EQ(numberAt(reader, std::nan("")), 0);
}

TEST(MovieReader, frameNIsOnShowAtItsTimeInAnyOrderOfReading) {
    TemporaryFolder folder;
    for (auto const codec : {MovieCodec::h264, MovieCodec::hevc, MovieCodec::proRes422}) {
        auto settings = smallMovie();
        settings.codec = codec;
        settings.container = MovieContainer::mov;
        auto const file = folder.path() / "numbered.mov";
        writeNumbered(file, settings, steadyTimes(50, 30));
        expectEveryFrame(file, 50, 30);
    }
}

// Reordered and open groups of pictures, coarse clocks, clocks that do not start at 0, containers without an index.
TEST(MovieReader, moviesOfOtherMakersAreReadFrameByFrameToo) {
    TemporaryFolder folder;
    auto const source = folder.path() / "source.mp4";
    writeNumbered(source, smallMovie(), steadyTimes(50, 30));
    auto const input = "-i '" + source.string() + "' ";
    struct Case {
        char const* name;
        char const* arguments;
    };
    Case const cases[] = {
        {"reordered.mp4", "-c:v libx264 -bf 3 -g 18"},
        {"open groups.mp4", "-c:v libx264 -bf 3 -g 12 -x264-params open-gop=1"},
        {"open hevc.mov", "-c:v libx265 -g 12 -x265-params open-gop=1:bframes=4:log-level=none"},
        {"late start.mp4", "-c:v libx264 -bf 2 -output_ts_offset 3.21"},
        {"coarse.mkv", "-c:v libx264 -bf 3 -g 18"},
        {"late.mkv", "-c:v libx264 -g 18 -output_ts_offset 7"},
        {"no index.ts", "-c:v libx264 -bf 2 -g 18"},
        {"old.avi", "-c:v mpeg4 -g 12 -qscale 3"},
        {"mpeg2.mpg", "-c:v mpeg2video -bf 2 -g 12 -qscale 2"},
        {"all key.avi", "-c:v mjpeg -qscale 2"},
        {"vp9.webm", "-c:v libvpx-vp9 -deadline realtime -cpu-used 8 -g 18 -b:v 2M"},
        {"fragments.mp4", "-c:v libx264 -bf 2 -g 12 -movflags +frag_keyframe+empty_moov"},
        {"animation.apng", "-c:v apng -plays 1"},
        {"elementary.h264", "-c:v libx264 -bf 0 -g 18"},
    };
    if (!runFFmpeg("-version > /dev/null")) GTEST_SKIP() << "no ffmpeg program";
    for (auto const& [name, arguments] : cases) {
        auto const file = folder.path() / name;
        ASSERT_TRUE(runFFmpeg(input + arguments + " '" + file.string() + "'")) << name;
        expectEveryFrame(file, 50, 30);
    }
}

TEST(MovieReader, aFrameStaysOnShowThroughAGapUntilTheNextOneStarts) {
    TemporaryFolder folder;
    auto const file = folder.path() / "gaps.mov";
    std::vector<double> const times = {0, 0.1, 0.5, 3.0, 3 + 1 / 60.0, 11, 11.25};
    auto settings = smallMovie();
    settings.fps = 60;
    settings.keyFrameInterval = 3;
    writeNumbered(file, settings, times);
    MovieReader reader(file);
    EXPECT_EQ(reader.info().frameCount, 7);
    for (auto const seed : {1u, 2u, 3u}) {
        std::mt19937 random(seed);
        for (int i = 0; i < 100; ++i) {
            auto const time = std::uniform_real_distribution(0.0, 12.0)(random);
            auto const expected = std::ranges::upper_bound(times, time) - times.begin() - 1;
            ASSERT_EQ(numberAt(reader, time), expected) << "at " << time << ", seed " << seed;
        }
    }
}

TEST(MovieReader, theSameFrameHasTheSameIdentityHoweverItIsReached) {
    TemporaryFolder folder;
    auto const file = folder.path() / "numbered.mp4";
    writeNumbered(file, smallMovie(), steadyTimes(60, 30));
    MovieReader reader(file);
    MovieReader other(file);
    std::vector<std::uint64_t> identities;
    for (int n = 0; n < 60; ++n) identities.push_back(reader.frame(n / 30.0).identity());
    EXPECT_EQ(reader.frame(40 / 30.0).identity(), identities[40]);
    EXPECT_EQ(reader.frame(3 / 30.0).identity(), identities[3]);
    EXPECT_EQ(reader.frame(3.5 / 30.0).identity(), identities[3]);
    EXPECT_NE(other.frame(3 / 30.0).identity(), identities[3]);
    std::ranges::sort(identities);
    EXPECT_EQ(std::ranges::adjacent_find(identities), identities.end());
}

double processSeconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

TEST(MovieReader, whoKeepsEarlierPicturesGoesBackWithoutDecodingThemAgain) {
    TemporaryFolder folder;
    auto const file = folder.path() / "numbered.mp4";
    auto settings = smallMovie();
    settings.keyFrameInterval = 40;
    writeNumbered(file, settings, steadyTimes(80, 30));
    auto const back = [&](std::size_t bytes) {
        MovieReader reader(file, {.earlierBytes = bytes});
        double const before = processSeconds();
        for (int n = 79; n >= 0; --n) EXPECT_EQ(numberAt(reader, n / 30.0), n) << bytes;
        return processSeconds() - before;
    };
    constexpr std::size_t picture = 320 * 180 * 3 / 2;
    double const none = back(0), some = back(20 * picture);
    EXPECT_LT(some, 0.7 * none);
    // However few are kept, and wherever one comes from.
    std::mt19937 random(3);
    for (std::size_t const bytes : {std::size_t{1}, 3 * picture, 1000 * picture}) {
        MovieReader reader(file, {.earlierBytes = bytes});
        int at = 40;
        for (int i = 0; i < 100; ++i) {
            at = random() % 10 ? std::clamp(at + static_cast<int>(random() % 9) - 5, 0, 79)
                               : static_cast<int>(random() % 80);
            ASSERT_EQ(numberAt(reader, at / 30.0), at) << bytes;
        }
    }
}

TEST(MovieReader, aTurnedPictureIsShownUpright) {
    TemporaryFolder folder;
    auto const source = folder.path() / "source.mp4";
    writeNumbered(source, smallMovie(), {0, 0.5});
    auto const turned = folder.path() / "turned.mp4";
    if (!runFFmpeg("-i '" + source.string() + "' -c copy -metadata:s:v rotate=90 '" + turned.string() + "'"))
        GTEST_SKIP() << "no ffmpeg program";
    MovieReader upright(source);
    MovieReader reader(turned);
    EXPECT_EQ(reader.info().width, 180);
    EXPECT_EQ(reader.info().height, 320);
    auto const right = probed(turned, "stream_side_data=rotation");
    FrameConverter converter;
    Image before;
    Image after;
    converter.convert(upright.frame(0), before);
    converter.convert(reader.frame(0), after);
    auto const isClockwise = right.find("rotation=-90") != std::string::npos;
    for (auto const& [x, y] : {std::pair{3, 5}, {100, 60}, {300, 170}, {7, 120}}) {
        auto const* expected = before.row(y) + 4 * x;
        auto const* seen = isClockwise ? after.row(x) + 4 * (179 - y) : after.row(319 - x) + 4 * y;
        EXPECT_NEAR(seen[1], expected[1], 3) << x << ", " << y;
    }
}

TEST(MovieReader, whatIsNoMovieIsRefusedWithASentence) {
    TemporaryFolder folder;
    auto const garbage = folder.path() / "garbage.mp4";
    writeBytes(garbage, std::string(5000, 'x'));
    auto const empty = folder.path() / "empty.mp4";
    writeBytes(empty, "");
    auto const playlist = folder.path() / "playlist.m3u8";
    writeBytes(playlist, "#EXTM3U\n#EXTINF:1,\nsecret.mp4\n#EXT-X-ENDLIST\n");
    struct Case {
        std::filesystem::path file;
        Kind kind;
        char const* sentence;
    };
    std::vector<Case> cases = {
        {folder.path() / "none.mp4", Kind::missing, "Could not read 'none.mp4': there is no such file or folder."},
        {garbage, Kind::unreadable, "Could not read 'garbage.mp4': it is damaged, or not a movie."},
        {empty, Kind::unreadable, "Could not read 'empty.mp4': it is empty."},
        {playlist, Kind::unreadable, "Could not read 'playlist.m3u8': it is damaged, or not a movie."},
        {folder.path(), Kind::unreadable, nullptr},
        {"/dev/zero", Kind::unreadable, "Could not read 'zero': it is not a plain file."},
    };
    auto const sound = folder.path() / "sound.m4a";
    if (runFFmpeg("-f lavfi -i sine=duration=1 '" + sound.string() + "'"))
        cases.push_back({sound, Kind::noVideoTrack, "The movie 'sound.m4a' has no video track."});
    for (auto const& [file, kind, sentence] : cases) {
        try {
            MovieReader reader(file);
            ADD_FAILURE() << file << " was opened";
        } catch (MediaError const& error) {
            EXPECT_EQ(error.kind(), kind) << file;
            EXPECT_FALSE(error.detail().empty()) << file;
            if (sentence) {
                EXPECT_STREQ(error.what(), sentence);
            }
        }
    }
}

// A cut movie gives the frames that are whole, and never a later or a torn one; or it is refused.
void expectHonestAtAnyLength(std::filesystem::path const& whole, int count, int fps, bool mustReadSome) {
    TemporaryFolder folder;
    auto const bytes = bytesOf(whole);
    auto const file = folder.path() / ("cut" + whole.extension().string());
    int opened = 0;
    for (int part = 0; part < 60; ++part) {
        auto const length =
            bytes.size() * static_cast<std::size_t>(part) / 60 + static_cast<std::size_t>(part * 7 % 13);
        writeBytes(file, std::string_view(bytes).substr(0, length));
        try {
            MovieReader reader(file);
            ++opened;
            auto const last = numberAt(reader, 1e6);
            ASSERT_GE(last, 0) << length;
            ASSERT_LE(reader.info().duration, (last + 1.5) / fps) << length;
            for (int n = 0; n < count; n += 7)
                ASSERT_EQ(numberAt(reader, n / double(fps)), std::min(n, last)) << length;
        } catch (MediaError const& error) {
            EXPECT_EQ(error.kind(), Kind::unreadable) << error.what();
        }
    }
    EXPECT_TRUE(opened > 20 || !mustReadSome) << opened;
}

TEST(MovieReader, aMovieCutShortShowsWhatIsThere) {
    TemporaryFolder folder;
    auto const finished = folder.path() / "finished.mp4";
    writeNumbered(finished, smallMovie(), steadyTimes(120, 30));
    expectHonestAtAnyLength(finished, 120, 30, true);
    auto settings = smallMovie();
    settings.intent = MovieIntent::live;
    settings.container = MovieContainer::mov;
    auto const live = folder.path() / "live.mov";
    writeNumbered(live, settings, steadyTimes(120, 30));
    expectHonestAtAnyLength(live, 120, 30, true);
}

// Any bytes give frames or a sentence; a fault here shows as a crash, a sanitizer's report or the test's time limit.
TEST(MovieReader, damagedMoviesNeverCrash) {
    TemporaryFolder folder;
    auto settings = smallMovie();
    settings.width = 64;
    settings.height = 48;
    auto const finished = folder.path() / "finished.mp4";
    writeNumbered(finished, settings, steadyTimes(20, 30));
    settings.intent = MovieIntent::live;
    auto const live = folder.path() / "live.mp4";
    writeNumbered(live, settings, steadyTimes(20, 30));
    auto const damaged = folder.path() / "damaged.mp4";
    for (unsigned seed = 0; seed < 400; ++seed) {
        std::mt19937 random(seed);
        SCOPED_TRACE(seed);
        auto bytes = bytesOf(seed % 2 == 0 ? finished : live);
        auto const anywhere = [&] { return random() % bytes.size(); };
        for (auto changes = 1 + random() % 12; changes > 0; --changes) {
            auto const at = seed % 4 < 2 ? anywhere() : anywhere() % 1200; // the index stands in front
            bytes[at] = static_cast<char>(random() % 3 == 0 ? 0xFF : random());
        }
        if (seed % 5 == 0) bytes.erase(anywhere(), anywhere() % 64);
        writeBytes(damaged, bytes);
        try {
            MovieReader reader(damaged, {.threads = 1});
            for (auto const time : {0.0, 0.5, 0.2, 1e9, 0.0}) EXPECT_FALSE(reader.frame(time).isEmpty());
        } catch (MediaError const& error) {
            EXPECT_FALSE(error.detail().empty());
        }
    }
}

}
}
