#pragma once

#include <Tavaro/Studio/Timeline/PeakPyramid.h>

#include <TavaroCore/Package/FileStamp.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// What is kept of a sound file's peaks: those of the lowest level, with the stamp of the file that they are of.
struct StoredPeaks {
    FileStamp stamp;
    std::vector<SoundPeak> base;

    bool operator==(StoredPeaks const&) const = default;
};

std::string encodePeaks(StoredPeaks const& peaks);
/// None for bytes that are no stored peaks, or not all of them.
std::optional<StoredPeaks> decodePeaks(std::string_view bytes);

/// The peaks of sound files, found again in a folder of the user's cache.
class PeakFolder {
public:
    explicit PeakFolder(std::filesystem::path folder) : folder_(std::move(folder)) {}

    /// `Tavaro/Waveforms` in the user's cache folder.
    static std::filesystem::path usual();

    /// Told now and then while a file is read; false stops that.
    using Proceed = std::function<bool()>;

    /// Those of a file as it is now: read from the folder, or from the sound itself and then kept. None where `proceed`
    /// said no. Throws `MediaError` for a sound that cannot be read; a folder that cannot be written is no failure.
    std::optional<PeakPyramid> peaks(std::filesystem::path const& sound, Proceed const& proceed) const;

    /// Removes the files that were not used for longest, until all are together at most that large.
    void prune(std::uintmax_t mostBytes) const;

private:
    std::filesystem::path fileOf(std::filesystem::path const& sound) const;

    std::filesystem::path folder_;
};

}
