#include "../Kernels/Scenes.h"

#include <gtest/gtest.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Composition/Private/FrameComposer.h>
#include <TavaroRender/Renderer/Private/FrameUniforms.h>

namespace tavaro {

using namespace scenes;

namespace {

constexpr Size2 recorded{640, 360};
constexpr Pixel page{240, 240, 240, 255};
constexpr Pixel mark{255, 0, 0, 255};
constexpr Pixel ground{0, 0, 255, 255};
constexpr UnitPoint2 marked{0.8, 0.3};

/// A light page with a red mark, on blue, seen a tenth of the canvas away from its edges.
DemoProject take(DeviceFrame frame) {
    DemoProject project;
    project.sourceSize = recorded;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 10}};
    project.metadata.edit().cursorSamples = {{0, marked}, {10, marked}};
    project.background.content = BackgroundStyle::Solid{RGBAColor::rgb(0x0000FF)};
    project.screen = {.padding = 0.1, .cornerRadius = 60, .frame = frame};
    project.exportSettings.fit = ContentFit::fill;
    return project;
}

Image markedPage() {
    auto image = filled(static_cast<int>(recorded.width), static_cast<int>(recorded.height), page);
    auto const x = static_cast<int>(marked.x * static_cast<double>(recorded.width));
    auto const y = static_cast<int>(marked.y * static_cast<double>(recorded.height));
    for (int row = y - 6; row < y + 6; ++row)
        for (int column = x - 6; column < x + 6; ++column) {
            auto* p = image.row(row) + 4 * column;
            p[0] = 255;
            p[1] = p[2] = 0;
        }
    return image;
}

/// A frame without its pointer.
struct DrawnScreen {
    DrawnScreen(DemoProject const& project, Size2 canvas)
        : state(FrameComposer(project, canvas).state(5))
        , image(drawn(CompositorBackend::cpu, frameUniforms(state, project).composite, markedPage(), Image(),
                      static_cast<int>(canvas.width), static_cast<int>(canvas.height))) {}

    FrameState state;
    Image image;

    Pixel at(double x, double y) const { return scenes::at(image, static_cast<int>(x), static_cast<int>(y)); }
    bool showsRecording(double x, double y) const { return at(x, y) == page || at(x, y) == mark; }
};

constexpr Size2 canvases[]{{960, 540}, {540, 960}, {300, 300}, {1500, 700}};

}

TEST(ScreenEdge, aFilledCanvasIsFilledOnAllSidesUpToItsPaddingAndNoFurther) {
    for (auto const canvas : canvases) {
        for (auto const frame : allCases<DeviceFrame>()) {
            SCOPED_TRACE(nameOf(frame));
            DrawnScreen const screen(take(frame), canvas);
            auto const shown = shownRect(screen.state);
            double const inside = 3;
            double const x = shown.x + shown.width * 0.2; // beside notches, islands and necks
            double const y = shown.center().y;
            EXPECT_TRUE(screen.showsRecording(shown.x + inside, y));
            EXPECT_TRUE(screen.showsRecording(shown.maxX() - inside, y));
            EXPECT_TRUE(screen.showsRecording(x, shown.y + inside));
            EXPECT_TRUE(screen.showsRecording(x, shown.maxY() - inside));
            auto const w = static_cast<double>(canvas.width);
            auto const h = static_cast<double>(canvas.height);
            for (auto const& [px, py] : {std::pair{0.1 * w - 3, h / 2}, std::pair{0.9 * w + 3, h / 2},
                                         std::pair{w / 2, 0.1 * h - 3}, std::pair{w / 2, 0.9 * h + 3},
                                         std::pair{0.1 * w + 1, 0.1 * h + 1}, std::pair{0.9 * w - 2, 0.1 * h + 1}})
                EXPECT_EQ(screen.at(px, py), ground) << "beyond the padding and its corners";
            EXPECT_NE(screen.at(0.1 * w + 2, h / 2), ground);
            EXPECT_NE(screen.at(0.9 * w - 3, h / 2), ground);
        }
    }
}

TEST(ScreenEdge, thePointerIsWhereTheFilledRecordingShowsItsPlaceWhateverTheZoom) {
    for (auto const canvas : canvases) {
        for (auto const frame : allCases<DeviceFrame>()) {
            for (double const scale : {1.0, 1.7, 3.0}) {
                auto project = take(frame);
                project.zoomEvents = {{.start = 0, .duration = 10, .center = {0.78, 0.32}, .scale = scale}};
                DrawnScreen const screen(project, canvas);
                auto const point = canvasPoint(screen.state, marked);
                EXPECT_EQ(shownRect(screen.state).distance(point), 0);
                EXPECT_EQ(screen.at(point.x, point.y), mark) << nameOf(frame) << " " << scale;
                EXPECT_NEAR((screen.state.cursorCanvasPoint - point).length(), 0, 1e-9);
                EXPECT_EQ(screen.state.cursorOpacity, 1);
            }
        }
    }
}

TEST(ScreenEdge, whatALoupeMagnifiesIsInTheFilledPicture) {
    for (double const x : {0.05, 0.5, 0.95}) {
        auto project = take(DeviceFrame::iphone);
        project.metadata.edit().cursorSamples.clear();
        project.zoomEvents = {{.start = 0,
                               .duration = 10,
                               .rampIn = 0.2,
                               .rampOut = 0.2,
                               .center = {x, 0.5},
                               .scale = 2,
                               .style = ZoomStyle::loupe,
                               .loupeSize = 0.2}};
        auto const state = FrameComposer(project, {540, 960}).state(5);
        EXPECT_EQ(shownRect(state).distance(state.loupeCanvasCenter), 0) << x;
    }
}

TEST(ScreenEdge, theCornersOfAScreenFollowItsDevice) {
    for (auto const fit : {ContentFit::fit, ContentFit::fill}) {
        for (auto const frame : {DeviceFrame::iphone, DeviceFrame::ipad, DeviceFrame::macbook}) {
            for (auto const canvas : {Size2{1280, 720}, Size2{900, 1600}, Size2{2400, 1350}}) {
                for (double const scale : {1.0, 2.5}) {
                    auto project = take(frame);
                    project.exportSettings.fit = fit;
                    project.screen.cornerRadius = 0;
                    project.zoomEvents = {{.start = 0, .duration = 10, .center = {0.3, 0.6}, .scale = scale}};
                    DrawnScreen const screen(project, canvas);
                    auto const shown = shownRect(screen.state);
                    double const in = 0.5; // the pixel in the corner
                    for (double const x : {shown.x + in, shown.maxX() - in})
                        for (double const y : {shown.y + in, shown.maxY() - in})
                            EXPECT_LT(screen.at(x, y).r, 90) << nameOf(frame) << " " << canvas.width << " " << scale;
                    EXPECT_TRUE(screen.showsRecording(shown.x + 3, shown.center().y));
                    if (frame != DeviceFrame::iphone) continue;
                    // One centre for both edges: between them the bezel is everywhere as wide.
                    double const radius = outerRadius(frame) * shown.width;
                    double const bezel = screen.state.frameInsets.left;
                    double const k = radius * (1 - std::sqrt(0.5));
                    auto const& clip = screen.state.clipRect;
                    double const out = bezel / 2 * std::sqrt(0.5);
                    EXPECT_LT(screen.at(clip.x + k + out, clip.maxY() - k - out).b, 40) << "the bezel's middle";
                    double const step = (bezel + 4) * std::sqrt(0.5);
                    EXPECT_TRUE(screen.showsRecording(clip.x + k + step, clip.maxY() - k - step - bezel * 0.3));
                }
            }
        }
    }
}

}
