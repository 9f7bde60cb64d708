#include "../Export/TestTake.h"

#include <TavaroMedia/Frames/EncoderPicture.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Movie/MovieWriter.h>
#include <TavaroRender/Painter/FramePainter.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <random>
#include <utility>

namespace tavaro {

namespace {

constexpr double at = 1; // second of the film that is looked at
constexpr Size2 canvases[] = {{640, 360}, {360, 640}, {480, 480}};

/// Pixels from `left` to before `right`, and so on down.
struct Bounds {
    double left = 1e9, top = 1e9, right = -1e9, bottom = -1e9;

    bool isEmpty() const { return right <= left || bottom <= top; }
    void add(int x, int y) {
        left = std::min<double>(left, x), right = std::max<double>(right, x + 1);
        top = std::min<double>(top, y), bottom = std::max<double>(bottom, y + 1);
    }
};

/// Where two pictures are far from each other; soft shadows are not.
Bounds difference(ImageView a, ImageView b) {
    Bounds bounds;
    for (int y = 0; y < a.height; ++y) {
        for (int x = 0; x < a.width; ++x) {
            int most = 0;
            for (int i = 0; i < 3; ++i) most = std::max(most, std::abs(a.row(y)[4 * x + i] - b.row(y)[4 * x + i]));
            if (most > 90) bounds.add(x, y);
        }
    }
    return bounds;
}

Bounds inPixels(NormalizedRect const& rect, NormalizedRect const& within, Size2 canvas) {
    auto const width = static_cast<double>(canvas.width), height = static_cast<double>(canvas.height);
    return {std::max(rect.x, within.x) * width, std::max(rect.y, within.y) * height,
            std::min(rect.maxX(), within.maxX()) * width, std::min(rect.maxY(), within.maxY()) * height};
}

void expectNear(Bounds const& expected, Bounds const& seen, double pixels) {
    EXPECT_NEAR(expected.left, seen.left, pixels);
    EXPECT_NEAR(expected.top, seen.top, pixels);
    EXPECT_NEAR(expected.right, seen.right, pixels);
    EXPECT_NEAR(expected.bottom, seen.bottom, pixels);
}

/// Two seconds of one picture.
void writeMovie(std::filesystem::path const& file, Image const& image) {
    constexpr int frames = 60, rate = 30;
    MovieWriter writer(file, {.width = image.width(), .height = image.height(), .fps = rate, .bitrate = 20'000'000});
    for (int n = 0; n < frames; ++n) {
        auto picture = writer.picture();
        fillPicture(picture, image.view());
        writer.append(std::move(picture), n / double(rate));
    }
    writer.finish();
}

void fill(Image& image, int x, int y, std::array<std::uint8_t, 3> const& color) {
    std::ranges::copy(color, image.row(y) + 4 * x);
    image.row(y)[4 * x + 3] = 255;
}

constexpr std::array<std::uint8_t, 3> red{255, 0, 0}, black{0, 0, 0}, white{255, 255, 255};

/// Blocks of black and white, so that what covers them is seen wherever it does.
Image blocks(std::mt19937& random) {
    constexpr int side = 4;
    Image image(320, 180);
    for (int y = 0; y < 180; y += side) {
        for (int x = 0; x < 320; x += side) {
            auto const& color = random() % 2 ? black : white;
            for (int i = 0; i < side * side; ++i) fill(image, x + i % side, y + i / side, color);
        }
    }
    return image;
}

Image plain(std::array<std::uint8_t, 3> const& color) {
    Image image(320, 180);
    for (int i = 0; i < 320 * 180; ++i) fill(image, i % 320, i / 320, color);
    return image;
}

/// A take of black and white blocks with a red camera, and looks of chance.
class FramePlacesTest : public testing::Test {
protected:
    FramePlacesTest() {
        std::filesystem::remove(take.package.assetURL("screen.mp4"));
        writeMovie(take.package.assetURL("screen.mp4"), blocks(random));
        writeMovie(take.package.assetURL("camera.mp4"), plain(red));
    }
    double chance(double from, double to) { return std::uniform_real_distribution<double>(from, to)(random); }
    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random); }
    NormalizedRect area() {
        double const width = chance(0.1, 0.4), height = chance(0.1, 0.4);
        return {chance(0, 1 - width), chance(0, 1 - height), width, height};
    }

    DemoProject look() {
        auto project = take.project;
        project.timeline.clips = {{.asset = "screen.mp4", .duration = 2}};
        project.cursor.isVisible = false;
        project.cursor.clickEffect = ClickEffect::none;
        project.background.content = BackgroundStyle::Solid{.colour = RGBAColor::rgb(0x808080)};
        project.screen.padding = chance(0, 0.2);
        project.screen.frame = static_cast<DeviceFrame>(below(7));
        project.exportSettings.fit = static_cast<ContentFit>(below(3));
        if (below(2)) project.sourceCrop = NormalizedRect{chance(0, 0.3), chance(0, 0.3), 0.6, 0.65};
        if (below(2)) {
            project.zoomEvents = {{.start = 0, .duration = 3, .rampIn = 0, .rampOut = 0}};
            project.zoomEvents[0].center = {chance(0, 1), chance(0, 1)};
            project.zoomEvents[0].scale = chance(1, 3);
            project.zoomEvents[0].followsCursor = below(2) == 0;
        }
        auto& log = project.metadata.edit();
        for (int i = 0; i < 60; ++i)
            log.cursorSamples.push_back({.t = i / 30.0, .position = {0.2 + i / 100.0, 0.3 + i / 120.0}});
        return project;
    }

    void place(DemoProject const& without, DemoProject const& with) {
        painter.show(without);
        auto const before = painter.still(at);
        painter.show(with);
        after = painter.still(at);
        places = painter.places(at);
        changed = difference(before.view(), after.view());
    }

    /// The thing is seen in its place, as far as `within` lets it be.
    void expectIn(NormalizedRect const& rect, NormalizedRect const& within, double pixels) {
        auto const expected = inPixels(rect, within, painter.canvas());
        if (expected.right - expected.left < 8 || expected.bottom - expected.top < 8) return;
        ASSERT_FALSE(changed.isEmpty());
        expectNear(expected, changed, pixels);
        ++seen;
    }

    TestTake take{"places", 1};
    std::mt19937 random{7};
    FramePainter painter{take.package, canvases[0]};
    FramePlaces places;
    Image after;
    Bounds changed;
    int seen = 0;
};

constexpr NormalizedRect everywhere{0, 0, 1, 1};

}

TEST_F(FramePlacesTest, aTextIsWhereItIsDrawnAndNothingElseIsThere) {
    for (int round = 0; round < 24; ++round) {
        SCOPED_TRACE(round);
        painter.resize(canvases[round % 3]);
        auto const without = look();
        auto with = without;
        Overlay overlay{.start = 0.5, .duration = 2, .position = {chance(0, 1), chance(0, 1)}};
        overlay.color = RGBAColor::rgb(0xFF0000);
        overlay.backgroundColor = RGBAColor::rgb(0xFF0000);
        overlay.fontSize = chance(30, 90);
        if (round % 2)
            overlay.kind.content = OverlayKind::Title{.text = "Here"};
        else
            overlay.kind.content = OverlayKind::Callout{.text = "Or there"};
        with.overlays = {overlay};
        place(without, with);
        ASSERT_EQ(places.overlays.size(), 1u);
        EXPECT_EQ(places.overlays[0].id, overlay.id);
        expectIn(places.overlays[0].rect, everywhere, 3);
    }
    EXPECT_GT(seen, 20);
}

TEST_F(FramePlacesTest, whatBelongsToTheRecordingIsWhereItsPictureIs) {
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        painter.resize(canvases[round % 3]);
        auto const without = look();
        auto with = without;
        auto const rect = area();
        if (round % 2)
            with.overlays = {{.kind = {OverlayKind::Mask{rect}}, .duration = 3}};
        else
            with.redactions = std::vector<RedactionTrack>{{.end = 2, .keyframes = {{0, rect}}}};
        place(without, with);
        auto const& found = round % 2 ? places.overlays : places.redactions;
        ASSERT_EQ(found.size(), 1u);
        EXPECT_EQ(found[0].id, round % 2 ? with.overlays[0].id : (*with.redactions)[0].id);
        expectIn(found[0].rect, places.shown, 6); // a block may be where it ends
        auto const back = places.onRecording(found[0].rect);
        EXPECT_NEAR(back.x, rect.x, 1e-9);
        EXPECT_NEAR(back.maxY(), rect.maxY(), 1e-9);
    }
    EXPECT_GT(seen, 20);
}

TEST_F(FramePlacesTest, theCamerasPictureIsWhereItIsDrawn) {
    for (int round = 0; round < 16; ++round) {
        SCOPED_TRACE(round);
        painter.resize(canvases[round % 3]);
        auto with = look();
        with.cameraAsset = "camera.mp4";
        with.camera = {.shape = CameraShape::square, .size = chance(0.15, 0.5), .shadowOpacity = 0, .borderWidth = 0};
        if (round % 2)
            with.camera.position = UnitPoint2{chance(0, 1), chance(0, 1)};
        else
            with.camera.placement = static_cast<CameraPlacement>(below(8));
        auto without = with;
        without.camera.isEnabled = false;
        place(without, with);
        ASSERT_TRUE(places.camera);
        EXPECT_FALSE(places.camera->isPane);
        expectIn(places.camera->rect, everywhere, 3);
        if (round % 2) continue;
        EXPECT_EQ(places.camera->placements[static_cast<std::size_t>(with.camera.placement)], places.camera->rect);
    }
    EXPECT_EQ(seen, 16);
}

TEST_F(FramePlacesTest, theDividerOfASplitScreenIsBetweenItsPanesAndKnowsTheShareOfTheCamera) {
    for (int round = 0; round < 24; ++round) {
        SCOPED_TRACE(round);
        painter.resize(canvases[round % 3]);
        auto project = look();
        project.screen.padding = round % 2 ? chance(0, 0.2) : 0;
        project.cameraAsset = "camera.mp4";
        double const share = chance(0.1, 0.9);
        project.layout.content = CanvasLayout::Split{static_cast<SplitArrangement>(round % 4), share};
        painter.show(project);
        places = painter.places(at);
        ASSERT_TRUE(places.divider && places.camera);
        EXPECT_NEAR(places.divider->share(places.divider->rect.center()), share, 1e-9);
        auto const &camera = places.camera->rect, &divider = places.divider->rect;
        bool const isFirst = round % 4 == 0 || round % 4 == 2;
        double const near = 3.0 / 360;
        if (places.divider->isUpright())
            EXPECT_NEAR(isFirst ? divider.x : divider.maxX(), isFirst ? camera.maxX() : camera.x, near);
        else
            EXPECT_NEAR(isFirst ? divider.y : divider.maxY(), isFirst ? camera.maxY() : camera.y, near);
        EXPECT_EQ(places.divider->isUpright(), round % 4 > 1);
    }
}

TEST_F(FramePlacesTest, aZoomShowsWhatItsWindowSays) {
    int zooms = 0;
    for (int round = 0; round < 40; ++round) {
        auto const project = look();
        if (project.zoomEvents.empty()) continue;
        SCOPED_TRACE(round);
        painter.resize(canvases[round % 3]);
        painter.show(project);
        painter.useZooms(ZoomUse::unzoomed);
        auto const still = painter.places(at);
        painter.useZooms(ZoomUse::zoomed);
        auto const zoomed = painter.places(at);
        EXPECT_EQ(still.zoom.scale, 1);
        ASSERT_EQ(still.zooms.size(), 1u);
        EXPECT_EQ(still.zooms, zoomed.zooms);
        auto const& crop = zoomed.crop;
        auto const& window = still.zooms[0].rect;
        auto const seen = zoomed.onRecording(zoomed.content);
        EXPECT_NEAR(seen.x, crop.x + window.x * crop.width, 1e-9);
        EXPECT_NEAR(seen.maxX(), crop.x + window.maxX() * crop.width, 1e-9);
        EXPECT_NEAR(seen.maxY(), crop.y + window.maxY() * crop.height, 1e-9);
        ++zooms;
    }
    EXPECT_GT(zooms, 10);
}

TEST_F(FramePlacesTest, aTextThatIsStillComingHasThePlaceWhereItWillRest) {
    auto project = look();
    Overlay overlay{.start = at - 0.05, .duration = 2, .animationIn = OverlayAnimation::slideUp};
    overlay.kind.content = OverlayKind::Title{.text = "Slides"};
    project.overlays = {overlay};
    painter.show(project);
    auto const coming = painter.places(at).overlays, resting = painter.places(at + 0.5).overlays;
    ASSERT_EQ(coming.size(), 1u);
    EXPECT_EQ(coming, resting);
    EXPECT_TRUE(painter.places(0.5).overlays.empty());
}

}
