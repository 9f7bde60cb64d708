#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>

#include <TavaroRender/Audio/Private/MixPlan.h>

namespace tavaro {

/// Makes recorded voices better, once for a file and settings: the result is a sound file in a cache folder, named for
/// both, and found there the next time. It is as long as the original, and nothing in it is moved.
///
/// Noise reduction takes steady noise away. Voice clarity cuts rumble, evens out the tones, softens sharp s's and the
/// loudest moments. Normalisation brings the whole to −16 LUFS with a true peak of at most −1.5 dBTP; silence, and what
/// is too short to have a loudness, stays as it is.
class AudioEnhancer {
public:
    /// Makes the folder when it is first needed.
    explicit AudioEnhancer(std::filesystem::path cacheFolder) : folder_(std::move(cacheFolder)) {}

    /// `Tavaro/Sound` in the user's cache folder.
    static std::filesystem::path defaultFolder();

    /// Told now and then how much is done, 0…1; false stops the work.
    using Progress = std::function<bool(double)>;

    /// The enhanced file; none when `progress` stopped it. Without settings, the file itself. Throws `MediaError` as
    /// `AudioReader` and `AudioFileWriter` do.
    std::optional<std::filesystem::path> enhanced(std::filesystem::path const& file,
                                                  EnhancementSettings const& settings,
                                                  Progress const& progress = {}) const;

    /// The enhanced file where it has been made already.
    std::optional<std::filesystem::path> found(std::filesystem::path const& file,
                                               EnhancementSettings const& settings) const;

    /// Where the result for that file, as it is now, and those settings lies or will lie.
    std::filesystem::path cachedFile(std::filesystem::path const& file, EnhancementSettings const& settings) const;

    /// Lays the sound of a click beside the enhanced files, for players of the project that do not mix it themselves. A
    /// cache that cannot be written keeps nobody from exporting.
    void keepClickSound() const;

    /// Removes the files unused for longest until all are together at most that large. What was used within the last
    /// day stays.
    void prune(std::uintmax_t mostBytes) const;

private:
    std::filesystem::path folder_;
};

}
