#include "../../Media/Audio/TestSounds.h"
#include "TestTake.h"

#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroRender/Export/Exporter.h>
#include <TavaroRender/Export/FilmPainter.h>

#include <gtest/gtest.h>

using namespace tavaro;

TEST(ExportPart, hasTheFramesAndTheSoundThatTheFilmHasThere) {
    TestTake take("part");
    writeSound(take.package.assetURL("system.caf"), ticks(3, {9'600, 60'000, 100'000}));
    take.project.audioTracks = {{.role = AudioRole::system, .clips = {{.asset = "system.caf", .duration = 3}}}};
    take.project.zoomEvents = {{.start = 0.2, .duration = 1.5, .rampIn = 0.3, .rampOut = 0.3, .scale = 2}};
    take.settings.includesAudio = true;
    ExporterOptions const options{.soundCache = take.package.url() / "cache", .range = TimeRange{1, 1.5}};
    Exporter exporter(take.project, take.package, take.settings, options);
    EXPECT_DOUBLE_EQ(exporter.duration(), 1.5);
    EXPECT_EQ(exporter.totalFrames(), 45);
    auto const movie = exporter.exportMovie(take.output());
    EXPECT_NEAR(MovieReader(movie).info().duration, 1.5, 1e-3);
    auto stills = filmPainter(take.project, take.package, take.settings);
    for (int const n : {0, 13, 44})
        EXPECT_GE(psnr(stills.still(1 + n / 30.0).view(), movieFrame(movie, n, 30).view()), 40) << "frame " << n;
    auto const found = peaks(soundOf(movie), 0.4);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_NEAR(found[0], 60'000 - 48'000, 2);
    EXPECT_NEAR(found[1], 100'000 - 48'000, 2);
}

TEST(ExportPart, isHeldToTheFilm) {
    TestTake const take("part-held", 30);
    auto const exporter = [&](TimeRange const& range) {
        return std::make_unique<Exporter>(take.project, take.package, take.settings, ExporterOptions{.range = range});
    };
    EXPECT_NEAR(exporter({0.5, 100})->duration(), 0.5, 1e-9);
    EXPECT_NEAR(exporter({-1, 1.5})->duration(), 0.5, 1e-9);
    EXPECT_EQ(exporter({7, 1})->totalFrames(), 1);
    EXPECT_NO_THROW(exporter({7, 1})->exportMovie(take.output()));
}
