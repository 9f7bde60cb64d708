#include <TavaroRender/Export/Private/AudioPass.h>

#include <algorithm>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroRender/Audio/Private/AudioEnhancer.h>
#include <TavaroRender/Audio/Private/AudioMixer.h>
#include <TavaroRender/Audio/Private/SignalDucking.h>
#include <TavaroRender/Export/ExportError.h>

namespace tavaro {

namespace {

constexpr std::int64_t blockSamples = 4096;

[[noreturn]] void throwAudioError(MediaError const& error, std::string const& asset) {
    switch (error.kind()) {
    case MediaError::Kind::missing: throw ExportError::missingAsset(asset);
    case MediaError::Kind::notWritable:
    case MediaError::Kind::diskFull:
    case MediaError::Kind::refused: throw ExportError::writerFailed(error.detail());
    case MediaError::Kind::emptyAudioTrack: throw ExportError::audioFailed(error.what());
    default: throw ExportError::audioFailed(std::string(error.what()) + " (" + asset + ")");
    }
}

/// The file of each source, enhanced where its track asks for it.
std::vector<std::filesystem::path> enhancedAssets(MixPlan const& plan, ProjectPackage const& package,
                                                  AudioEnhancer const& enhancer,
                                                  AudioEnhancer::Progress const& progress) {
    std::vector<std::filesystem::path> files;
    for (auto const& source : plan.sources) {
        try {
            auto const asset = package.assetURL(source.asset);
            AudioReader const opened(asset); // whatever is wrong with it shows before the first frame is drawn
            auto const done = static_cast<double>(files.size());
            auto const all = static_cast<double>(plan.sources.size());
            auto const file = enhancer.enhanced(asset, source.enhancement,
                                                [&](double share) { return progress((done + share) / all); });
            if (!file) throw ExportError::cancelled();
            files.push_back(*file);
        } catch (MediaError const& error) {
            throwAudioError(error, source.asset);
        }
    }
    return files;
}

}

std::optional<MixRenderer> prepareMix(DemoProject const& project, ProjectPackage const& package,
                                      AudioEnhancer const& enhancer, std::atomic<bool> const& isCancelled,
                                      std::function<void(double)> const& enhancing) {
    auto plan = AudioMixer::build(project);
    if (plan.isSilent()) return std::nullopt;
    auto files = enhancedAssets(plan, package, enhancer, [&](double done) {
        enhancing(done);
        return !isCancelled;
    });
    try {
        resolveDucking(plan, files, [&] { return !isCancelled; });
    } catch (MediaError const& error) {
        throw ExportError::audioFailed(error.what());
    }
    if (isCancelled) throw ExportError::cancelled();
    if (!plan.clicks.empty()) enhancer.keepClickSound();
    return MixRenderer(std::move(plan), std::move(files));
}

void runAudioPass(AudioPass const& pass) {
    try {
        for (std::int64_t at = 0; at < pass.totalSamples; at += blockSamples) {
            AudioBlock block(static_cast<std::size_t>(std::min(blockSamples, pass.totalSamples - at)));
            pass.mix.render(pass.start + at, block);
            if (!pass.blocks.push(std::move(block))) return;
        }
        pass.blocks.close();
    } catch (MediaError const& error) {
        throw ExportError::audioFailed(error.what());
    }
}

}
