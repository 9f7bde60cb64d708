#pragma once

#include <vector>

#include <TavaroCore/Camera/CameraPoseBlend.h>
#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroRender/Composition/Private/CanvasGeometry.h>

namespace tavaro {

/// What a camera that keeps out of the way must know of an edit.
struct DodgeScene {
    double duration = 0; // seconds of the edit
    /// The bubble in a pose.
    FunctionRef<CanvasRect(CameraPose const& pose)> bubble;
    /// Appends the points of the canvas that somebody looks at then.
    FunctionRef<void(double at, std::vector<CanvasPoint>& points)> busyPoints;
};

/// The moves of a bubble that leaves its place for a free corner when the work of the coming second lies beneath it,
/// stays there for some seconds at least, and returns once its own place is free again.
///
///     home      [ bottom right ]····················[ bottom right ]
///     pointer             ╲________under it____╱
///     bubble    [ bottom right ][ bottom left      ][ bottom right ]
///
/// `moves` say where home is; they are among the result. Linear in the length of the edit.
std::vector<CameraMove> dodgingMoves(DodgeScene const& scene, CameraPose const& home,
                                     std::vector<CameraMove> const& moves);

}
