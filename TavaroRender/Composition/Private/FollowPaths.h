#pragma once

#include <memory>
#include <vector>

#include <TavaroCore/Recording/RecordingMetadata.h>
#include <TavaroCore/Values/Geometry.h>

namespace tavaro {

class AutoPan;
class PointerTrack;
struct DemoProject;
struct ZoomEvent;

/// Centres of a project's camera zooms, in the cropped source. A zoom that follows the cursor has a path, made when it
/// is first asked for and kept: a single frame of a long take pays for the one zoom it shows. Any thread.
class FollowPaths {
public:
    /// Both must stay where they are while this lives.
    FollowPaths(DemoProject const& project, PointerTrack const& pointer);
    ~FollowPaths();

    /// The project's zooms.
    std::vector<ZoomEvent> const& events() const;

    /// `event` is one of `events`.
    UnitPoint2 centre(ZoomEvent const& event, double at) const;

    /// The tuning of every follow path.
    static AutoPan pan();

private:
    struct Path;
    std::vector<CursorSample> const& ensurePath(ZoomEvent const& event) const;

    DemoProject const& project_;
    PointerTrack const& pointer_;
    std::unique_ptr<Path[]> paths_; // by zoom
};

}
