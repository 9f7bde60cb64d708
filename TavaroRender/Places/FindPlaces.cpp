#include <TavaroRender/Places/Private/FindPlaces.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Composition/Private/CameraBubble.h>
#include <TavaroRender/Composition/Private/FrameState.h>
#include <TavaroRender/Composition/Private/SplitPanes.h>
#include <TavaroRender/Layers/Private/LayerList.h>

#include <variant>

namespace tavaro {

namespace {

NormalizedRect shareOf(CanvasRect const& rect, Size2 canvas) {
    auto const width = static_cast<double>(canvas.width), height = static_cast<double>(canvas.height);
    return {rect.x / width, rect.y / height, rect.width / width, rect.height / height};
}

UnitPoint2 shareOf(CanvasPoint const& point, Size2 canvas) {
    return {point.x / static_cast<double>(canvas.width), point.y / static_cast<double>(canvas.height)};
}

/// The part of the recording that an overlay is about; null for those that have a place on the canvas.
NormalizedRect const* areaOf(Overlay const& overlay) {
    return std::visit(
        [](auto const& content) -> NormalizedRect const* {
            if constexpr (requires { content.rect; })
                return &content.rect;
            else
                return nullptr;
        },
        overlay.kind.content);
}

struct Finder {
    FrameState const& state;
    DemoProject const& project;
    LayerRasterizer::Draw draw;
    FramePlaces places = {};

    FramePlaces find() {
        places.editTime = state.editTime;
        places.canvas = state.canvas;
        places.crop = project.effectiveCrop();
        places.zoom = state.camera;
        findRecording();
        findCamera();
        findDivider();
        findLayers();
        return std::move(places);
    }

    void findRecording() {
        places.showsRecording = state.source && !state.contentRect.isEmpty();
        if (!places.showsRecording) return;
        places.content = shareOf(state.contentRect, state.canvas);
        places.shown = shareOf(shownRect(state), state.canvas);
        if (state.cursorPosition) {
            auto const at = canvasPoint(state, *state.cursorPosition);
            places.pointer = shareOf(at, state.canvas);
        }
        for (auto const& redaction : state.redactions)
            places.redactions.push_back({redaction.track->id, onCanvas(redaction.track->areaAt(state.source->time))});
        for (auto const* overlay : state.visibleOverlays) {
            if (auto const* area = areaOf(*overlay)) places.overlays.push_back({overlay->id, onCanvas(*area)});
        }
    }

    NormalizedRect onCanvas(NormalizedRect const& rect) const {
        return shareOf(canvasRect(state, places.crop, rect), state.canvas);
    }

    void findCamera() {
        if (!state.cameraSource) return;
        FramePlaces::Camera camera{shareOf(state.cameraBubbleRect, state.canvas), state.cameraIsFullPane, {}};
        auto const size = bubbleSize(project.camera, state.canvas);
        for (std::size_t i = 0; i < camera.placements.size(); ++i) {
            auto const rect = placedBubbleRect(project.camera, size, static_cast<CameraPlacement>(i), state.canvas);
            camera.placements[i] = shareOf(rect, state.canvas);
        }
        places.camera = camera;
    }

    void findDivider() {
        if (!places.showsRecording || !places.camera || state.splitShare < 1) return;
        auto const divider = paneDivider(project.effectiveSplit(state.canvas), state.canvas, project.screen.padding);
        places.divider = {shareOf(divider.rect, state.canvas), shareOf(divider.noCamera, state.canvas),
                          shareOf(divider.allCamera, state.canvas)};
    }

    void findLayers() {
        if (state.titleCard) return;
        for (auto const& layer : placedLayers(state, project, LayerMotion::resting)) {
            if (!layer.overlay && !layer.caption) continue;
            auto const bitmap = draw(layer.look);
            if (!bitmap.texture) continue;
            auto const& body = bitmap.body;
            auto const rect = placed(layer, bitmap.texture->width(), bitmap.texture->height(), body);
            auto const place = shareOf({rect.x + body.x, rect.y + body.y, body.width, body.height}, state.canvas);
            if (layer.caption)
                places.caption = FramePlaces::Item{layer.caption->id, place};
            else
                places.overlays.push_back({layer.overlay->id, place});
        }
    }
};

}

FramePlaces findPlaces(FrameState const& state, DemoProject const& project, LayerRasterizer::Draw draw) {
    if (state.canvas.width < 1 || state.canvas.height < 1) return {};
    return Finder{state, project, draw}.find();
}

}
