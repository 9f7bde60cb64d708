#pragma once

#include <TavaroCore/Export/ExportSettings.h>
#include <TavaroCore/Records/Fields.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tavaro {

/// A ready choice of export settings for one destination.
struct ExportPreset {
    std::string id;
    std::string name;
    std::string detail; // shown under the name
    Size2 size;
    std::int64_t fps = 60;
    VideoCodecChoice codec = VideoCodecChoice::h264;
    ExportContainer container = ExportContainer::mp4;
    ContentFit fit = ContentFit::fit;
    std::optional<std::int64_t> maxBitrate; // bits per second

    /// The table, in the order it is shown.
    static std::span<ExportPreset const> all();
    /// Null when no preset has that id.
    static ExportPreset const* withID(std::string_view id);

    ExportSettings settings() const;

    /// Whether the preset may be offered without being asked for: a file that uploads and plays anywhere, made of any
    /// project. ProRes is for editing programs, a GIF loses colours and sound, a split needs a camera.
    bool isSuggestible() const;

    static constexpr auto fields = std::tuple{
        field("id", &ExportPreset::id),
        field("name", &ExportPreset::name),
        field("detail", &ExportPreset::detail),
        field("size", &ExportPreset::size),
        field("fps", &ExportPreset::fps),
        field("codec", &ExportPreset::codec),
        field("container", &ExportPreset::container),
        field("fit", &ExportPreset::fit),
        field("maxBitrate", &ExportPreset::maxBitrate),
    };
    bool operator==(ExportPreset const&) const = default;
};
static_assert(listsEveryField<ExportPreset>);

}
