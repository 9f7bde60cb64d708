#pragma once

#include <TavaroCore/Values/Geometry.h>
#include <TavaroRender/Composition/Private/CanvasGeometry.h>
#include <TavaroRender/Composition/Private/ContentRect.h>

namespace tavaro {

/// How the camera's picture stands on the canvas.
struct CameraFigure {
    CanvasRect rect;
    double radius = 0;
    double opacity = 0;                 // 0…1
    double chrome = 0;                  // 0…1, of border and shadow
    double overlayShare = 0;            // 0…1: how much it is laid over the recording, not given room of its own
    NormalizedRect crop = {0, 0, 1, 1}; // part of the picture shown
    CanvasPoint aside;                  // where it comes from and goes to while it is faint, from its place
    bool isPane = false;                // a pane or the whole canvas, not a bubble
    bool isCutOut = false;              // the person alone, where there is a matte

    bool operator==(CameraFigure const&) const = default;
};

/// Where recording and camera stand in a scene, or on the way from one to another.
struct SceneGeometry {
    SinglePane screen;
    double screenShare = 1; // 0…1: how much of the recording is meant to be looked at; 0 behind a full camera
    double splitShare = 0;  // 0…1: how much recording and camera have panes of their own
    CameraFigure camera;

    bool operator==(SceneGeometry const&) const = default;
};

CanvasRect lerp(CanvasRect const& a, CanvasRect const& b, double t);
SinglePane lerp(SinglePane const& a, SinglePane const& b, double t);

/// On the straight way from one figure to the other. A faint figure counts for little: what appears does so where it
/// will be, what vanishes stays where it was.
CameraFigure glide(CameraFigure const& from, CameraFigure const& to, double progress);

/// The figure as it is drawn: while it is faint a bubble is a little smaller, and a pane moved aside.
CameraFigure appearing(CameraFigure const& figure);

/// Fades away where it was and comes back where it goes: for ways that would lead across everything.
CameraFigure dip(CameraFigure const& from, CameraFigure const& to, double progress);

}
