#include <TavaroRender/Audio/Private/AudioEnhancer.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include <TavaroCore/Files/PendingFile.h>
#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroRender/Audio/Private/ClickSound.h>
#include <TavaroRender/Audio/Private/Enhancement.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

// Rises when the same settings give another sound.
constexpr int recipe = 2;

constexpr std::string_view ending = ".caf";

/// A file that was cut short or damaged since it was written is as good as none.
bool isWhole(fs::path const& file) {
    try {
        AudioReader sound(file);
        StereoSample last;
        auto const end = std::llround(sound.info().duration * audioRate);
        return sound.read(end - 1, {&last, 1}) == 1;
    } catch (MediaError const&) {
        return false;
    }
}

/// FNV-1a.
std::uint64_t hashed(std::string_view text, std::uint64_t hash) {
    for (unsigned char const byte : text) hash = (hash ^ byte) * 0x100000001B3;
    return hash;
}

struct Cached {
    fs::path file;
    fs::file_time_type used;
    std::uintmax_t bytes = 0;
};

/// Half-written ones too: those of killed processes take room until their sound is wanted again.
std::vector<Cached> filesIn(fs::path const& folder) {
    std::vector<Cached> found;
    std::error_code ignored;
    for (auto const& entry : fs::directory_iterator(folder, ignored)) {
        auto const name = entry.path().filename();
        bool const isOurs = name.extension() == ending || PendingFile::isPendingName(name.string());
        if (!isOurs || !entry.is_regular_file(ignored)) continue;
        found.push_back({entry.path(), entry.last_write_time(ignored), entry.file_size(ignored)});
    }
    return found;
}

}

fs::path AudioEnhancer::defaultFolder() { return folders::caches() / "Sound"; }

fs::path AudioEnhancer::cachedFile(fs::path const& file, EnhancementSettings const& settings) const {
    std::error_code ignored;
    auto const changed = fs::last_write_time(file, ignored).time_since_epoch().count();
    auto const text =
        fmt::format("{}\n{}\n{}\n{}\n{} {:.17g} {} {}", recipe, fs::weakly_canonical(file, ignored).string(),
                    fs::file_size(file, ignored), changed, settings.noiseReduction, settings.noiseReductionStrength,
                    settings.voiceClarity, settings.normalize);
    auto const first = hashed(text, 0xCBF29CE484222325);
    return folder_ /
           fmt::format("{}-{:016x}{:016x}{}", file.stem().string().substr(0, 64), first, hashed(text, first), ending);
}

std::optional<fs::path> AudioEnhancer::found(fs::path const& file, EnhancementSettings const& settings) const {
    if (settings.isNone()) return file;
    auto const output = cachedFile(file, settings);
    if (!isWhole(output)) return std::nullopt;
    std::error_code ignored;
    fs::last_write_time(output, fs::file_time_type::clock::now(), ignored); // it was used
    return output;
}

std::optional<fs::path> AudioEnhancer::enhanced(fs::path const& file, EnhancementSettings const& settings,
                                                Progress const& progress) const {
    if (auto made = found(file, settings)) return made;
    auto const output = cachedFile(file, settings);
    std::error_code failure;
    fs::create_directories(folder_, failure);
    if (!Enhancement(file, settings, progress).write(output)) return std::nullopt;
    return output;
}

void AudioEnhancer::keepClickSound() const {
    try {
        ClickSound::ensureFile(folder_);
    } catch (MediaError const&) {
        // It is made anew wherever it is needed.
    }
}

void AudioEnhancer::prune(std::uintmax_t mostBytes) const {
    auto files = filesIn(folder_);
    std::ranges::sort(files, {}, &Cached::used);
    std::uintmax_t together = 0;
    for (auto const& file : files) together += file.bytes;
    auto const recently = fs::file_time_type::clock::now() - std::chrono::hours(24);
    for (auto const& file : files) {
        if (together <= mostBytes || file.used > recently) return;
        std::error_code ignored;
        if (fs::remove(file.file, ignored)) together -= file.bytes;
    }
}

}
