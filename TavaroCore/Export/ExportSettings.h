#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Values/Geometry.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

enum class VideoCodecChoice { h264, hevc, proRes422 };

constexpr std::array<std::string_view, 3> namesOf(VideoCodecChoice) { return {"h264", "hevc", "proRes422"}; }

enum class ExportContainer { mp4, mov, gif };

constexpr std::array<std::string_view, 3> namesOf(ExportContainer) { return {"mp4", "mov", "gif"}; }

enum class ContentFit { fit, fill, stretch };

constexpr std::array<std::string_view, 3> namesOf(ContentFit) { return {"fit", "fill", "stretch"}; }

std::string_view displayName(VideoCodecChoice codec);
std::string_view displayName(ExportContainer container);
std::string_view fileExtension(ExportContainer container);

/// Export choices remembered with the project.
struct ExportSettings {
    Size2 size = {1920, 1080};
    std::int64_t fps = 60;
    VideoCodecChoice codec = VideoCodecChoice::h264;
    ExportContainer container = ExportContainer::mp4;
    ContentFit fit = ContentFit::fit;
    std::optional<std::int64_t> bitrateOverride; // bits per second
    bool includeWatermark = false;
    std::optional<std::string> presetID; // the preset it came from
    bool includesAudio = true;

    /// Bits per second: the override, or by size, rate and codec, never below 2,000,000.
    std::int64_t bitrate() const;

    /// Frames a second that an edit is stepped and cut by: a movie's own. The few of a GIF, which is made beside the
    /// film, are no measure for cuts.
    double editingRate() const;

    static constexpr auto fields = std::tuple{
        field("size", &ExportSettings::size),
        field("fps", &ExportSettings::fps),
        field("codec", &ExportSettings::codec),
        field("container", &ExportSettings::container),
        field("fit", &ExportSettings::fit),
        field("bitrateOverride", &ExportSettings::bitrateOverride),
        field("includeWatermark", &ExportSettings::includeWatermark),
        field("presetID", &ExportSettings::presetID),
        field("includesAudio", &ExportSettings::includesAudio),
    };
    bool operator==(ExportSettings const&) const = default;
};
static_assert(listsEveryField<ExportSettings>);

}
