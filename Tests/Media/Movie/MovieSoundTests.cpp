#include "../Audio/TestSounds.h"
#include "NumberedMovie.h"

#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Frames/EncoderPicture.h>

#include <gtest/gtest.h>

#include <fstream>

#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

class MovieSoundTest : public testing::Test {
protected:
    MovieSoundTest() { fs::create_directories(folder); }
    ~MovieSoundTest() override { fs::remove_all(folder); }

    fs::path const folder = fs::path(testing::TempDir()) / ("tavaro-sound-" + std::to_string(getpid()));

    /// Numbers at 30 frames a second with that sound, given in step.
    fs::path written(std::string const& name, MovieWriterSettings const& settings, Sound const& sound, int frames) {
        auto const file = folder / name;
        MovieWriter writer(file, settings);
        std::size_t heard = 0;
        for (int n = 0; n < frames; ++n) {
            auto const until = std::min(sound.size(), static_cast<std::size_t>((n + 1) * audioRate / 30));
            writer.appendAudio(std::span(sound).subspan(heard, until - heard));
            heard = until;
            auto picture = writer.picture();
            fillPicture(picture, numberedImage(settings.width, settings.height, n).view());
            writer.append(std::move(picture), n / 30.0);
        }
        EXPECT_EQ(writer.samplesAppended(), std::ssize(sound));
        writer.finish();
        return file;
    }
};

struct Kind {
    char const* name;
    MovieContainer container;
    MovieCodec codec;
    MovieSound sound;
};

constexpr Kind kinds[] = {
    {"h264.mp4", MovieContainer::mp4, MovieCodec::h264, MovieSound::aac},
    {"hevc.mov", MovieContainer::mov, MovieCodec::hevc, MovieSound::aac},
    {"prores.mov", MovieContainer::mov, MovieCodec::proRes422, MovieSound::pcm},
};

TEST_F(MovieSoundTest, soundAndPictureBeginAndEndTogetherInEveryKindOfMovie) {
    std::vector<std::int64_t> const places{2'400, 48'000, 118'000};
    auto const sound = ticks(2.5, places);
    for (auto const& kind : kinds) {
        auto settings = smallMovie();
        settings.container = kind.container;
        settings.codec = kind.codec;
        settings.sound = kind.sound;
        auto const file = written(kind.name, settings, sound, 75);
        MovieReader reader(file);
        EXPECT_TRUE(reader.info().hasAudio);
        EXPECT_NEAR(reader.info().duration, 2.5, 1e-3) << kind.name;
        EXPECT_EQ(numberAt(reader, 48'000.0 / audioRate), 30) << kind.name;
        auto const heard = soundOf(file);
        EXPECT_NEAR(std::ssize(heard), std::ssize(sound), 1024) << kind.name;
        auto const found = peaks(heard, 0.4);
        ASSERT_EQ(found.size(), places.size()) << kind.name;
        for (std::size_t i = 0; i < places.size(); ++i) EXPECT_NEAR(found[i], places[i], 1) << kind.name;
        // What players go by.
        auto const starts = probed(file, "stream=start_time,duration");
        EXPECT_NE(starts.find("start_time=0.000000"), std::string::npos) << starts;
        fs::path const list = folder / "streams.txt";
        auto const command =
            "ffprobe -v error -select_streams a:0 -show_entries stream=start_time,duration -of csv=p=0 '" +
            file.string() + "' > '" + list.string() + "'";
        ASSERT_EQ(std::system(command.c_str()), 0);
        EXPECT_EQ(bytesOf(list), "0.000000,2.500000\n") << kind.name;
    }
}

TEST_F(MovieSoundTest, pictureAndSoundLieSideBySideInTheFile) {
    auto settings = smallMovie();
    settings.sound = MovieSound::aac;
    auto const file = written("side.mp4", settings, tone(4, 440), 120);
    auto const command =
        "ffprobe -v error -show_entries packet=codec_type,dts_time,pos -of csv=p=0:nk=1 '" + file.string() + "'";
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    double times[2] = {0, 0};
    char type[16] = {};
    double time = 0;
    long long place = 0, last = 0;
    int lines = 0;
    char line[256];
    while (std::fgets(line, sizeof line, pipe.get())) {
        if (std::sscanf(line, "%15[^,],%lf,%lld", type, &time, &place) != 3) continue;
        ++lines;
        times[type[0] == 'a'] = time;
        EXPECT_GT(place, last) << "packets are read in the order they lie";
        last = place;
        EXPECT_NEAR(times[0], times[1], 1.1) << "at byte " << place;
    }
    EXPECT_GT(lines, 250);
}

TEST_F(MovieSoundTest, aMovieBegunWithoutSoundRefusesIt) {
    MovieWriter writer(folder / "mute.mp4", smallMovie());
    EXPECT_THROW(writer.appendAudio(tone(0.1, 440)), MediaError);
    auto settings = smallMovie();
    settings.sound = MovieSound::pcm;
    EXPECT_THROW(MovieWriter(folder / "pcm.mp4", settings), MediaError);
}

}

}
