#include <TavaroRender/Layers/Private/LayerRasterizer.h>

#include <cmath>
#include <limits>
#include <optional>
#include <set>
#include <vector>

#include <gmock/gmock.h>

#include "LayerFrame.h"
#include <TavaroRender/Composition/Private/FrameComposer.h>
#include <TavaroRender/Layers/Private/LayerList.h>

namespace tavaro {

namespace {

using testing::ElementsAre;
using testing::SizeIs;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// What is seen of a layer, on the canvas.
CanvasRect seen(RasterLayer const& layer) {
    auto const ink = inkOf(*layer.texture);
    double const kx = layer.rect.width / layer.texture->width();
    double const ky = layer.rect.height / layer.texture->height();
    return {layer.rect.x + ink.x * kx, layer.rect.y + ink.y * ky, ink.width * kx, ink.height * ky};
}

CanvasRect seen(std::vector<RasterLayer> const& layers) {
    CanvasRect all = seen(layers.front());
    for (auto const& layer : layers) {
        auto const rect = seen(layer);
        double const x = std::min(all.x, rect.x), y = std::min(all.y, rect.y);
        all = {x, y, std::max(all.maxX(), rect.maxX()) - x, std::max(all.maxY(), rect.maxY()) - y};
    }
    return all;
}

std::set<Image const*> textures(std::vector<RasterLayer> const& layers) {
    std::set<Image const*> result;
    for (auto const& layer : layers) result.insert(layer.texture.get());
    return result;
}

}

TEST(LayerRasterizer, everyKindStaysInsideTheCanvasWhereverItIsPut) {
    LayerRasterizer rasterizer;
    for (Size2 const canvas : {Size2{1920, 1080}, Size2{1080, 1920}, Size2{320, 180}, Size2{200, 200}}) {
        for (auto const& kind : layerKinds()) {
            for (UnitPoint2 const position : {UnitPoint2{0.5, 0.5}, {0, 0}, {1, 1}, {-3, 7}, {nan, nan}}) {
                LayerFrame frame(canvas);
                frame.add(kind, position);
                auto const layers = rasterizer.layers(frame.state, frame.project);
                ASSERT_FALSE(layers.empty()) << kind.content.index();
                auto const rect = seen(layers);
                EXPECT_GE(rect.x, -0.5) << kind.content.index() << " on " << canvas.width;
                EXPECT_GE(rect.y, -0.5) << kind.content.index() << " on " << canvas.width;
                EXPECT_LE(rect.maxX(), static_cast<double>(canvas.width) + 0.5) << kind.content.index();
                EXPECT_LE(rect.maxY(), static_cast<double>(canvas.height) + 0.5) << kind.content.index();
            }
        }
    }
}

TEST(LayerRasterizer, aLayerInTheMiddleIsCentredOnItsPosition) {
    LayerRasterizer rasterizer;
    LayerFrame frame;
    frame.add({OverlayKind::Callout{"Click here"}}, {0.4, 0.6}).backgroundColor = RGBAColor::black;
    auto const rect = seen(rasterizer.layers(frame.state, frame.project));
    EXPECT_NEAR(rect.center().x, 0.4 * 1920, 1);
    EXPECT_NEAR(rect.center().y, 0.6 * 1080, 1);
}

TEST(LayerRasterizer, whatDoesNotChangeIsDrawnOnceWhileItSlidesAndScales) {
    LayerRasterizer rasterizer;
    LayerFrame frame;
    for (auto const& kind : layerKinds()) frame.add(kind);
    for (auto& overlay : frame.overlays) {
        overlay.animationIn = OverlayAnimation::spring;
        overlay.animationOut = OverlayAnimation::slideDown;
        overlay.animationDuration = 2;
    }
    frame.state.editTime = 5;
    auto const whole = rasterizer.layers(frame.state, frame.project);
    auto const drawn = rasterizer.rasterizations();
    for (double t = 0; t < 10; t += 0.1) {
        frame.state.editTime = t;
        for (auto const* texture : textures(rasterizer.layers(frame.state, frame.project))) {
            EXPECT_TRUE(textures(whole).contains(texture)) << t;
        }
    }
    EXPECT_EQ(rasterizer.rasterizations(), drawn);
}

TEST(LayerRasterizer, aCaptionIsDrawnAgainOnlyWhenAnotherWordIsSpoken) {
    auto const drawings = [](CaptionStyle style, CaptionReveal reveal) {
        LayerRasterizer rasterizer;
        LayerFrame frame;
        frame.caption("five words make this caption", style);
        frame.project.captions.reveal = reveal;
        for (int i = 0; i < 600; ++i) {
            frame.state.editTime = i / 60.0;
            rasterizer.layers(frame.state, frame.project);
        }
        return rasterizer.rasterizations();
    };
    EXPECT_EQ(drawings(CaptionStyle::minimal, CaptionReveal::line), 5);
    EXPECT_EQ(drawings(CaptionStyle::minimal, CaptionReveal::word), 5);
    EXPECT_EQ(drawings(CaptionStyle::creator, CaptionReveal::line), 5);
    EXPECT_EQ(drawings(CaptionStyle::developer, CaptionReveal::word), 5);
    EXPECT_LE(drawings(CaptionStyle::karaoke, CaptionReveal::line), 5 * 9); // a word fills in eighths
}

TEST(LayerRasterizer, keepsNoMoreBytesThanItMay) {
    constexpr std::size_t limit = 3 << 20;
    LayerRasterizer rasterizer(limit);
    for (int i = 0; i < 60; ++i) {
        LayerFrame frame;
        frame.add({OverlayKind::Title{"Title " + std::to_string(i), "A subtitle"}});
        EXPECT_THAT(rasterizer.layers(frame.state, frame.project), SizeIs(1));
        EXPECT_LE(rasterizer.cachedBytes(), limit);
    }
    EXPECT_GT(rasterizer.cachedBytes(), limit / 2);
    LayerRasterizer tiny(10); // too small for any: layers are drawn all the same
    LayerFrame frame;
    frame.add({OverlayKind::Callout{"Click here"}});
    EXPECT_THAT(tiny.layers(frame.state, frame.project), SizeIs(1));
    EXPECT_EQ(tiny.cachedBytes(), 0u);
}

TEST(LayerList, annotationsLieBelowKeysTheseBelowTitlesAndCaptionsAndTheWatermarkOnTop) {
    LayerFrame frame;
    frame.add({OverlayKind::Title{"Title", ""}});
    frame.add({OverlayKind::Callout{"Callout"}});
    frame.add({OverlayKind::Blur{{0, 0, 1, 1}}});
    frame.add({OverlayKind::Arrow{{0, 0}, {1, 1}}});
    frame.add({OverlayKind::Keycap{{"K"}}});
    frame.caption("Caption", CaptionStyle::minimal);
    frame.project.exportSettings.includeWatermark = true;
    std::vector<std::size_t> kinds;
    for (auto const& layer : placedLayers(frame.state, frame.project)) kinds.push_back(layer.look.kind.index());
    auto const indexOf = [](LayerSpec::Kind const& kind) { return kind.index(); };
    EXPECT_THAT(kinds, ElementsAre(indexOf(LayerSpec::Arrow{}), indexOf(LayerSpec::Callout{}),
                                   indexOf(LayerSpec::Keycap{}), indexOf(LayerSpec::Title{}),
                                   indexOf(LayerSpec::Caption{}), indexOf(LayerSpec::Watermark{})));
}

TEST(LayerList, aCardIsShownInsteadOfEverythingButTheWatermark) {
    LayerFrame frame;
    frame.add({OverlayKind::Callout{"Callout"}});
    frame.caption("Caption", CaptionStyle::minimal);
    TitleCard const card{.text = "Welcome", .subtitle = "to the tour"};
    frame.state.titleCard = &card;
    frame.state.titleCardTime = 1;
    auto const layers = placedLayers(frame.state, frame.project);
    ASSERT_THAT(layers, SizeIs(1));
    EXPECT_EQ(std::get<LayerSpec::Title>(layers[0].look.kind).text, "Welcome");
    frame.project.exportSettings.includeWatermark = true;
    EXPECT_THAT(placedLayers(frame.state, frame.project), SizeIs(2));
}

TEST(LayerList, theWatermarkStandsInTheLowerRightCornerOnlyWhenItIsAskedFor) {
    LayerRasterizer rasterizer;
    LayerFrame frame;
    EXPECT_TRUE(rasterizer.layers(frame.state, frame.project).empty());
    frame.project.exportSettings.includeWatermark = true;
    auto const layers = rasterizer.layers(frame.state, frame.project);
    ASSERT_THAT(layers, SizeIs(1));
    EXPECT_GT(layers[0].rect.x, 1920 * 0.8);
    EXPECT_GT(layers[0].rect.y, 1080 * 0.9);
    EXPECT_LT(layers[0].rect.maxX(), 1920);
    EXPECT_LT(layers[0].rect.maxY(), 1080);
}

TEST(LayerList, theWatermarkStaysForTheWholeFilmWhereTheCameraNeverComes) {
    LayerRasterizer rasterizer;
    using Place = CameraPlacement;
    struct Case {
        std::vector<Place> places; // the first holds from the beginning
        bool isAtLeft;
        bool isAtTop;
    };
    for (auto const& [places, isAtLeft, isAtTop] :
         {Case{{Place::topRight}, false, false}, Case{{Place::bottomRight}, true, false},
          Case{{Place::topRight, Place::bottomRight}, true, false},
          Case{{Place::bottomLeft, Place::bottomRight, Place::bottomLeft}, false, true},
          Case{{Place::bottomRight, Place::topRight, Place::bottomLeft}, true, true}}) {
        DemoProject project;
        project.sourceSize = {1920, 1080};
        project.timeline.clips = {{.asset = "screen.mp4", .duration = 20}};
        project.exportSettings.includeWatermark = true;
        project.intro = TitleCard{.text = "Hello", .duration = 1};
        project.cameraAsset = "camera.mp4";
        project.camera.placement = places.front();
        for (std::size_t i = 1; i < places.size(); ++i)
            project.cameraMoves.push_back({.time = 5.0 * static_cast<double>(i), .placement = places[i]});
        FrameComposer const composer(project, {1920, 1080});
        std::optional<CanvasRect> mark;
        for (double t = 0.5; t < 21; t += 0.1) {
            auto const state = composer.state(t);
            auto const rect = rasterizer.layers(state, composer.project()).back().rect;
            EXPECT_EQ(rect, mark.value_or(rect)) << t;
            mark = rect;
            auto const& camera = state.cameraBubbleRect;
            bool const isUnderCamera = !camera.isEmpty() && rect.x < camera.maxX() && camera.x < rect.maxX() &&
                                       rect.y < camera.maxY() && camera.y < rect.maxY();
            EXPECT_FALSE(isUnderCamera) << t;
        }
        EXPECT_EQ(mark->center().x < 960, isAtLeft);
        EXPECT_EQ(mark->center().y < 540, isAtTop);
    }
}

TEST(LayerList, theWatermarkIsInTheCornerThatTheCameraCoversForTheShortestTime) {
    DemoProject project;
    project.sourceSize = {1920, 1080};
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 20}};
    project.cameraAsset = "camera.mp4";
    project.camera.placement = CameraPlacement::bottomRight;
    project.cameraMoves = {{.time = 5, .placement = CameraPlacement::bottomLeft},
                           {.time = 10, .placement = CameraPlacement::topRight},
                           {.time = 12, .placement = CameraPlacement::topLeft}};
    project.exportSettings.includeWatermark = true;
    EXPECT_EQ(FrameComposer(project, {1920, 1080}).state(0).markCorner, CanvasCorner::topRight);
    project.layoutCues = {{.time = 0, .scene = SceneLayout::screenOnly}, {.time = 5, .scene = SceneLayout::overlay}};
    EXPECT_EQ(FrameComposer(project, {1920, 1080}).state(0).markCorner, CanvasCorner::bottomRight)
        << "the camera is not shown while it would be there";
}

TEST(BoxLayers, aBoxStaysAroundItsButtonWhileTheCameraZoomsAndIsNotDrawnAgain) {
    LayerRasterizer rasterizer;
    LayerFrame frame;
    NormalizedRect const button{0.4, 0.45, 0.2, 0.1};
    frame.add({OverlayKind::Box{button}});
    frame.project.sourceCrop = NormalizedRect{0.2, 0.2, 0.6, 0.6};
    rasterizer.layers(frame.state, frame.project);
    auto const drawn = rasterizer.rasterizations();
    for (double scale = 1; scale <= 2; scale += 0.07) {
        frame.state.camera.scale = scale;
        frame.state.camera.center = {0.5, 0.5};
        auto const rect = seen(rasterizer.layers(frame.state, frame.project));
        auto const begin = canvasPoint(frame.state, {(0.4 - 0.2) / 0.6, (0.45 - 0.2) / 0.6});
        auto const end = canvasPoint(frame.state, {(0.6 - 0.2) / 0.6, (0.55 - 0.2) / 0.6});
        EXPECT_NEAR(rect.x, begin.x, 1.5) << scale;
        EXPECT_NEAR(rect.y, begin.y, 1.5) << scale;
        EXPECT_NEAR(rect.maxX(), end.x, 1.5) << scale;
        EXPECT_NEAR(rect.maxY(), end.y, 1.5) << scale;
    }
    EXPECT_EQ(rasterizer.rasterizations(), drawn);
}

TEST(BoxLayers, noPixelOfABoxIsDrawnTwice) {
    LayerFrame frame;
    for (double shift = 0; shift < 1; shift += 0.13) {
        frame.state.visibleOverlays.clear();
        frame.add({OverlayKind::Box{{0.3 + shift / 1920, 0.3 + shift / 1080, 0.3, 0.2}}}).backgroundColor =
            RGBAColor::rgb(0x00FF00, 0.3);
        auto const pieces = placedLayers(frame.state, frame.project);
        ASSERT_THAT(pieces, SizeIs(9));
        for (int x = 560; x < 1180; ++x) {
            int count = 0;
            for (auto const& piece : pieces) {
                auto const& r = piece.rect;
                count += x + 0.5 >= r.x && x + 0.5 <= r.maxX() && 400.5 >= r.y && 400.5 <= r.maxY();
            }
            ASSERT_LE(count, 1) << x << " at " << shift;
        }
    }
}

TEST(BoxLayers, aBoxWhoseButtonLeftThePaneIsGone) {
    LayerFrame frame;
    frame.add({OverlayKind::Box{{0.02, 0.02, 0.1, 0.1}}});
    EXPECT_FALSE(placedLayers(frame.state, frame.project).empty());
    frame.state.camera.scale = 3;
    frame.state.camera.center = {0.8, 0.8};
    EXPECT_TRUE(placedLayers(frame.state, frame.project).empty());
    frame.state.camera.scale = 1;
    frame.state.source.reset();
    EXPECT_TRUE(placedLayers(frame.state, frame.project).empty());
}

}
