#pragma once

#include <optional>
#include <string>
#include <vector>

#include <TavaroCore/Camera/CameraDirection.h>
#include <TavaroCore/Privacy/Redaction.h>
#include <TavaroCore/Style/CursorSettings.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Zoom/CameraState.h>
#include <TavaroCore/Zoom/LoupeState.h>
#include <TavaroRender/Composition/Private/CanvasGeometry.h>
#include <TavaroRender/Composition/Private/FreeCorner.h>

namespace tavaro {

struct CaptionCue;
struct Overlay;
struct TitleCard;

/// A click effect in progress.
struct ActiveClick {
    UnitPoint2 position; // in the cropped source
    double progress = 0; // 0…1
    ClickEffect effect = ClickEffect::none;

    bool operator==(ActiveClick const&) const = default;
};

/// A region of the recording to be hidden.
struct ActiveRedaction {
    NormalizedRect rect; // in the whole recording, before the crop
    RedactionStyle style = RedactionStyle::mask;
    RedactionTrack const* track = nullptr; // that asks for it

    bool operator==(ActiveRedaction const&) const = default;
};

/// The frame of a movie that a moment of the output shows.
struct ShownSource {
    std::string_view asset; // lives as long as the composer
    double time = 0;        // seconds in the asset

    bool operator==(ShownSource const&) const = default;
};

/// Every number that drawing one frame takes. Lengths are canvas pixels unless a comment says otherwise. Pointers lead
/// into the composer's project and live as long as the composer.
struct FrameState {
    double time = 0;     // output seconds
    double editTime = 0; // of the edit, which begins after the intro: what the items of the project are timed in
    Size2 canvas;
    Size2 sourceSize; // of the recording after the crop; 0 × 0 while nothing of it is shown
    std::optional<ShownSource> source;
    CameraState camera;       // centre in the cropped source
    UnitPoint2 cameraTravel;  // of the camera's centre during the last 1/60 s
    CanvasRect contentRect;   // the recording; may reach past what is seen of it
    CanvasRect clipRect;      // what the screen layer may paint
    CanvasInsets frameInsets; // device frame or band, along the inside of the clip
    double screenShare = 1;   // 0…1: how much of the recording is to be seen; 0 where the camera fills the canvas
    double splitShare = 0;    // 0…1: how much recording and camera have panes of their own, side by side
    SceneLayout scene = SceneLayout::screenOnly;

    std::optional<ShownSource> cameraSource; // the camera's picture, while there is one to show
    CanvasRect cameraBubbleRect;             // the bubble or the camera's pane
    bool cameraIsFullPane = false;           // a pane of a split or the whole canvas, not a bubble
    double cameraCornerRadius = 0;
    double cameraOpacity = 1;                 // 0…1
    bool cameraChrome = false;                // whether it draws border and shadow
    double cameraChromeOpacity = 0;           // 0…1, of both
    bool cameraIsCutOut = false;              // the person alone is shown, where there is a matte
    NormalizedRect cameraCrop = {0, 0, 1, 1}; // part of the camera's picture shown

    std::optional<UnitPoint2> cursorPosition; // in the cropped source
    CanvasPoint cursorCanvasPoint;            // where it is drawn, seen through the loupe if there is one
    double cursorSizePx = 0;                  // height of the arrow's box
    double cursorOpacity = 0;                 // 0…1
    CanvasPoint cursorBlur;                   // travel while the shutter is open

    std::optional<ActiveClick> activeClick;
    CanvasPoint clickCanvasPoint;
    double clickRadiusPx = 0;
    double clickOpacity = 0; // 0…1

    std::optional<LoupeState> loupe;
    CanvasPoint loupeCanvasCenter;
    double loupeRadiusPx = 0;

    std::vector<Overlay const*> visibleOverlays;
    std::vector<ActiveRedaction> redactions;
    CaptionCue const* captionCue = nullptr;
    CanvasCorner markCorner = CanvasCorner::bottomRight; // where a watermark is, for the whole film
    TitleCard const* titleCard = nullptr;                // shown instead of everything else
    double titleCardTime = 0;                            // seconds since the card came on
};

/// Where a point of the cropped source lies on the canvas.
CanvasPoint canvasPoint(FrameState const& state, UnitPoint2 const& point);
CanvasPoint canvasPoint(CanvasRect const& contentRect, CameraState const& camera, UnitPoint2 const& point);
/// The other way: the point of the cropped source that lies there, also where it is outside of it.
UnitPoint2 sourcePoint(CanvasRect const& contentRect, CameraState const& camera, CanvasPoint const& point);

/// Where a part of the whole recording, before the crop, lies on the canvas.
CanvasRect canvasRect(FrameState const& state, NormalizedRect const& crop, NormalizedRect const& rect);

/// The part of the canvas that shows the recording: no frame, and nothing that a pane cuts off.
CanvasRect shownRect(FrameState const& state);

}
