#pragma once

#include <memory>

#include <TavaroCore/Cursor/AutoPan.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Zoom/CameraState.h>
#include <TavaroRender/Composition/Private/ContentRect.h>

namespace tavaro {

class FollowPaths;
class PointerTrack;
struct DemoProject;

/// Where the recording lies on the canvas, alone or in its pane of a split. Where it overflows its place, the part is
/// shown that the pointer is in, and during a zoom the part that the zoom is about. Any thread.
class ScreenPlacement {
public:
    /// What is given by reference must stay where it is.
    ScreenPlacement(DemoProject const& project, Size2 canvas, CanvasRect const& splitPane, PointerTrack const& pointer,
                    FollowPaths const& follow);
    ~ScreenPlacement();

    /// `camera` is the zoom at that time.
    SinglePane single(double at, CameraState const& camera) const;
    SinglePane inSplit(double at, CameraState const& camera) const;

private:
    struct Pan;
    UnitPoint2 focus(Pan const& pan, double at, CameraState const& camera) const;

    DemoProject const& project_;
    PointerTrack const& pointer_;
    FollowPaths const& follow_;
    Size2 const canvas_;
    Size2 const source_;
    CanvasRect const splitPane_;
    std::unique_ptr<Pan> single_;
    std::unique_ptr<Pan> split_;
};

}
