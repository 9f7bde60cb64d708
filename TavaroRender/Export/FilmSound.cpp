#include <TavaroRender/Export/FilmSound.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroRender/Audio/Private/AudioEnhancer.h>
#include <TavaroRender/Audio/Private/AudioMixer.h>
#include <TavaroRender/Audio/Private/MixRenderer.h>
#include <TavaroRender/Audio/Private/SignalDucking.h>
#include <TavaroRender/Export/ExportError.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

AudioEnhancer enhancer() { return AudioEnhancer(AudioEnhancer::defaultFolder()); }

std::string sentence(MediaError const& error, std::string const& asset) {
    if (error.kind() == MediaError::Kind::missing) return ExportError::missingAsset(asset).what();
    return std::string(error.what()) + " (" + asset + ")";
}

void leaveOut(MixPlan& plan, std::size_t source) {
    for (auto& track : plan.tracks) std::erase_if(track.runs, [&](MixRun const& run) { return run.source == source; });
    std::erase_if(plan.tracks, [](MixTrack const& track) { return track.runs.empty(); });
}

bool waitsForSignal(MixPlan const& plan) {
    return std::ranges::any_of(
        plan.tracks, [](MixTrack const& track) { return track.duckedBySignal.has_value() && track.duckAmount > 0; });
}

}

struct FilmSound::State {
    State(DemoProject const& project, ProjectPackage const& package)
        : package(package)
        , asked(AudioMixer::build(project))
        , plan(asked)
        , files(plan.sources.size()) {}

    using Find = std::function<std::optional<fs::path>(fs::path const&, EnhancementSettings const&)>;

    ProjectPackage const package;
    MixPlan const asked;
    MixPlan plan; // of it, what can be read
    std::vector<fs::path> files;
    std::vector<std::string> problems;
    std::optional<MixRenderer> mix; // none: silence
    bool isFinal = true;

    bool findFiles(Find const& find);
    bool findFile(std::size_t source, Find const& find);
    void begin();
    void leaveOutUnreadable();
};

/// False when `find` found none for a source that can be read.
bool FilmSound::State::findFile(std::size_t source, Find const& find) {
    auto const& [asset, enhancement] = plan.sources[source];
    try {
        files[source] = package.assetURL(asset);
        AudioReader const opened(files[source]); // whatever is wrong with it shows before it is heard
        auto found = find(files[source], enhancement);
        if (found) files[source] = std::move(*found);
        return found.has_value();
    } catch (MediaError const& error) {
        problems.push_back(sentence(error, asset));
        leaveOut(plan, source);
        return true;
    }
}

bool FilmSound::State::findFiles(Find const& find) {
    bool areAllFound = true;
    for (std::size_t source = 0; source < plan.sources.size(); ++source)
        areAllFound = findFile(source, find) && areAllFound;
    return areAllFound;
}

void FilmSound::State::begin() {
    mix.reset();
    if (!plan.isSilent()) mix.emplace(plan, files);
}

/// What could be read when it was opened may be gone by the time when it is heard.
void FilmSound::State::leaveOutUnreadable() {
    for (std::size_t source = 0; source < files.size(); ++source) {
        try {
            AudioReader const opened(files[source]);
        } catch (MediaError const& error) {
            auto said = sentence(error, plan.sources[source].asset);
            if (!std::ranges::count(problems, said)) problems.push_back(std::move(said));
            leaveOut(plan, source);
        }
    }
    begin();
}

FilmSound::FilmSound(std::unique_ptr<State> state) : state_(std::move(state)) {}
FilmSound::FilmSound(FilmSound&&) noexcept = default;
FilmSound& FilmSound::operator=(FilmSound&&) noexcept = default;
FilmSound::~FilmSound() = default;

FilmSound FilmSound::draft(DemoProject const& project, ProjectPackage const& package) {
    auto state = std::make_unique<State>(project, package);
    bool const areFound = state->findFiles(
        [](fs::path const& file, EnhancementSettings const& settings) { return enhancer().found(file, settings); });
    state->isFinal = areFound && !waitsForSignal(state->plan);
    state->begin();
    return FilmSound(std::move(state));
}

std::optional<FilmSound> FilmSound::finished(DemoProject const& project, ProjectPackage const& package,
                                             std::function<bool()> const& goOn) {
    auto state = std::make_unique<State>(project, package);
    state->findFiles([&](fs::path const& file, EnhancementSettings const& settings) {
        return enhancer().enhanced(file, settings, [&](double) { return goOn(); });
    });
    try {
        if (goOn()) resolveDucking(state->plan, state->files, goOn);
    } catch (MediaError const& error) {
        state->problems.emplace_back(error.what());
    }
    if (!goOn()) return std::nullopt;
    state->begin();
    return FilmSound(std::move(state));
}

bool FilmSound::isFinal() const { return state_->isFinal; }

bool FilmSound::isSilent() const { return !state_->mix; }

bool FilmSound::hasSameMix(FilmSound const& other) const { return state_->asked == other.state_->asked; }

std::vector<std::string> const& FilmSound::problems() const { return state_->problems; }

void FilmSound::render(std::int64_t position, std::span<StereoSample> samples) {
    for (int attempt = 0; state_->mix && attempt < 2; ++attempt) {
        try {
            return state_->mix->render(position, samples);
        } catch (MediaError const& error) {
            if (attempt == 0) {
                state_->leaveOutUnreadable();
            } else {
                state_->problems.emplace_back(error.what());
                state_->mix.reset();
            }
        }
    }
    std::ranges::fill(samples, StereoSample{});
}

}
