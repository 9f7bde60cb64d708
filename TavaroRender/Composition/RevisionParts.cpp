#include <TavaroRender/Composition/Private/RevisionParts.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Composition/Private/SplitPanes.h>

namespace tavaro {

namespace {

/// The large members are the same where they are shared, which costs nothing to see.
template<auto... members> bool haveSame(DemoProject const& a, DemoProject const& b) {
    return (... && (a.*members == b.*members));
}

/// The style as far as it says where things are.
ScreenStyle placingStyle(ScreenStyle style) {
    ScreenStyle const plain;
    style.shadowRadius = plain.shadowRadius;
    style.shadowOpacity = plain.shadowOpacity;
    style.shadowOffsetY = plain.shadowOffsetY;
    style.borderWidth = plain.borderWidth;
    style.borderColor = plain.borderColor;
    style.insetColor = plain.insetColor;
    style.frameTint = plain.frameTint;
    return style;
}

/// The settings as far as they say where the camera is, and when.
CameraSettings stagingSettings(CameraSettings settings) {
    CameraSettings const plain;
    settings.shadowOpacity = plain.shadowOpacity;
    settings.borderWidth = plain.borderWidth;
    settings.borderColor = plain.borderColor;
    settings.mirrored = plain.mirrored;
    settings.look = plain.look;
    settings.lookStrength = plain.lookStrength;
    settings.lutAsset = plain.lutAsset;
    settings.sharpen = plain.sharpen;
    return settings;
}

CanvasRect splitPane(DemoProject const& project, Size2 canvas) {
    return splitPanes(project.effectiveSplit(canvas), canvas, project.screen.padding).screen;
}

}

Pointing::Pointing(Revision made) : from(std::move(made)), track(*from) {}

bool Pointing::holdsFor(DemoProject const& project) const {
    return haveSame<&DemoProject::metadata, &DemoProject::timeline, &DemoProject::assetDurations,
                    &DemoProject::sourceCrop>(*from, project) &&
           from->cursor.idleHideAfter == project.cursor.idleHideAfter && from->cursor.loops == project.cursor.loops;
}

Following::Following(Revision made, std::shared_ptr<Pointing const> pointer)
    : from(std::move(made))
    , pointing(std::move(pointer))
    , paths(*from, pointing->track) {}

bool Following::holdsFor(DemoProject const& project, std::shared_ptr<Pointing const> const& pointer) const {
    return pointing == pointer && haveSame<&DemoProject::zoomEvents>(*from, project);
}

Placing::Placing(Revision made, std::shared_ptr<Following const> follow, Size2 size)
    : from(std::move(made))
    , following(std::move(follow))
    , canvas(size)
    , screen(*from, canvas, splitPane(*from, canvas), following->pointing->track, following->paths) {}

bool Placing::holdsFor(DemoProject const& project, std::shared_ptr<Following const> const& follow, Size2 size) const {
    return following == follow && canvas == size &&
           haveSame<&DemoProject::sourceSize, &DemoProject::layout>(*from, project) &&
           placingStyle(from->screen) == placingStyle(project.screen) &&
           from->exportSettings.fit == project.exportSettings.fit;
}

Staging::Staging(Revision made, std::shared_ptr<Placing const> screen, double aspect)
    : from(std::move(made))
    , placing(std::move(screen))
    , cameraAspect(aspect)
    , stage(*from, placing->canvas, cameraAspect, placing->screen, placing->following->pointing->track,
            placing->following->paths) {}

bool Staging::holdsFor(DemoProject const& project, std::shared_ptr<Placing const> const& screen, double aspect) const {
    return placing == screen && cameraAspect == aspect &&
           haveSame<&DemoProject::cameraAsset, &DemoProject::cameraFaces, &DemoProject::layoutCues,
                    &DemoProject::cameraMoves, &DemoProject::transcript>(*from, project) &&
           stagingSettings(from->camera) == stagingSettings(project.camera);
}

Hiding::Hiding(Revision made) : from(std::move(made)), redactions(*from->redactions) {}

bool Hiding::holdsFor(DemoProject const& project) const { return haveSame<&DemoProject::redactions>(*from, project); }

}
