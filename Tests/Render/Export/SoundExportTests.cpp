#include "../../Media/Audio/TestSounds.h"
#include "TestTake.h"

#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/Exporter.h>

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace tavaro {

namespace {

/// A take of three seconds with ticks on its system track.
struct SoundTake : TestTake {
    explicit SoundTake(std::string const& name) : TestTake(name) {
        writeSound(package.assetURL("system.caf"), ticks(3, {9'600, 60'000, 100'000}));
        project.audioTracks = {{.role = AudioRole::system, .clips = {{.asset = "system.caf", .duration = 3}}}};
        settings.includesAudio = true;
        options.soundCache = folder / "Take.recproj" / "cache";
    }

    ExporterOptions options;

    std::filesystem::path exported(std::string const& name = "out.mp4", Exporter::Progress const& progress = {}) {
        return Exporter(project, package, settings, options).exportMovie(output(name), progress);
    }
};

std::string bytesOf(std::filesystem::path const& file) {
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
}

template<class Call> std::pair<ExportError::Kind, std::string> failure(Call const& call) {
    try {
        call();
    } catch (ExportError const& error) {
        return {error.kind(), error.what()};
    }
    return {ExportError::Kind::alreadyExporting, "no failure"};
}

TEST(SoundExport, soundComesWithItsPictureAndBothEndTogether) {
    SoundTake take("sound");
    take.project.timeline.clips = {{.asset = "screen.mp4", .duration = 1},
                                   {.asset = "screen.mp4", .start = 1, .sourceStart = 1.5, .duration = 1.5}};
    take.project.audioTracks[0].clips = {{.asset = "system.caf", .duration = 1},
                                         {.asset = "system.caf", .start = 1, .sourceStart = 1.5, .duration = 1.5}};
    take.project.intro = TitleCard{.text = "Hello", .duration = 0.5};
    for (auto const codec : {VideoCodecChoice::h264, VideoCodecChoice::proRes422}) {
        take.settings.codec = codec;
        take.settings.container = codec == VideoCodecChoice::h264 ? ExportContainer::mp4 : ExportContainer::mov;
        auto const movie = take.exported(codec == VideoCodecChoice::h264 ? "out.mp4" : "out.mov");
        auto const info = MovieReader(movie).info();
        EXPECT_TRUE(info.hasAudio);
        EXPECT_NEAR(info.duration, 3, 1e-3);
        EXPECT_NEAR(AudioReader(movie).info().duration, info.duration, 1 / 30.0);
        auto const found = peaks(soundOf(movie), 0.4);
        ASSERT_EQ(found.size(), 2u); // the one at 1.25 s was cut out
        EXPECT_NEAR(found[0], 24'000 + 9'600, 2);
        EXPECT_NEAR(found[1], 24'000 + 100'000 - 24'000, 2);
    }
}

TEST(SoundExport, theNumberOfDrawingThreadsChangesNoByte) {
    SoundTake take("soundthreads");
    take.project.audioTracks[0].noiseReduction = take.project.audioTracks[0].normalize = true;
    std::vector<std::string> movies;
    for (int const threads : {1, 3}) {
        take.options.renderer.threads = threads;
        take.options.encoderThreads = 1;
        movies.push_back(bytesOf(take.exported(std::to_string(threads) + ".mp4")));
    }
    EXPECT_FALSE(movies[0].empty());
    EXPECT_TRUE(movies[0] == movies[1]);
}

TEST(SoundExport, aMovieHasATrackOfSoundOnlyWhenThereIsSomethingToHear) {
    SoundTake take("nosound");
    auto const hasAudio = [&](char const* name) { return MovieReader(take.exported(name)).info().hasAudio; };
    EXPECT_TRUE(hasAudio("with.mp4"));
    take.settings.includesAudio = false;
    EXPECT_FALSE(hasAudio("unwanted.mp4"));
    take.settings.includesAudio = true;
    take.project.audioTracks[0].isMuted = true;
    EXPECT_FALSE(hasAudio("muted.mp4"));
    take.project.cursor.clickSound = true;
    take.project.metadata.edit().clicks = {{.t = 1}};
    auto const clicking = take.exported("clicks.mp4");
    auto const found = peaks(soundOf(clicking), 0.2);
    ASSERT_FALSE(found.empty());
    EXPECT_NEAR(found[0], 48'000, 240);
    EXPECT_TRUE(std::filesystem::exists(take.options.soundCache / "click-sound-v1.caf"));
}

TEST(SoundExport, soundThatCannotBeUsedStopsTheExportBeforeItBegins) {
    SoundTake take("badsound");
    auto& asset = take.project.audioTracks[0].clips[0].asset;
    auto const exporting = [&] { return failure([&] { take.exported(); }); };
    asset = "gone.wav";
    EXPECT_EQ(exporting(),
              std::pair(ExportError::Kind::missingAsset, std::string("Missing asset 'gone.wav' in the project.")));
    asset = "noise.wav";
    std::ofstream(take.package.assetURL(asset)) << "this is no sound";
    EXPECT_EQ(exporting().second, "Could not read the audio track: it is damaged, or not a movie (noise.wav)");
    asset = "empty.caf";
    writeSound(take.package.assetURL(asset), {});
    EXPECT_EQ(exporting(), std::pair(ExportError::Kind::audioFailed, std::string("The audio track is empty.")));
    asset = "screen.mp4";
    EXPECT_EQ(exporting().second, "Could not read the audio track: the file has no sound (screen.mp4)");
    EXPECT_EQ(take.filesLeft(), 0);
}

TEST(SoundExport, enhancingIsReportedAndCanBeCancelled) {
    SoundTake take("enhancing");
    writeSound(take.package.assetURL("system.caf"), sum(syllables(3), noise(3, 0.01)));
    take.project.audioTracks[0].noiseReduction = true;
    double last = 0;
    auto const sentence = failure([&] {
        Exporter exporter(take.project, take.package, take.settings, take.options);
        exporter.exportMovie(take.output(), [&](ExportProgress const& progress) {
            if (progress.stage != ExportStage::enhancing) return;
            EXPECT_GE(progress.enhanced, last);
            last = progress.enhanced;
            if (last > 0.5) exporter.cancel();
        });
    });
    EXPECT_EQ(sentence.second, "Export cancelled.");
    EXPECT_GT(last, 0.5);
    EXPECT_EQ(take.filesLeft(), 0);
    bool isDone = false;
    take.exported("out.mp4", [&](ExportProgress const& progress) { isDone |= progress.enhanced == 1; });
    EXPECT_TRUE(isDone);
}

TEST(SoundExport, aMovieCancelledOrFailingOnTheWayEndsItsSoundToo) {
    SoundTake take("soundcancel");
    Exporter exporter(take.project, take.package, take.settings, take.options);
    auto const cancelled = failure([&] {
        exporter.exportMovie(take.output(), [&](ExportProgress const& progress) {
            if (progress.framesWritten >= 5) exporter.cancel();
        });
    });
    EXPECT_EQ(cancelled.second, "Export cancelled.");
    EXPECT_EQ(take.filesLeft(), 0);
}

}

}
