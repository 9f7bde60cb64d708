#include <TavaroRender/Painter/Private/FrameSources.h>

#include <set>
#include <string_view>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Composition/Private/FrameComposer.h>
#include <TavaroRender/Painter/PaintError.h>
#include <TavaroRender/Painter/Private/RecordedMatte.h>

namespace tavaro {

FrameSources::FrameSources(ProjectPackage const& package, std::unique_ptr<CameraMatte> matte)
    : recordings_(package)
    , matte_(matte ? std::move(matte) : std::make_unique<RecordedMatte>(package, recordings_)) {}

void FrameSources::open(DemoProject const& project) {
    std::set<std::string_view> assets;
    for (auto const& clip : project.timeline.clips) assets.insert(clip.asset);
    if (project.usesCamera()) assets.insert(*project.cameraAsset);
    for (auto const asset : assets) recordings_.open(asset);
}

std::optional<Size2> FrameSources::size(std::string_view asset) {
    try {
        auto const& info = recordings_.open(asset);
        return Size2{info.width, info.height};
    } catch (PaintError const&) {
        return std::nullopt;
    }
}

FramePictures FrameSources::pictures(FrameComposer const& composer, double at) {
    FramePictures pictures;
    if (auto const screen = composer.source(at)) pictures.screen = recordings_.frame(screen->asset, screen->time);
    auto const camera = composer.cameraSource(at);
    if (!camera) return pictures;
    pictures.camera = recordings_.frame(camera->asset, camera->time);
    if (composer.project().camera.cutout) pictures.matte = matte_->matte(*camera, pictures.camera);
    return pictures;
}

}
