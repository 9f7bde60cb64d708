#include <TavaroRender/Composition/Private/FollowPaths.h>

#include <mutex>

#include <TavaroCore/Cursor/AutoPan.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Composition/Private/PointerTrack.h>

namespace tavaro {

struct FollowPaths::Path {
    std::once_flag made;
    std::vector<CursorSample> samples;
};

FollowPaths::FollowPaths(DemoProject const& project, PointerTrack const& pointer)
    : project_(project)
    , pointer_(pointer)
    , paths_(std::make_unique<Path[]>(project.zoomEvents.size())) {}

FollowPaths::~FollowPaths() = default;

AutoPan FollowPaths::pan() { return AutoPan(0.44, 0.85); }

std::vector<ZoomEvent> const& FollowPaths::events() const { return project_.zoomEvents; }

std::vector<CursorSample> const& FollowPaths::ensurePath(ZoomEvent const& event) const {
    auto& path = paths_[static_cast<std::size_t>(&event - project_.zoomEvents.data())];
    std::call_once(path.made, [&] {
        double const visible = event.visibleFraction();
        path.samples = pan().path(pointer_.samples(event.range()), {visible, visible});
    });
    return path.samples;
}

UnitPoint2 FollowPaths::centre(ZoomEvent const& event, double at) const {
    if (event.followsCursor) {
        if (auto const point = AutoPan::centre(ensurePath(event), at)) return *point;
    }
    return pointer_.cropped(event.center);
}

}
