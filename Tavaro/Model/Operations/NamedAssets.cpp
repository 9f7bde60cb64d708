#include <Tavaro/Model/Operations/Private/NamedAssets.h>

#include <TavaroCore/Project/DemoProject.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

using Assets = std::map<std::string, std::string>;

void add(Assets& assets, std::optional<std::string> const& name, std::string const& path) {
    if (name) assets.try_emplace(*name, path);
}

void addSounds(Assets& assets, std::vector<AudioTrack> const& tracks) {
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        auto const& clips = tracks[i].clips;
        for (std::size_t j = 0; j < clips.size(); ++j)
            add(assets, clips[j].asset, fmt::format("audioTracks[{}].clips[{}].asset", i, j));
    }
}

void addVoices(Assets& assets, VoiceoverPlan const& plan) {
    for (std::size_t i = 0; i < plan.segments.size(); ++i)
        add(assets, plan.segments[i].audioAsset, fmt::format("voiceover.segments[{}].audioAsset", i));
}

}

Assets namedAssets(DemoProject const& project) {
    Assets assets;
    add(assets, project.cameraAsset, "cameraAsset");
    add(assets, project.camera.lutAsset, "camera.lutAsset");
    if (auto const* const image = std::get_if<BackgroundStyle::ImageFile>(&project.background.content))
        add(assets, image->assetName, "background.image.assetName");
    addSounds(assets, project.audioTracks);
    if (project.voiceover) addVoices(assets, *project.voiceover);
    return assets;
}

}
