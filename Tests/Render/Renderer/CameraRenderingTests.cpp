#include "../Export/TestTake.h"

#include <TavaroMedia/Frames/EncoderPicture.h>
#include <TavaroMedia/Movie/MovieWriter.h>
#include <TavaroRender/Composition/Private/FrameComposer.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/Exporter.h>
#include <TavaroRender/Export/FilmPainter.h>
#include <TavaroRender/Painter/PaintError.h>
#include <TavaroRender/Painter/Private/FrameSources.h>
#include <TavaroRender/Renderer/Renderer.h>

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <random>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

constexpr Size2 small{320, 180};

/// A take whose camera shows the film of the screen.
struct CameraTake : TestTake {
    explicit CameraTake(std::string const& name, int frames = 60) : TestTake(name, frames) {
        fs::copy_file(package.assetURL("screen.mp4"), package.assetURL("camera.mp4"));
        project.cameraAsset = "camera.mp4";
        project.camera = {
            .shape = CameraShape::square, .size = 0.5, .shadowOpacity = 0, .borderWidth = 0, .mirrored = false};
    }

    void write(std::string const& asset, std::string const& text) {
        std::ofstream(package.assetURL(asset), std::ios::binary) << text;
    }
};

/// A film that shows one picture.
void writeFilm(fs::path const& file, ImageView image) {
    MovieWriter writer(file, {.width = image.width, .height = image.height, .fps = 30, .bitrate = 100'000'000});
    auto picture = writer.picture();
    fillPicture(picture, image);
    writer.append(std::move(picture), 0);
    writer.finish();
}

Image drawn(DemoProject const& project, ProjectPackage const& package, double at, Size2 canvas = small) {
    FrameComposer const composer(project, canvas);
    FrameSources sources(package);
    Renderer renderer(package);
    auto const view = renderer.render(composer.state(at), composer.project(), sources.pictures(composer, at));
    Image image(view.width, view.height);
    for (int y = 0; y < view.height; ++y) std::memcpy(image.row(y), view.row(y), 4 * std::size_t(view.width));
    return image;
}

/// The pixel in the middle of a rectangle.
std::uint8_t const* middle(Image const& image, CanvasRect const& rect) {
    return image.row(static_cast<int>(rect.center().y)) + 4 * static_cast<int>(rect.center().x);
}

std::string identityTable(double gain) {
    std::string text = "LUT_3D_SIZE 2\n";
    for (int i = 0; i < 8; ++i)
        text += std::to_string(gain * (i & 1)) + " " + std::to_string(gain * (i >> 1 & 1)) + " " +
                std::to_string(gain * (i >> 2)) + "\n";
    return text;
}

DemoProject busyProject(CameraTake const& take, unsigned seed) {
    std::mt19937 random(seed);
    auto const upTo = [&](double limit) { return std::uniform_real_distribution(0.0, limit)(random); };
    auto project = take.project;
    project.camera.shadowOpacity = 0.4;
    project.camera.borderWidth = 8;
    project.camera.size = 0.3;
    project.layoutCues = {{.time = 1.2, .scene = SceneLayout::split}};
    project.cameraMoves = {{.time = 0.5, .placement = CameraPlacement::topLeft}};
    project.metadata.edit().clicks = {{.t = 0.3, .position = {0.4, 0.5}}, {.t = 0.9, .position = {0.8, 0.8}}};
    project.overlays = {
        {.kind = {OverlayKind::Callout{.text = "Look here"}}, .start = upTo(0.5), .duration = 0.8},
        {.kind = {OverlayKind::Title{.text = "A title"}}, .start = 0.4 + upTo(0.5), .duration = 0.7, .fontSize = 90},
        {.kind = {OverlayKind::Blur{{0.2, 0.2, 0.3, 0.2}}}, .start = upTo(1), .duration = 0.6},
        {.kind = {OverlayKind::Highlight{{0.5, 0.5, 0.3, 0.3}}}, .start = upTo(1), .duration = 0.5},
    };
    project.captions.isEnabled = true;
    project.captions.cues = {
        {.start = 0.2, .duration = 1, .text = "spoken words", .words = {{"spoken", 0.2, 0.6}, {"words", 0.7, 1.1}}}};
    return project;
}

TEST(CameraRendering, framesDrawnOverEachOtherEqualFramesDrawnAfresh) {
    CameraTake take("sequence");
    for (unsigned seed = 1; seed <= 6; ++seed) {
        auto const project = busyProject(take, seed);
        FrameComposer const composer(project, small);
        FrameSources sources(take.package);
        Renderer renderer(take.package);
        std::mt19937 random(seed);
        double at = 0;
        FramePictures pictures;
        for (int n = 0; n < 40; ++n) {
            // Sometimes time stands still for one of the pictures, so that only what lies over it changes.
            at = random() % 8 == 0 ? std::uniform_real_distribution(0.0, 1.9)(random) : std::fmod(at + 0.04, 1.95);
            auto const next = sources.pictures(composer, at);
            if (n == 0 || random() % 3 == 0) pictures.screen = next.screen;
            if (n == 0 || random() % 3 == 0) pictures.camera = next.camera;
            auto const state = composer.state(at);
            Renderer fresh(take.package);
            auto const expected = fresh.render(state, composer.project(), pictures);
            auto const incremental = renderer.render(state, composer.project(), pictures);
            ASSERT_TRUE(samePixels(incremental, expected)) << "seed " << seed << ", frame " << n << " at " << at;
        }
        EXPECT_GT(renderer.framesDrawn(), 20);
    }
}

TEST(CameraRendering, theCameraShowsTheFrameThatBelongsToTheScreensOwn) {
    CameraTake take("sync");
    take.project.camera.size = 1;
    take.project.camera.shape = CameraShape::wide;
    take.project.camera.padding = 0;
    take.project.timeline.clips[0].sourceStart = 0.5;
    take.project.cursor.isVisible = false;
    FrameComposer const composer(take.project, small);
    auto const box = composer.state(0.2).cameraBubbleRect;
    auto const frame = drawn(take.project, take.package, 0.2);
    auto const film = movieFrame(take.package.assetURL("camera.mp4"), 21, 30);
    auto const bright = [](std::uint8_t const* pixel) { return pixel[0] > 128; };
    for (int bit = 0; bit < 8; ++bit) { // the number that the frame spells
        double const x = (bit + 0.5) / 8;
        CanvasRect const block{box.x + x * box.width, box.y + box.height * 0.12, 0, 0};
        CanvasRect const source{x * 320, 0.12 * 180, 0, 0};
        EXPECT_EQ(bright(middle(frame, block)), bright(middle(film, source))) << bit;
    }
}

TEST(CameraRendering, aPictureMuchFinerThanItsBubbleTurnsGreyInsteadOfShimmering) {
    CameraTake take("fine", 6);
    Image checks(1024, 1024);
    for (int y = 0; y < 1024; ++y) {
        for (int x = 0; x < 1024; ++x) std::memset(checks.row(y) + 4 * x, (x + y) % 2 ? 255 : 0, 3);
        for (int x = 0; x < 1024; ++x) checks.row(y)[4 * x + 3] = 255;
    }
    writeFilm(take.package.assetURL("fine.mp4"), checks.view());
    take.project.cameraAsset = "fine.mp4";
    take.project.camera.size = 0.9;
    auto const frame = drawn(take.project, take.package, 0, {301, 203});
    auto const box = FrameComposer(take.project, {301, 203}).state(0).cameraBubbleRect;
    for (int i = -40; i <= 40; ++i) {
        auto const* pixel = middle(frame, {box.x + i, box.y + i / 2.0, box.width, box.height});
        EXPECT_NEAR(pixel[0], 128, 12) << i;
    }
}

TEST(CameraRendering, aScreenBehindAFullCameraCostsNothing) {
    CameraTake take("full", 30);
    take.project.layoutCues = {{.time = 0, .scene = SceneLayout::cameraOnly}};
    FrameComposer const composer(take.project, small);
    FrameSources sources(take.package);
    Renderer renderer(take.package);
    auto pictures = sources.pictures(composer, 0.1);
    renderer.render(composer.state(0.1), composer.project(), pictures);
    pictures.screen = sources.pictures(composer, 0.5).screen;
    renderer.render(composer.state(0.1), composer.project(), pictures);
    EXPECT_EQ(renderer.framesDrawn(), 1);
    auto withCamera = drawn(take.project, take.package, 0.1);
    auto const film = movieFrame(take.package.assetURL("camera.mp4"), 3, 30);
    EXPECT_GT(psnr(withCamera.view(), film.view()), 40) << "up to the edges";
}

TEST(CameraRendering, aRedactionHidesItsRegionAndNothingElse) {
    CameraTake take("redacted", 6);
    take.project.cameraAsset.reset();
    take.project.screen = {};
    take.project.cursor.isVisible = false;
    auto const plain = drawn(take.project, take.package, 0);
    for (auto const style : {RedactionStyle::mask, RedactionStyle::blur}) {
        auto project = take.project;
        // Over the blocks at the top, whose edges are as sharp as letters.
        project.redactions = std::vector<RedactionTrack>{
            {.start = 0, .end = 1, .keyframes = {{0, {0.1, 0.05, 0.6, 0.1}}}, .style = style}};
        auto const hidden = drawn(project, take.package, 0);
        int steepest = 0;
        for (int y = 0; y < 180; ++y) {
            for (int x = 0; x < 320; ++x) {
                bool const isInside = x >= 32 && x < 224 && y >= 9 && y < 27;
                bool const isNear = x >= 30 && x < 226 && y >= 7 && y < 29;
                int const difference = std::abs(plain.row(y)[4 * x] - hidden.row(y)[4 * x]);
                ASSERT_TRUE(isNear || difference == 0) << x << " " << y;
                if (isInside && x > 33)
                    steepest = std::max(steepest, std::abs(hidden.row(y)[4 * x] - hidden.row(y)[4 * x - 4]));
            }
        }
        EXPECT_LT(steepest, 40) << namesOf(RedactionStyle{})[static_cast<std::size_t>(style)];
    }
}

TEST(CameraRendering, aTableColoursTheCameraAndABrokenOneIsLeftOutOfAPreviewAndStopsAnExport) {
    CameraTake take("table", 6);
    auto const box = FrameComposer(take.project, small).state(0).cameraBubbleRect;
    auto const natural = drawn(take.project, take.package, 0);
    take.project.camera.look = CameraLook::lut;
    take.project.camera.lutAsset = "look.cube";
    take.write("look.cube", identityTable(0));
    EXPECT_EQ(middle(drawn(take.project, take.package, 0), box)[1], 0) << "a table that makes all black";
    take.write("look.cube", "not a table");
    EXPECT_TRUE(samePixels(drawn(take.project, take.package, 0).view(), natural.view()));
    try {
        Exporter(take.project, take.package, take.settings).exportMovie(take.output());
        ADD_FAILURE() << "exported without its look";
    } catch (ExportError const& error) {
        EXPECT_EQ(error.kind(), ExportError::Kind::effectFailed);
        EXPECT_NE(std::string(error.what()).find("look.cube"), std::string::npos);
    }
    fs::remove(take.package.assetURL("look.cube"));
    EXPECT_TRUE(samePixels(drawn(take.project, take.package, 0).view(), natural.view()));
    try {
        filmPainter(take.project, take.package, take.settings).still(0);
        ADD_FAILURE() << "drew a still without its look";
    } catch (PaintError const& error) {
        EXPECT_STREQ(error.what(), "Missing asset 'look.cube' in the project.");
    }
    EXPECT_EQ(take.filesLeft(), 0);
}

TEST(CameraRendering, aMatteMovieCutsThePersonOutAndWithoutOneTheWholePictureShows) {
    CameraTake take("matte", 6);
    take.project.cursor.isVisible = false;
    auto const plain = drawn(take.project, take.package, 0);
    auto const box = FrameComposer(take.project, small).state(0).cameraBubbleRect;
    take.project.camera.cutout = true;
    EXPECT_TRUE(samePixels(drawn(take.project, take.package, 0).view(), plain.view())) << "nothing tells who is there";

    Image matte(320, 180);
    for (int y = 0; y < 180; ++y) {
        for (int x = 0; x < 320; ++x) std::memset(matte.row(y) + 4 * x, x < 160 ? 255 : 0, 4);
    }
    writeFilm(take.package.assetURL("camera.matte.mp4"), matte.view());
    auto const cut = drawn(take.project, take.package, 0);
    auto withoutCamera = take.project;
    withoutCamera.cameraAsset.reset();
    auto const screen = drawn(withoutCamera, take.package, 0);
    CanvasRect const left{box.x, box.y, box.width / 2, box.height};
    CanvasRect const right{box.x + box.width / 2, box.y, box.width / 2, box.height};
    EXPECT_EQ(std::memcmp(middle(cut, right), middle(screen, right), 3), 0) << "the room is gone";
    EXPECT_NE(std::memcmp(middle(cut, left), middle(screen, left), 3), 0) << "the person is there";
}

TEST(CameraRendering, aCamerasOwnTransparencyIsItsMatte) {
    CameraTake take("alpha", 6);
    auto const movie = take.package.assetURL("alpha.mov").string();
    auto const command = "ffmpeg -v quiet -y -f lavfi -i color=red:s=64x64:d=0.2:r=30,format=argb,"
                         "geq=r=255:g=0:b=0:a='255*lt(X\\,32)' -c:v qtrle '" +
                         movie + "'";
    if (std::system(command.c_str()) != 0) GTEST_SKIP() << "no program that writes transparent movies";
    take.project.cameraAsset = "alpha.mov";
    take.project.camera.cutout = true;
    take.project.cursor.isVisible = false;
    auto const cut = drawn(take.project, take.package, 0);
    auto const box = FrameComposer(take.project, small).state(0).cameraBubbleRect;
    EXPECT_GT(middle(cut, {box.x, box.y, box.width / 2, box.height})[0], 240);
    EXPECT_LT(middle(cut, {box.x + box.width / 2, box.y, box.width / 2, box.height})[0], 200);
}

std::string bytesOf(fs::path const& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(CameraRendering, anExportShowsWhatAStillShowsAndIsTheSameBytesOnAnyNumberOfThreads) {
    CameraTake take("export");
    auto const project = busyProject(take, 3);
    std::string first;
    for (int const threads : {1, 2, 5}) {
        auto const file = take.output("threads" + std::to_string(threads) + ".mp4");
        Exporter(project, take.package, take.settings, {.renderer = {.threads = threads}}).exportMovie(file);
        if (first.empty()) first = bytesOf(file);
        EXPECT_TRUE(bytesOf(file) == first) << threads;
    }
    auto stills = filmPainter(project, take.package, take.settings);
    for (int const n : {7, 20, 33, 41, 55})
        EXPECT_GE(psnr(stills.still(n / 30.0).view(), movieFrame(take.output("threads1.mp4"), n, 30).view()), 38) << n;
}

TEST(CameraRendering, aMissingOrBrokenCameraStopsAnExportAndLeavesNothing) {
    CameraTake take("broken", 6);
    auto const failure = [&] {
        try {
            Exporter(take.project, take.package, take.settings).exportMovie(take.output());
        } catch (ExportError const& error) {
            return std::string(error.what());
        }
        return std::string("none");
    };
    take.write("camera.mp4", "this is no movie");
    EXPECT_EQ(failure().find("Could not read the recording: "), 0u) << failure();
    fs::remove(take.package.assetURL("camera.mp4"));
    EXPECT_EQ(failure(), "Missing asset 'camera.mp4' in the project.");
    EXPECT_EQ(take.filesLeft(), 0);
    take.project.camera.isEnabled = false;
    EXPECT_EQ(failure(), "none") << "a camera that is not used need not be there";
}

TEST(CameraRendering, theVerticalSplitIsASplitWhateverTheProjectsLayout) {
    CameraTake take("vertical", 6);
    auto settings = take.settings;
    settings.size = {180, 320};
    settings.fit = ContentFit::fill;
    auto const single = filmPainter(take.project, take.package, settings).still(0);
    settings.presetID = "split-vertical";
    auto const split = filmPainter(take.project, take.package, settings).still(0);
    EXPECT_FALSE(samePixels(single.view(), split.view()));
    take.project.layout.content = CanvasLayout::Split{.arrangement = SplitArrangement::cameraTop};
    settings.presetID.reset();
    EXPECT_TRUE(samePixels(filmPainter(take.project, take.package, settings).still(0).view(), split.view()));
}

}

}
