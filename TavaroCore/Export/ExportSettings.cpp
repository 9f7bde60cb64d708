#include <TavaroCore/Export/ExportSettings.h>

#include <algorithm>

namespace tavaro {

namespace {

constexpr std::int64_t lowestBitrate = 2'000'000;

double bitsPerPixel(VideoCodecChoice codec) {
    switch (codec) {
    case VideoCodecChoice::h264: return 0.1;
    case VideoCodecChoice::hevc: return 0.065;
    case VideoCodecChoice::proRes422: return 0.9;
    }
    return 0.1;
}

}

std::int64_t ExportSettings::bitrate() const {
    if (bitrateOverride) return *bitrateOverride;
    double const bits = static_cast<double>(size.width) * static_cast<double>(size.height) * static_cast<double>(fps) *
                        bitsPerPixel(codec);
    return std::max(static_cast<std::int64_t>(std::min(bits, 1e15)), lowestBitrate);
}

double ExportSettings::editingRate() const {
    return static_cast<double>(container == ExportContainer::gif ? ExportSettings{}.fps : fps);
}

std::string_view displayName(VideoCodecChoice codec) {
    constexpr std::array<std::string_view, 3> names{"H.264", "HEVC (H.265)", "ProRes 422"};
    return names[static_cast<std::size_t>(codec)];
}

std::string_view displayName(ExportContainer container) {
    constexpr std::array<std::string_view, 3> names{"MP4", "MOV", "GIF"};
    return names[static_cast<std::size_t>(container)];
}

std::string_view fileExtension(ExportContainer container) { return nameOf(container); }

}
