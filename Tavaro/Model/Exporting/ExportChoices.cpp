#include <Tavaro/Model/Exporting/ExportChoices.h>

#include <Tavaro/Model/Project/OpenProject.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

ExportSettings settingsOfPreset(std::string const& id) {
    if (auto const* preset = ExportPreset::withID(id)) return preset->settings();
    throw Error(fmt::format("There is no preset “{}”; `tavaro presets` lists them.", id));
}

/// The GIF preset, in the shape of the project's canvas.
ExportSettings settingsOfGIF(Size2 canvas) {
    auto settings = settingsOfPreset("gif");
    auto const longest = static_cast<double>(settings.size.width);
    double const scale = longest / static_cast<double>(std::max({canvas.width, canvas.height, std::int64_t{1}}));
    auto const side = [&](std::int64_t of) {
        return std::max<std::int64_t>(std::llround(static_cast<double>(of) * scale), ExportChoices::shortestSide);
    };
    settings.size = Size2{side(canvas.width), side(canvas.height)}.evened();
    return settings;
}

/// What was asked for, else what the file's ending says; none where neither does.
std::optional<ExportContainer> askedContainer(ExportChoices const& choices) {
    return choices.container ? choices.container : containerOf(choices.output.value_or(""));
}

/// What the choices do not say: the preset's settings, else the project's own, which hardly fit a GIF unless they are
/// those of one.
ExportSettings settingsBefore(ExportChoices const& choices, DemoProject const& project) {
    if (choices.preset) return settingsOfPreset(*choices.preset);
    bool const turnsIntoGIF =
        askedContainer(choices) == ExportContainer::gif && project.exportSettings.container != ExportContainer::gif;
    return turnsIntoGIF ? settingsOfGIF(project.canvas) : project.exportSettings;
}

ExportContainer containerFor(std::optional<ExportContainer> asked, ExportSettings const& settings) {
    if (asked) return *asked;
    bool const needsMOV = settings.codec == VideoCodecChoice::proRes422 && settings.container == ExportContainer::mp4;
    return needsMOV ? ExportContainer::mov : settings.container;
}

void requireInRange(std::optional<std::int64_t> value, std::int64_t least, std::int64_t most, char const* what) {
    if (value && (*value < least || *value > most))
        throw Error(fmt::format("A film has {} to {} {}; {} cannot be.", least, most, what, *value));
}

}

std::optional<ExportContainer> containerOf(fs::path const& file) {
    auto ending = file.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
    return ending.empty() ? std::nullopt : enumNamed<ExportContainer>(std::string_view(ending).substr(1));
}

bool isExportSize(Size2 size) {
    return std::min(size.width, size.height) >= ExportChoices::shortestSide &&
           std::max(size.width, size.height) <= ExportChoices::longestSide;
}

void requireUsable(ExportChoices const& choices) {
    if (choices.preset) settingsOfPreset(*choices.preset);
    if (choices.size && !isExportSize(*choices.size))
        throw Error(fmt::format("Each side of a film has {} to {} pixels; {} × {} cannot be.",
                                ExportChoices::shortestSide, ExportChoices::longestSide, choices.size->width,
                                choices.size->height));
    requireInRange(choices.fps, ExportChoices::slowest, ExportChoices::fastest, "frames a second");
    requireInRange(choices.bitrate, ExportChoices::leastBitrate, ExportChoices::mostBitrate, "bits a second");
    if (choices.range && !(choices.range->duration > 0)) throw Error("The part of the film to write has no length.");
    fs::path const output = choices.output.value_or("");
    auto const byEnding = containerOf(output);
    if (output.has_extension() && !byEnding)
        throw Error(fmt::format("“{}” has none of the endings .mp4, .mov and .gif.", output.string()));
    if (choices.container && byEnding && *byEnding != *choices.container)
        throw Error(fmt::format("{} does not go with the name “{}”.", nameOf(*choices.container), output.string()));
}

ExportSettings settingsFor(ExportChoices const& choices, DemoProject const& project) {
    requireUsable(choices);
    auto settings = settingsBefore(choices, project);
    auto const before = settings;
    if (choices.size) settings.size = *choices.size;
    if (choices.fps) settings.fps = *choices.fps;
    if (choices.codec) settings.codec = *choices.codec;
    if (choices.fit) settings.fit = *choices.fit;
    if (choices.bitrate) settings.bitrateOverride = *choices.bitrate;
    if (choices.watermark) settings.includeWatermark = *choices.watermark;
    if (choices.audio) settings.includesAudio = *choices.audio;
    settings.container = containerFor(askedContainer(choices), settings);
    if (!(settings == before)) settings.presetID.reset();
    return settings;
}

fs::path targetFor(ExportChoices const& choices, ExportSettings const& settings, DemoProject const& project) {
    fs::path target = choices.output.value_or("");
    if (target.has_extension()) return target;
    if (target.empty()) target = folders::movies() / "Tavaro" / "Exports" / "";
    std::error_code ignored;
    bool const isFolder = !target.has_filename() || fs::is_directory(target, ignored);
    if (isFolder) target /= suggestedFileName(settings, project.name);
    return target += fmt::format(".{}", fileExtension(settings.container));
}

void rememberExportSettings(OpenProject& open, ExportSettings const& settings) {
    open.edit("Export Settings", [&](DemoProject& project) { project.exportSettings = settings; });
}

}
