#pragma once

#include <Tavaro/Model/Exporting/ExportChoices.h>

#include <TavaroCore/Records/Fields.h>
#include <TavaroPlatform/Preferences/Preferences.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

/// A container with what is in it, as people choose it.
enum class ExportFormat { mp4, hevc, mov, proRes, gif };

constexpr std::array<std::string_view, 5> namesOf(ExportFormat) { return {"mp4", "hevc", "mov", "proRes", "gif"}; }

/// "MP4, H.264"
std::string displayName(ExportFormat format);
ExportContainer containerOf(ExportFormat format);
VideoCodecChoice codecOf(ExportFormat format);
ExportFormat formatOf(ExportSettings const& settings);

/// What the user set up for an export: a preset, or numbers. It is what the next export begins with.
struct ExportWishes {
    static constexpr std::string_view custom = "custom", captions = "captions"; // places beside those of `ExportPlace`

    std::string place = "youtube";
    std::string preset = "youtube-1080"; // of the place, where it is one of `ExportPlace`
    Size2 size = {1920, 1080};           // the rest down to the rate of bits is that of "custom"
    std::int64_t fps = 60;
    ExportFormat format = ExportFormat::mp4;
    ContentFit fit = ContentFit::fit;
    std::optional<std::int64_t> bitrate; // bits per second; none: as the size and the rate want it
    bool sound = true;
    bool watermark = false;
    bool captionsBeside = false;
    bool checksFilm = true; // where it hides anything
    std::string folder;     // empty: Movies/Tavaro/Exports

    static constexpr auto fields = std::tuple{
        field("place", &ExportWishes::place),
        field("preset", &ExportWishes::preset),
        field("size", &ExportWishes::size),
        field("fps", &ExportWishes::fps),
        field("format", &ExportWishes::format),
        field("fit", &ExportWishes::fit),
        field("bitrate", &ExportWishes::bitrate),
        field("sound", &ExportWishes::sound),
        field("watermark", &ExportWishes::watermark),
        field("captionsBeside", &ExportWishes::captionsBeside),
        field("checksFilm", &ExportWishes::checksFilm),
        field("folder", &ExportWishes::folder),
    };
    bool operator==(ExportWishes const&) const = default;

    /// Those of the last export.
    static ExportWishes last(Preferences& preferences);
    /// Throws `FileError`.
    void remember(Preferences& preferences) const;

    /// The same but for what that project remembers of its own last export, if it was ever exported.
    ExportWishes of(DemoProject const& project) const;
    /// Chooses that preset with its place; the numbers become its own.
    void choose(std::string const& preset);
    /// Without file or range.
    ExportChoices choices() const;
    /// "YouTube, 1080p"
    std::string title() const;
};
static_assert(listsEveryField<ExportWishes>);

}
