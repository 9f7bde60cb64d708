#include <TavaroRender/Export/Private/FrameSources.h>

#include <set>
#include <string_view>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroRender/Composition/Private/FrameComposer.h>
#include <TavaroRender/Export/Private/RecordedMatte.h>

#include <spdlog/spdlog.h>

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

FramePictures FrameSources::pictures(FrameComposer const& composer, double at) {
    FramePictures pictures;
    if (auto const screen = composer.source(at)) pictures.screen = recordings_.frame(screen->asset, screen->time);
    auto const camera = composer.cameraSource(at);
    if (!camera) return pictures;
    pictures.camera = recordings_.frame(camera->asset, camera->time);
    if (!composer.project().camera.cutout) return pictures;
    pictures.matte = matte_->matte(*camera, pictures.camera);
    if (!pictures.matte && !std::exchange(hasMissedMatte_, true))
        spdlog::warn("The camera's movie '{}' has no matte to cut the person out with, so all of it is shown.",
                     camera->asset);
    return pictures;
}

}
