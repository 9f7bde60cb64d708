#include "TestSounds.h"

#include "../Movie/NumberedMovie.h"

#include <TavaroMedia/Audio/AudioFileWriter.h>
#include <TavaroMedia/Errors/MediaError.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;
using Kind = MediaError::Kind;

class AudioReaderTest : public testing::Test {
protected:
    AudioReaderTest() { fs::create_directories(folder); }
    ~AudioReaderTest() override { fs::remove_all(folder); }

    fs::path const folder = fs::path(testing::TempDir()) / ("tavaro-audio-" + std::to_string(getpid()));
    fs::path file(std::string const& name) const { return folder / name; }

    /// The ticks as the named file has them, encoded by a line of FFmpeg's options.
    Sound converted(std::string const& name, std::string const& options) {
        if (!runFFmpeg("-i '" + file("source.caf").string() + "' " + options + " '" + file(name).string() + "'"))
            return {};
        return soundOf(file(name));
    }
};

std::vector<std::int64_t> const places{4'800, 24'000, 100'000, 143'000, 230'000};

struct Variant {
    char const* name;
    char const* options;
    double loss; // largest difference of a sample's place
};

constexpr Variant variants[] = {
    {"a.wav", "-c:a pcm_s16le", 0},
    {"b.flac", "-c:a flac", 0},
    {"c.m4a", "-c:a aac -b:a 192k", 1},
    {"d.mka", "-c:a aac -b:a 192k", 1024}, // nothing in it tells what the encoder put before the sound
    {"e.mp3", "-c:a libmp3lame -b:a 192k", 1},
    {"f.ogg", "-c:a libvorbis", 1},
    {"g.mka", "-c:a libopus", 48},
    {"h.wav", "-ar 44100 -c:a pcm_s24le", 1},
    {"i.m4a", "-ar 44100 -c:a aac -b:a 192k", 1},
    {"j.wav", "-ar 16000 -af 'pan=mono|c0=FL' -c:a pcm_f32le", 1},
    {"k.caf", "-ar 96000 -c:a pcm_s24be", 1},
    {"l.aiff", "-af 'pan=mono|c0=FL' -c:a pcm_s16be", 0},
    {"m.ts", "-c:a aac -b:a 192k", 1024}, // the same
};

TEST_F(AudioReaderTest, aTickKeepsItsPlaceInEveryKindOfFile) {
    writeSound(file("source.caf"), ticks(5, places));
    for (auto const& variant : variants) {
        auto const sound = converted(variant.name, variant.options);
        if (sound.empty()) continue; // an encoder that is not installed
        auto const found = peaks(sound, 0.4);
        ASSERT_EQ(found.size(), places.size()) << variant.name;
        for (std::size_t i = 0; i < places.size(); ++i) EXPECT_NEAR(found[i], places[i], variant.loss) << variant.name;
        auto const& [left, right] = sound[static_cast<std::size_t>(found[1])];
        EXPECT_NEAR(left, 0.8, 0.06) << variant.name << ": as loud as it was";
        EXPECT_NEAR(right, left, 0.01) << variant.name;
    }
}

TEST_F(AudioReaderTest, aSampleIsTheSameWhetherJumpedToOrReadUpTo) {
    writeSound(file("source.caf"), sum(syllables(8), noise(8, 0.05)));
    for (auto const& variant : variants) {
        auto const whole = converted(variant.name, variant.options);
        if (whole.empty()) continue;
        AudioReader reader(file(variant.name));
        std::mt19937 random(7);
        for (int turn = 0; turn < 25; ++turn) {
            auto const position = static_cast<std::int64_t>(random() % whole.size());
            Sound part(1 + random() % 3000);
            auto const count = reader.read(position, part);
            EXPECT_EQ(count, std::min(part.size(), whole.size() - static_cast<std::size_t>(position)));
            double difference = 0;
            for (std::size_t n = 0; n < count; ++n) {
                difference = std::max(difference, std::abs(double{part[n].left} - whole[position + n].left));
            }
            // A decoder of AAC makes up the noise between the tones; no other may differ.
            bool const isAAC = std::string(variant.options).find("-c:a aac") != std::string::npos;
            ASSERT_LE(difference, isAAC ? 0.04 : 1e-6) << variant.name << " at " << position << ", seed 7";
        }
    }
}

TEST_F(AudioReaderTest, aVoiceKeepsItsLevelInWhateverChannelItSpeaks) {
    writeSound(file("source.caf"), tone(1, 440), 1);
    struct Heard {
        char const* layout;
        char const* channel;
        double left; // decibels against what it is in its channel; −200: not at all
        double right;
    };
    constexpr double off = -200;
    for (auto const& heard :
         {Heard{"mono", "c0", 0, 0}, Heard{"3.0", "FC", 0, 0}, Heard{"5.1", "FC", 0, 0}, Heard{"5.1", "FL", 0, off},
          Heard{"5.1", "BR", off, -3.01}, Heard{"5.1(side)", "FC", 0, 0}, Heard{"5.1(side)", "SL", -3.01, off},
          Heard{"5.1", "LFE", off, off}, Heard{"7.1", "FC", 0, 0}, Heard{"7.1", "FR", off, 0},
          Heard{"7.1", "SL", -3.01, off}, Heard{"7.1", "BL", -3.01, off}, Heard{"quad", "FL", 0, off},
          Heard{"quad", "BL", -3.01, off}}) {
        for (auto const* codec : {"pcm_s16le", "pcm_f32le"}) {
            auto const sound = converted("layout.wav", std::string("-af 'pan=") + heard.layout + "|" + heard.channel +
                                                           "=0.5*c0' -c:a " + codec);
            auto const where = std::string(heard.layout) + " " + heard.channel + " " + codec;
            ASSERT_EQ(sound.size(), 48'000u) << where;
            Sound left = sound;
            Sound right = sound;
            for (auto& sample : left) sample.right = sample.left;
            for (auto& sample : right) sample.left = sample.right;
            EXPECT_NEAR(std::max(level(left), off), heard.left == off ? off : heard.left - 15.05, 0.05) << where;
            EXPECT_NEAR(std::max(level(right), off), heard.right == off ? off : heard.right - 15.05, 0.05) << where;
        }
    }
}

TEST_F(AudioReaderTest, soundThatBeginsAfterThePictureComesAsMuchLater) {
    writeSound(file("source.caf"), ticks(2, {4'800}));
    writeNumbered(file("picture.mp4"), smallMovie(), steadyTimes(90, 30));
    for (auto const* ending : {"mp4", "mkv"}) {
        auto const movie = file(std::string("both.") + ending);
        ASSERT_TRUE(runFFmpeg("-i '" + file("picture.mp4").string() + "' -itsoffset 0.5 -i '" +
                              file("source.caf").string() + "' -map 0:v -map 1:a -c:v copy -c:a aac '" +
                              movie.string() + "'"));
        auto const found = peaks(soundOf(movie), 0.4);
        ASSERT_EQ(found.size(), 1u) << ending;
        EXPECT_NEAR(found[0], 4'800 + 24'000, 48) << ending;
    }
}

TEST_F(AudioReaderTest, whatIsOutsideTheSoundIsSilence) {
    writeSound(file("one.caf"), tone(1, 440));
    AudioReader reader(file("one.caf"));
    Sound part(96'000);
    EXPECT_EQ(reader.read(-24'000, part), 72'000u);
    EXPECT_EQ(peak(std::span(part).first(24'000)), 0);
    EXPECT_EQ(peak(std::span(part).subspan(72'000)), 0);
    EXPECT_NEAR(level(std::span(part).subspan(24'000, 48'000)), -9.03, 0.01);
    EXPECT_EQ(reader.read(1'000'000'000'000, part), 0u);
    EXPECT_EQ(peak(part), 0);
}

template<class Call> std::pair<Kind, std::string> failure(Call const& call) {
    try {
        call();
    } catch (MediaError const& error) {
        return {error.kind(), error.what()};
    }
    return {Kind::diskFull, "no failure"};
}

TEST_F(AudioReaderTest, whatHasNoSoundToReadSaysWhy) {
    auto const reading = [&](std::string const& name) { return failure([&] { AudioReader reader(file(name)); }); };
    EXPECT_EQ(reading("gone.wav"),
              std::pair(Kind::missing, std::string("Could not read the audio track: there is no such file or folder")));
    writeBytes(file("text.wav"), "this is no sound, but a line of text");
    EXPECT_EQ(reading("text.wav").second.rfind("Could not read the audio track: ", 0), 0u);
    writeNumbered(file("silent.mp4"), smallMovie(), steadyTimes(3, 30));
    EXPECT_EQ(reading("silent.mp4"),
              std::pair(Kind::noAudioTrack, std::string("Could not read the audio track: the file has no sound")));
    writeSound(file("empty.caf"), {});
    EXPECT_EQ(reading("empty.caf"), std::pair(Kind::emptyAudioTrack, std::string("The audio track is empty.")));
}

TEST_F(AudioReaderTest, aFileCutShortPlaysAsFarAsItGoes) {
    writeSound(file("source.caf"), tone(6, 440));
    for (auto const* name : {"cut.wav", "cut.flac", "cut.mp3", "cut.mka", "cut.m4a"}) {
        auto const whole = converted(name, std::string(name) == "cut.m4a" ? "-movflags +faststart" : "");
        ASSERT_FALSE(whole.empty()) << name;
        auto const bytes = bytesOf(file(name));
        writeBytes(file(name), std::string_view(bytes).substr(0, bytes.size() / 2));
        auto const half = soundOf(file(name));
        EXPECT_NEAR(static_cast<double>(std::ssize(half)), 0.5 * static_cast<double>(std::ssize(whole)), audioRate)
            << name;
        EXPECT_NEAR(level(std::span(half).subspan(24'000, 48'000)), -9.03, 0.6) << name;
    }
}

}

}
