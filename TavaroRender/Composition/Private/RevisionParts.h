#pragma once

#include <memory>

#include <TavaroCore/Values/Geometry.h>
#include <TavaroRender/Composition/Private/CameraStage.h>
#include <TavaroRender/Composition/Private/FollowPaths.h>
#include <TavaroRender/Composition/Private/PointerTrack.h>
#include <TavaroRender/Composition/Private/RedactionIndex.h>
#include <TavaroRender/Composition/Private/ScreenPlacement.h>

namespace tavaro {

struct DemoProject;

/// A state of the project that nobody changes.
using Revision = std::shared_ptr<DemoProject const>;

/// What frames are worked out from, one built upon the other. Each keeps the revision that it was made from and refers
/// to, and holds for a later one that has the same in all that it reads. Any thread.

struct Pointing {
    explicit Pointing(Revision made);
    bool holdsFor(DemoProject const& project) const;

    Revision const from;
    PointerTrack const track;
};

struct Following {
    Following(Revision made, std::shared_ptr<Pointing const> pointer);
    bool holdsFor(DemoProject const& project, std::shared_ptr<Pointing const> const& pointer) const;

    Revision const from;
    std::shared_ptr<Pointing const> const pointing;
    FollowPaths const paths;
};

struct Placing {
    Placing(Revision made, std::shared_ptr<Following const> follow, Size2 canvas);
    bool holdsFor(DemoProject const& project, std::shared_ptr<Following const> const& follow, Size2 size) const;

    Revision const from;
    std::shared_ptr<Following const> const following;
    Size2 const canvas;
    ScreenPlacement const screen;
};

struct Staging {
    /// `aspect` is that of the camera's picture.
    Staging(Revision made, std::shared_ptr<Placing const> screen, double aspect);
    bool holdsFor(DemoProject const& project, std::shared_ptr<Placing const> const& screen, double aspect) const;

    Revision const from;
    std::shared_ptr<Placing const> const placing;
    double const cameraAspect;
    CameraStage const stage;
};

struct Hiding {
    explicit Hiding(Revision made);
    bool holdsFor(DemoProject const& project) const;

    Revision const from;
    RedactionIndex const redactions;
};

/// The part of an earlier revision, which may be null, or else a new one.
template<class Part, class... Inputs> std::shared_ptr<Part const>
keptOrMade(std::shared_ptr<Part const> const& before, Revision const& project, Inputs const&... inputs) {
    if (before && before->holdsFor(*project, inputs...)) return before;
    return std::make_shared<Part const>(project, inputs...);
}

}
