#include <Tavaro/Studio/Exports/ExportWishes.h>

#include <Tavaro/Studio/Exports/ExportPlace.h>

#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSON.h>

namespace tavaro {

namespace {

Preference<std::string> const lastWishes{"com.tavaro.studio.export", ""};

/// The preset that the settings are but for what can be switched beside it; null where they are none.
ExportPreset const* presetOf(ExportSettings const& settings) {
    for (auto const& preset : ExportPreset::all()) {
        if (settings.presetID.value_or(preset.id) != preset.id) continue;
        auto own = preset.settings();
        own.presetID = settings.presetID;
        own.includesAudio = settings.includesAudio;
        own.includeWatermark = settings.includeWatermark;
        if (own == settings) return &preset;
    }
    return nullptr;
}

}

std::string displayName(ExportFormat format) {
    switch (format) {
    case ExportFormat::mp4: return "MP4, H.264";
    case ExportFormat::hevc: return "MP4, HEVC";
    case ExportFormat::mov: return "MOV, H.264";
    case ExportFormat::proRes: return "MOV, ProRes 422";
    case ExportFormat::gif: return "GIF";
    }
    return {};
}

ExportContainer containerOf(ExportFormat format) {
    switch (format) {
    case ExportFormat::mp4:
    case ExportFormat::hevc: return ExportContainer::mp4;
    case ExportFormat::mov:
    case ExportFormat::proRes: return ExportContainer::mov;
    case ExportFormat::gif: return ExportContainer::gif;
    }
    return ExportContainer::mp4;
}

VideoCodecChoice codecOf(ExportFormat format) {
    if (format == ExportFormat::hevc) return VideoCodecChoice::hevc;
    return format == ExportFormat::proRes ? VideoCodecChoice::proRes422 : VideoCodecChoice::h264;
}

ExportFormat formatOf(ExportSettings const& settings) {
    if (settings.container == ExportContainer::gif) return ExportFormat::gif;
    if (settings.codec == VideoCodecChoice::proRes422) return ExportFormat::proRes;
    if (settings.codec == VideoCodecChoice::hevc) return ExportFormat::hevc;
    return settings.container == ExportContainer::mov ? ExportFormat::mov : ExportFormat::mp4;
}

ExportWishes ExportWishes::last(Preferences& preferences) {
    auto const stored = preferences.get(lastWishes);
    try {
        return stored.empty() ? ExportWishes{} : decodeJSON<ExportWishes>(stored);
    } catch (JSONError const&) {
        return {}; // of another version, or edited by hand
    }
}

void ExportWishes::remember(Preferences& preferences) const { preferences.set(lastWishes, encodeJSON(*this)); }

ExportWishes ExportWishes::of(DemoProject const& project) const {
    auto wishes = *this;
    auto const& own = project.exportSettings;
    auto unset = ExportSettings{};
    unset.size = own.size; // a new project has its canvas's
    if (own == unset) return wishes;
    if (auto const* const known = presetOf(own)) {
        wishes.choose(known->id);
    } else {
        wishes.place = custom;
        wishes.size = own.size;
        wishes.fps = own.fps;
        wishes.format = formatOf(own);
        wishes.fit = own.fit;
        wishes.bitrate = own.bitrateOverride;
    }
    wishes.sound = own.includesAudio;
    wishes.watermark = own.includeWatermark;
    return wishes;
}

void ExportWishes::choose(std::string const& id) {
    auto const* const known = ExportPreset::withID(id);
    auto const* const of = ExportPlace::ofPreset(id);
    if (!known || !of) return;
    place = of->id;
    preset = id;
    auto const settings = known->settings();
    size = settings.size;
    fps = settings.fps;
    format = formatOf(settings);
    fit = settings.fit;
    bitrate = settings.bitrateOverride;
}

ExportChoices ExportWishes::choices() const {
    ExportChoices choices{.watermark = watermark, .audio = sound};
    if (place != custom) {
        choices.preset = preset;
        return choices;
    }
    // Whatever the project remembers, these are all that counts; a preset gives what nobody asks for.
    choices.preset = ExportPreset::all().front().id;
    choices.size = size;
    choices.fps = fps;
    choices.codec = codecOf(format);
    choices.container = tavaro::containerOf(format);
    choices.fit = fit;
    choices.bitrate = bitrate;
    return choices;
}

std::string ExportWishes::title() const {
    if (place == custom) return "Custom";
    if (place == captions) return "Captions";
    auto const* const of = ExportPlace::withID(place);
    auto const* const way = of ? of->way(preset) : nullptr;
    if (!way) return preset;
    return of->ways.size() > 1 ? std::string(of->title) + ", " + way->title : of->title;
}

}
