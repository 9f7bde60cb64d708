#include "TestTake.h"

#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroRender/Export/Exporter.h>
#include <TavaroRender/Export/FilmPainter.h>

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace tavaro {

namespace {

void addOverlays(DemoProject& project) {
    auto const add = [&](OverlayKind kind, double start, UnitPoint2 position) {
        project.overlays.push_back({.kind = std::move(kind), .start = start, .duration = 0.8, .position = position});
    };
    add({OverlayContent::Callout{"Press it"}}, 0.4, {0.3, 0.3});
    add({OverlayContent::Keycap{{"⌘", "S"}}}, 0.6, {0.7, 0.2});
    add({OverlayContent::Arrow{{0.2, 0.8}, {0.5, 0.5}}}, 0.5, {0.5, 0.5});
    add({OverlayContent::Blur{{0.1, 0.1, 0.3, 0.2}}}, 0.7, {0.5, 0.5});
    add({OverlayContent::Highlight{{0.4, 0.3, 0.4, 0.4}}}, 1.3, {0.5, 0.5});
}

/// Everything at once: a card, a zoom, the pointer with clicks, the camera, a caption word by word, overlays of several
/// kinds, a redaction and the watermark.
void edit(TestTake& take) {
    auto& project = take.project;
    project.intro = TitleCard{.text = "Hello", .subtitle = "from everything", .duration = 0.4};
    project.zoomEvents = {
        {.start = 0.3, .duration = 1, .rampIn = 0.3, .rampOut = 0.3, .scale = 1.7, .motionBlur = 0.5}};
    project.metadata.edit().clicks = {{.t = 0.4, .position = {0.5, 0.6}}};
    std::filesystem::copy_file(take.package.assetURL("screen.mp4"), take.package.assetURL("camera.mp4"));
    project.cameraAsset = "camera.mp4";
    project.camera = {.isEnabled = true, .size = 0.34, .look = CameraLook::golden, .sharpen = 0.4};
    project.captions.isEnabled = true;
    project.captions.style = CaptionStyle::karaoke;
    project.captions.cues = {{.start = 0.4,
                              .duration = 1.2,
                              .text = "every word of it",
                              .words = {{"every", 0.4, 0.7}, {"word", 0.7, 1}, {"of", 1, 1.2}, {"it", 1.2, 1.6}}}};
    project.redactions.edit().push_back(
        {.start = 0, .end = 1.5, .keyframes = {{0, {0.1, 0.02, 0.3, 0.15}}, {1.5, {0.3, 0.02, 0.3, 0.15}}}});
    addOverlays(project);
    take.settings.includeWatermark = true;
}

std::string bytesOf(std::filesystem::path const& file) {
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
}

TEST(WholeFilm, everyFrameIsTheStillOfItsTimeInEveryCodec) {
    TestTake take("whole", 45);
    edit(take);
    auto stills = filmPainter(take.project, take.package, take.settings);
    for (auto const codec : {VideoCodecChoice::h264, VideoCodecChoice::hevc, VideoCodecChoice::proRes422}) {
        take.settings.codec = codec;
        take.settings.container = ExportContainer::mov;
        Exporter exporter(take.project, take.package, take.settings);
        auto const movie = exporter.exportMovie(take.output("whole.mov"));
        EXPECT_EQ(MovieReader(movie).info().frameCount, 57);
        for (int const n : {3, 12, 19, 26, 27, 33, 41, 56}) {
            auto const still = stills.still(n / 30.0);
            EXPECT_GE(psnr(still.view(), movieFrame(movie, n, 30).view()), 40)
                << "frame " << n << " of codec " << nameOf(codec);
        }
    }
}

TEST(WholeFilm, theNumberOfDrawingThreadsChangesNoByte) {
    TestTake take("whole-threads", 30);
    edit(take);
    std::string first;
    for (int const threads : {1, 2, 5}) {
        Exporter exporter(take.project, take.package, take.settings,
                          {.renderer = {.threads = threads}, .encoderThreads = 1, .encoder = EncoderChoice::software});
        auto const bytes = bytesOf(exporter.exportMovie(take.output(std::to_string(threads) + ".mp4")));
        ASSERT_FALSE(bytes.empty());
        if (first.empty()) first = bytes;
        EXPECT_TRUE(bytes == first) << threads << " threads";
    }
}

TEST(WholeFilm, eachPartIsSeenInIt) {
    TestTake take("whole-parts", 45);
    edit(take);
    auto const still = [&](double at, auto const& change) {
        auto project = take.project;
        auto settings = take.settings;
        change(project, settings);
        return filmPainter(project, take.package, settings).still(at);
    };
    auto const differs = [&](char const* part, auto const& change, double at = 1.3) {
        auto const whole = still(at, [](auto&, auto&) {});
        EXPECT_LT(psnr(whole.view(), still(at, change).view()), 45) << "nothing is missing without " << part;
    };
    differs(
        "the card", [](auto& project, auto&) { project.intro.reset(); }, 0.2);
    differs("the watermark", [](auto&, auto& settings) { settings.includeWatermark = false; });
    differs("the camera", [](auto& project, auto&) { project.camera.isEnabled = false; });
    differs("the caption", [](auto& project, auto&) { project.captions.isEnabled = false; });
    differs("the zoom", [](auto& project, auto&) { project.zoomEvents.clear(); });
    differs(
        "the redaction", [](auto& project, auto&) { project.redactions.edit().clear(); }, 1.75);
    differs(
        "the pointer", [](auto& project, auto&) { project.cursor.isVisible = false; }, 0.6);
    for (std::size_t i = 0; i < 4; ++i) {
        differs("an overlay", [i](auto& project, auto&) {
            project.overlays.erase(project.overlays.begin() + static_cast<std::ptrdiff_t>(i));
        });
    }
}

}

}
