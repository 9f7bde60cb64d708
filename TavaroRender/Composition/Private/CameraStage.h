#pragma once

#include <memory>

#include <TavaroCore/Camera/CameraDirection.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Zoom/CameraState.h>
#include <TavaroRender/Composition/Private/FreeCorner.h>

namespace tavaro {

class FollowPaths;
class PointerTrack;
class ScreenPlacement;
struct DemoProject;
struct SceneGeometry;

/// Where the camera stands beside or over the recording at every moment, and where the recording stands meanwhile:
/// scenes and their blends, the bubble's moves, its keeping out of the way, its silences, the face it follows. Plans
/// are made when they are first needed. Any thread.
class CameraStage {
public:
    /// What is given by reference must stay where it is. `cameraAspect` is the camera picture's.
    CameraStage(DemoProject const& project, Size2 canvas, double cameraAspect, ScreenPlacement const& screen,
                PointerTrack const& pointer, FollowPaths const& follow);
    ~CameraStage();

    /// `zoom` is the screen's camera then, `cameraTime` that of the camera's movie.
    SceneGeometry at(double editTime, double cameraTime, CameraState const& zoom) const;

    /// Where a mark that stays for the whole film is least in the bubble's way.
    CanvasCorner markCorner() const;

    /// The scene that the last cue asked for.
    SceneLayout scene(double editTime) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
