#include <cmath>
#include <csignal>
#include <cstdio>

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <TavaroMedia/Errors/MediaError.h>
#include <Tests/Capture/TemporaryFolder.h>
#include <Tests/Media/Files/FullDisk.h>
#include <Tests/Media/Movie/NumberedMovie.h>

namespace tavaro {
namespace {

using Kind = MediaError::Kind;
using testing::HasSubstr;

void appendNumbered(MovieWriter& writer, int number, double time) {
    auto picture = writer.picture();
    fillPicture(picture, numberedImage(writer.width(), writer.height(), number).view());
    writer.append(std::move(picture), time);
}

TEST(MovieWriter, theMovieCarriesSizeRateProfileAndColours) {
    struct Case {
        MovieCodec codec;
        MovieContainer container;
        std::vector<char const*> facts;
    };
    std::vector<Case> const cases = {
        {MovieCodec::h264,
         MovieContainer::mp4,
         {"codec_name=h264", "profile=High", "codec_tag_string=avc1", "has_b_frames=0", "pix_fmt=yuv420p",
          "chroma_location=left"}},
        {MovieCodec::hevc,
         MovieContainer::mp4,
         {"codec_name=hevc", "profile=Main", "codec_tag_string=hvc1", "pix_fmt=yuv420p"}},
        {MovieCodec::proRes422,
         MovieContainer::mov,
         {"codec_name=prores", "codec_tag_string=apcn", "pix_fmt=yuv422p10le"}},
    };
    TemporaryFolder folder;
    if (!runFFmpeg("-version > /dev/null")) GTEST_SKIP() << "no ffmpeg program";
    for (auto const& [codec, container, facts] : cases) {
        auto settings = smallMovie();
        settings.codec = codec;
        settings.container = container;
        settings.width = 321; // rounded down
        settings.height = 181;
        auto const file = folder.path() / "movie";
        writeNumbered(file, settings, steadyTimes(45, 30));
        auto const text = probed(file, "stream:format=format_name,duration");
        for (auto const* fact : facts) EXPECT_THAT(text, HasSubstr(std::string(fact) + "\n"));
        for (auto const* fact : {"width=320", "height=180", "avg_frame_rate=30/1", "r_frame_rate=30/1", "nb_frames=45",
                                 "duration=1.500000", "color_range=tv", "color_space=bt709", "color_transfer=bt709",
                                 "color_primaries=bt709", "sample_aspect_ratio=1:1"})
            EXPECT_THAT(text, HasSubstr(std::string(fact) + "\n"));
        auto const bytes = bytesOf(file);
        EXPECT_LT(bytes.find("moov"), bytes.find("mdat")) << "the index stands behind the pictures";
    }
}

TEST(MovieWriter, theAverageBitRateIsKeptAndKeyFramesComeInTime) {
    TemporaryFolder folder;
    auto const file = folder.path() / "movie.mp4";
    for (auto const codec : {MovieCodec::h264, MovieCodec::hevc}) {
        auto settings = smallMovie();
        settings.codec = codec;
        settings.bitrate = 300'000;
        settings.keyFrameInterval = 0;
        writeNumbered(file, settings, steadyTimes(240, 30));
        auto const rate = static_cast<double>(std::filesystem::file_size(file)) * 8 / 8.0;
        EXPECT_NEAR(rate, 300'000, 60'000);
        auto const flags = probed(file, "packet=flags");
        std::size_t sinceKey = 0;
        for (std::size_t at = 0; (at = flags.find("flags=", at)) != std::string::npos; at += 6) {
            sinceKey = flags[at + 6] == 'K' ? 0 : sinceKey + 1;
            ASSERT_LT(sinceKey, 60u);
        }
    }
}

TEST(MovieWriter, nothingIsLeftOfAMovieThatWasNotFinished) {
    TemporaryFolder folder;
    auto const file = folder.path() / "movie.mp4";
    writeBytes(file, "what was there");
    {
        MovieWriter writer(file, smallMovie());
        for (int n = 0; n < 10; ++n) appendNumbered(writer, n, n / 30.0);
        EXPECT_EQ(bytesOf(file), "what was there");
    }
    EXPECT_EQ(bytesOf(file), "what was there");
    EXPECT_EQ(filesIn(folder.path()), 1);
}

TEST(MovieWriter, aTimeThatDoesNotRiseIsRefusedAndTheMovieGoesOn) {
    TemporaryFolder folder;
    auto const file = folder.path() / "movie.mp4";
    MovieWriter writer(file, smallMovie());
    appendNumbered(writer, 0, 0);
    appendNumbered(writer, 1, 0.5);
    for (auto const time : {0.5, 0.2, -1.0, std::nan(""), 1e300}) {
        try {
            appendNumbered(writer, 99, time);
            ADD_FAILURE() << time << " was taken";
        } catch (MediaError const& error) {
            EXPECT_EQ(error.kind(), Kind::refused) << error.what();
        }
    }
    appendNumbered(writer, 2, 0.75);
    EXPECT_EQ(writer.framesAppended(), 3);
    writer.finish(2.0);
    MovieReader reader(file);
    EXPECT_EQ(reader.info().frameCount, 3);
    EXPECT_NEAR(reader.info().duration, 2.0, 0.001);
    EXPECT_EQ(numberAt(reader, 0.6), 1);
    EXPECT_EQ(numberAt(reader, 1.9), 2);
}

TEST(MovieWriter, settingsThatMakeNoMovieAreRefused) {
    TemporaryFolder folder;
    auto const file = folder.path() / "movie.mp4";
    auto const refused = [&](auto change) {
        auto settings = smallMovie();
        change(settings);
        EXPECT_THROW(MovieWriter(file, settings), MediaError);
    };
    refused([](auto& settings) { settings.width = 1; });
    refused([](auto& settings) { settings.height = 0; });
    refused([](auto& settings) { settings.width = 100'000; });
    refused([](auto& settings) { settings.fps = 0; });
    refused([](auto& settings) { settings.bitrate = 0; });
    refused([](auto& settings) { settings.codec = MovieCodec::proRes422; });
    MovieWriter writer(file, smallMovie());
    EXPECT_THROW(writer.finish(), MediaError); // no frame
    EXPECT_EQ(filesIn(folder.path()), 1);      // the open writer's own
}

TEST(MovieWriter, aFullDiskOrABadFolderStopsWithASentence) {
    TemporaryFolder folder;
    for (auto const intent : {MovieIntent::finished, MovieIntent::live}) {
        auto settings = smallMovie();
        settings.intent = intent;
        try {
            FullDisk const full(150'000);
            writeNumbered(folder.path() / "movie.mp4", settings, steadyTimes(120, 30));
            ADD_FAILURE() << "the movie was written";
        } catch (MediaError const& error) {
            EXPECT_EQ(error.kind(), Kind::diskFull) << error.what();
            EXPECT_THAT(error.what(), testing::StartsWith("Could not write 'movie.mp4': "));
        }
        EXPECT_EQ(filesIn(folder.path()), intent == MovieIntent::live ? 1 : 0);
    }
    try {
        MovieWriter writer(folder.path() / "none" / "movie.mp4", smallMovie());
        ADD_FAILURE() << "a folder that is not there was written to";
    } catch (MediaError const& error) {
        EXPECT_EQ(error.kind(), Kind::notWritable);
        EXPECT_EQ(error.detail(), "there is no folder '" + (folder.path() / "none").string() + "'");
    }
}

// The writer's process is killed in the middle of a frame's append, without any of its destructors.
TEST(MovieWriter, aKilledTakeIsReadableUpToItsLastSecond) {
    TemporaryFolder folder;
    auto const file = folder.path() / "take.mov";
    auto settings = smallMovie();
    settings.container = MovieContainer::mov;
    settings.intent = MovieIntent::live;
    constexpr int appended = 137;
    auto const child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        MovieWriter writer(file, settings);
        for (int n = 0; n < appended; ++n) appendNumbered(writer, n, n / 30.0);
        raise(SIGKILL);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    MovieReader reader(file);
    auto const last = numberAt(reader, 1e6);
    EXPECT_GE(last, appended - 30);
    EXPECT_GT(reader.info().duration, (appended - 30) / 30.0);
    for (int n = 0; n <= last; n += 5) ASSERT_EQ(numberAt(reader, n / 30.0), n);
}

}
}
