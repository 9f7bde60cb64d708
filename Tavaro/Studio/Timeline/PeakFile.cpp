#include <Tavaro/Studio/Timeline/PeakFile.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Files/FileBytes.h>
#include <TavaroCore/Files/FileError.h>
#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <string_view>

#include <fmt/format.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

static_assert(std::endian::native == std::endian::little, "peaks are stored as they are in memory");

constexpr std::string_view signature = "TavaroPeaks1\n";
constexpr std::string_view ending = ".peaks";
// Ten hours of sound.
constexpr std::uint64_t mostBytes = 4ull * audioRate * 36'000 / PeakPyramid::baseSamples + 1024;

struct Header {
    std::int64_t modified = 0;
    std::int64_t bytes = 0;
    std::int64_t inode = 0;
    std::uint64_t count = 0;
};

/// FNV-1a.
std::uint64_t hashed(std::string_view text, std::uint64_t hash) {
    for (unsigned char const byte : text) hash = (hash ^ byte) * 0x100000001B3;
    return hash;
}

std::optional<StoredPeaks> stored(fs::path const& file) {
    try {
        auto const bytes = FileBytes::read(file, mostBytes);
        return bytes ? decodePeaks(bytes->bytes()) : std::nullopt;
    } catch (FileError const&) {
        return std::nullopt;
    }
}

std::optional<std::vector<SoundPeak>> measured(fs::path const& sound, PeakFolder::Proceed const& proceed) {
    AudioReader reader(sound);
    PeakMeter meter;
    std::vector<StereoSample> samples(audioRate);
    for (;;) {
        if (!proceed()) return std::nullopt;
        auto const read = reader.read(reader.position(), samples);
        meter.feed(std::span(samples).first(read));
        if (read < samples.size()) return meter.take();
    }
}

}

std::string encodePeaks(StoredPeaks const& peaks) {
    Header const header{peaks.stamp.modified, peaks.stamp.bytes, peaks.stamp.inode, peaks.base.size()};
    std::string bytes(signature);
    bytes.append(reinterpret_cast<char const*>(&header), sizeof header);
    bytes.append(reinterpret_cast<char const*>(peaks.base.data()), peaks.base.size() * sizeof(SoundPeak));
    return bytes;
}

std::optional<StoredPeaks> decodePeaks(std::string_view bytes) {
    Header header;
    if (!bytes.starts_with(signature) || bytes.size() < signature.size() + sizeof header) return std::nullopt;
    std::memcpy(&header, bytes.data() + signature.size(), sizeof header);
    bytes.remove_prefix(signature.size() + sizeof header);
    if (bytes.size() % sizeof(SoundPeak) != 0 || bytes.size() / sizeof(SoundPeak) != header.count) return std::nullopt;
    StoredPeaks peaks{{header.modified, header.bytes, header.inode}, std::vector<SoundPeak>(header.count)};
    if (header.count) std::memcpy(peaks.base.data(), bytes.data(), bytes.size());
    return peaks;
}

fs::path PeakFolder::usual() { return folders::caches() / "Waveforms"; }

fs::path PeakFolder::fileOf(fs::path const& sound) const {
    std::error_code ignored;
    auto const name = fs::weakly_canonical(sound, ignored).string();
    auto const first = hashed(name, 0xCBF29CE484222325);
    return folder_ / fmt::format("{:016x}{:016x}{}", first, hashed(name, first), ending);
}

std::optional<PeakPyramid> PeakFolder::peaks(fs::path const& sound, Proceed const& proceed) const {
    auto const stamp = stampOf(sound);
    auto const file = fileOf(sound);
    std::error_code ignored;
    if (auto found = stored(file); found && stamp && found->stamp == *stamp) {
        fs::last_write_time(file, fs::file_time_type::clock::now(), ignored); // it was used
        return PeakPyramid(std::move(found->base));
    }
    auto base = measured(sound, proceed);
    if (!base) return std::nullopt;
    if (stamp) {
        try {
            fs::create_directories(folder_, ignored);
            writeFileAtomically(file, encodePeaks({*stamp, *base}));
        } catch (FileError const&) {
            // They are measured again the next time.
        }
    }
    return PeakPyramid(std::move(*base));
}

void PeakFolder::prune(std::uintmax_t most) const {
    struct Kept {
        fs::path file;
        fs::file_time_type used;
        std::uintmax_t bytes = 0;
    };
    std::vector<Kept> files;
    std::uintmax_t together = 0;
    std::error_code ignored;
    for (auto const& entry : fs::directory_iterator(folder_, ignored)) {
        if (entry.path().extension() != ending || !entry.is_regular_file(ignored)) continue;
        files.push_back({entry.path(), entry.last_write_time(ignored), entry.file_size(ignored)});
        together += files.back().bytes;
    }
    std::ranges::sort(files, {}, &Kept::used);
    for (auto const& file : files) {
        if (together <= most) return;
        if (fs::remove(file.file, ignored)) together -= file.bytes;
    }
}

}
