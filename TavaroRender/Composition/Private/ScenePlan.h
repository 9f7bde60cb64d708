#pragma once

#include <span>
#include <vector>

#include <TavaroCore/Camera/CameraPoseBlend.h>

namespace tavaro {

struct CameraMove;
struct LayoutCue;

/// The poses that the camera takes one after the other, and the ways between them. A pose that comes while the way to
/// the one before is still under way is blended over it, so nothing pops however close two changes follow each other.
class ScenePlan {
public:
    /// A pose and the time from which the camera is on its way to it.
    struct Step {
        double time = 0;
        double seconds = 0; // of the way
        CameraPose pose;
    };

    /// `base` holds until the first cue or move; what lies at the beginning of the edit or before it has no way.
    ScenePlan(CameraPose const& base, std::vector<LayoutCue> const& cues, std::vector<CameraMove> const& moves);

    /// The last step that has been reached by then, and those under way, in order. Never empty.
    std::span<Step const> underWay(double at) const;

    /// 0…1, gentle at both ends.
    static double progress(Step const& step, double at);

    std::vector<Step> const& steps() const { return steps_; }

private:
    std::vector<Step> steps_;
};

}
