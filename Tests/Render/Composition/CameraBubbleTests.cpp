#include <TavaroRender/Composition/Private/CameraBubble.h>
#include <TavaroRender/Composition/Private/SplitPanes.h>

#include <gtest/gtest.h>

namespace tavaro {

namespace {

constexpr Size2 hd{1920, 1080};
constexpr Size2 canvases[] = {hd, {1080, 1920}, {640, 360}, {65, 65}, {3840, 400}, {90, 2000}};

TEST(CameraBubble, isAShareOfTheSmallerSideHighAndAsWideAsItsShape) {
    EXPECT_EQ(bubbleSize({.shape = CameraShape::circle, .size = 0.25}, hd), (CanvasPoint{270, 270}));
    EXPECT_EQ(bubbleSize({.shape = CameraShape::wide, .size = 0.25}, hd), (CanvasPoint{480, 270}));
    EXPECT_EQ(bubbleSize({.shape = CameraShape::full, .size = 0.25}, hd), (CanvasPoint{270, 270}));
}

TEST(CameraBubble, aWideOneOnANarrowCanvasKeepsItsShapeWithinNineTenths) {
    auto const size = bubbleSize({.shape = CameraShape::wide, .size = 0.9}, {1080, 1920});
    EXPECT_NEAR(size.x, 972, 1e-9);
    EXPECT_NEAR(size.x / size.y, 16.0 / 9, 1e-9);
}

TEST(CameraBubble, aCentreInTheCornerPutsItFlushIntoTheCorner) {
    EXPECT_EQ(positionedBubbleRect({270, 270}, {0, 0}, hd), (CanvasRect{0, 0, 270, 270}));
    EXPECT_EQ(positionedBubbleRect({270, 270}, {7, 7}, hd), (CanvasRect{1650, 810, 270, 270}));
    EXPECT_EQ(positionedBubbleRect({270, 270}, {0.5, 0.5}, hd), (CanvasRect{825, 405, 270, 270}));
}

TEST(CameraBubble, everyPlacementKeepsItsPaddingAndStaysOnEveryCanvas) {
    for (auto const canvas : canvases) {
        for (double const size : {0.1, 0.24, 1.0, 5.0}) {
            for (double const padding : {0.0, 0.03, 0.4, 3.0}) {
                for (std::size_t shape = 0; shape < namesOf(CameraShape{}).size(); ++shape) {
                    for (std::size_t place = 0; place < namesOf(CameraPlacement{}).size(); ++place) {
                        CameraSettings const settings{
                            .shape = static_cast<CameraShape>(shape), .size = size, .padding = padding};
                        auto const extent = bubbleSize(settings, canvas);
                        auto const rect =
                            placedBubbleRect(settings, extent, static_cast<CameraPlacement>(place), canvas);
                        EXPECT_GE(rect.x, 0);
                        EXPECT_GE(rect.y, 0);
                        EXPECT_LE(rect.maxX(), static_cast<double>(canvas.width) + 1e-9);
                        EXPECT_LE(rect.maxY(), static_cast<double>(canvas.height) + 1e-9);
                        EXPECT_LE(bubbleRadius(settings.shape, extent), std::min(rect.width, rect.height) / 2 + 1e-9);
                    }
                }
            }
        }
    }
    CameraSettings const settings{.size = 0.25, .padding = 0.05};
    CanvasPoint const extent{270, 270};
    EXPECT_NEAR(placedBubbleRect(settings, extent, CameraPlacement::bottomRight, hd).maxX(), 1920 - 54, 1e-9);
    EXPECT_NEAR(placedBubbleRect(settings, extent, CameraPlacement::bottomRight, hd).maxY(), 1080 - 54, 1e-9);
    EXPECT_NEAR(placedBubbleRect(settings, extent, CameraPlacement::topLeft, hd).x, 54, 1e-9);
    EXPECT_NEAR(placedBubbleRect(settings, extent, CameraPlacement::left, hd).center().y, 540, 1e-9);
    EXPECT_NEAR(placedBubbleRect(settings, extent, CameraPlacement::top, hd).center().x, 960, 1e-9);
}

TEST(SplitPanes, shareTheCanvasWithTheSameAirAroundThemInEveryArrangement) {
    for (std::size_t i = 0; i < namesOf(SplitArrangement{}).size(); ++i) {
        auto const arrangement = static_cast<SplitArrangement>(i);
        SCOPED_TRACE(namesOf(arrangement)[i]);
        auto const panes = splitPanes({.arrangement = arrangement, .cameraFraction = 0.4}, hd, 0.02);
        double const margin = 0.02 * 1080;
        EXPECT_NEAR(std::min(panes.camera.x, panes.screen.x), margin, 1e-9);
        EXPECT_NEAR(std::min(panes.camera.y, panes.screen.y), margin, 1e-9);
        EXPECT_NEAR(std::max(panes.camera.maxX(), panes.screen.maxX()), 1920 - margin, 1e-9);
        EXPECT_NEAR(std::max(panes.camera.maxY(), panes.screen.maxY()), 1080 - margin, 1e-9);
        bool const stacked =
            arrangement == SplitArrangement::cameraTop || arrangement == SplitArrangement::cameraBottom;
        double const camera = stacked ? panes.camera.height : panes.camera.width;
        double const screen = stacked ? panes.screen.height : panes.screen.width;
        EXPECT_NEAR(camera / (camera + screen), 0.4, 1e-9);
        double const gap =
            stacked ? std::max(panes.camera.y, panes.screen.y) - std::min(panes.camera.maxY(), panes.screen.maxY())
                    : std::max(panes.camera.x, panes.screen.x) - std::min(panes.camera.maxX(), panes.screen.maxX());
        EXPECT_GT(gap, 0);
        EXPECT_LT(gap, margin);
    }
    EXPECT_LT(splitPanes({.arrangement = SplitArrangement::cameraTop}, {1080, 1920}, 0).camera.y, 1);
    EXPECT_LT(splitPanes({.arrangement = SplitArrangement::cameraBottom}, {1080, 1920}, 0).screen.y, 1);
}

TEST(SplitPanes, withoutAirNoBackgroundShowsBetweenThem) {
    for (std::size_t i = 0; i < namesOf(SplitArrangement{}).size(); ++i) {
        for (double const fraction : {-1.0, 0.3, 0.5, 7.0}) {
            auto const panes = splitPanes({static_cast<SplitArrangement>(i), fraction}, hd, 0);
            double overlap =
                std::min(panes.camera.maxX(), panes.screen.maxX()) - std::max(panes.camera.x, panes.screen.x);
            overlap = std::min(overlap, std::min(panes.camera.maxY(), panes.screen.maxY()) -
                                            std::max(panes.camera.y, panes.screen.y));
            EXPECT_GT(overlap, 1);
            EXPECT_GT(std::min(panes.camera.width, panes.camera.height), 50);
            EXPECT_GT(std::min(panes.screen.width, panes.screen.height), 50);
        }
    }
}

}

}
