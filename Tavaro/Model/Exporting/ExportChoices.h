#pragma once

#include <TavaroCore/Export/ExportSettings.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Values/TimeRange.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace tavaro {

struct DemoProject;
class OpenProject;

/// What is asked of an export; what is not said follows from the preset, else from what the project remembers.
struct ExportChoices {
    std::optional<std::string> preset; // by its id
    std::optional<Size2> size;         // pixels; written with even sides
    std::optional<std::int64_t> fps;
    std::optional<VideoCodecChoice> codec;
    std::optional<ExportContainer> container;
    std::optional<ContentFit> fit;
    std::optional<std::int64_t> bitrate; // bits per second
    std::optional<bool> watermark;
    std::optional<bool> audio;
    std::optional<TimeRange> range; // the part of the film to write, in its seconds; none: the whole
    std::optional<std::string>
        output; // a file, whose ending names the container, or a folder; else Movies/Tavaro/Exports

    static constexpr std::int64_t shortestSide = 16, longestSide = 8192;
    static constexpr std::int64_t slowest = 1, fastest = 240; // frames a second
    static constexpr std::int64_t leastBitrate = 50'000, mostBitrate = 2'000'000'000;

    static constexpr auto fields = std::tuple{
        field("preset", &ExportChoices::preset),
        field("size", &ExportChoices::size),
        field("fps", &ExportChoices::fps),
        field("codec", &ExportChoices::codec),
        field("container", &ExportChoices::container),
        field("fit", &ExportChoices::fit),
        field("bitrate", &ExportChoices::bitrate),
        field("watermark", &ExportChoices::watermark),
        field("audio", &ExportChoices::audio),
        field("range", &ExportChoices::range),
        field("output", &ExportChoices::output),
    };
    bool operator==(ExportChoices const&) const = default;
};
static_assert(listsEveryField<ExportChoices>);

/// The container that a file's ending stands for.
std::optional<ExportContainer> containerOf(std::filesystem::path const& file);
bool isExportSize(Size2 size);

/// Throws `Error` with a sentence for the first choice that cannot be met: an unknown preset, a number out of its
/// range, a container that does not go with the output's name.
void requireUsable(ExportChoices const& choices);

/// The settings that the choices come to. Throws as `requireUsable`.
ExportSettings settingsFor(ExportChoices const& choices, DemoProject const& project);
/// The file to write, which may be taken. An output that is a folder, or none, gives a suggested name.
std::filesystem::path targetFor(ExportChoices const& choices, ExportSettings const& settings,
                                DemoProject const& project);

/// Makes them the ones that the project's next export begins with, as a step of its history. For an application, after
/// an export that the user set up; the command line leaves the project as it is.
void rememberExportSettings(OpenProject& open, ExportSettings const& settings);

}
