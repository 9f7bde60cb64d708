#include <Tavaro/Model/Recording/RecordingChoice.h>

#include <Tavaro/Model/Recording/RecordingPreferences.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Records/Fields.h>

#include <algorithm>
#include <fmt/format.h>
#include <type_traits>

namespace tavaro {

namespace {

/// What is before the mark, which goes from the text with it; all of it where there is none.
std::string_view takeUpTo(char mark, std::string_view& text) {
    auto const end = std::min(text.find(mark), text.size());
    auto const part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

std::string areaText(AreaSource const& area) {
    auto const& rect = area.rect;
    return fmt::format("area:{},{},{},{};{};{}", rect.x, rect.y, rect.width, rect.height, nameOf(area.shape),
                       area.display);
}

std::optional<CaptureSource> areaIn(std::string_view text) {
    auto area = parseAreaSource(takeUpTo(';', text));
    auto const shape = enumNamed<AreaShape>(takeUpTo(';', text));
    if (!shape) return std::nullopt;
    area.shape = *shape;
    area.display = text;
    return area;
}

}

std::string sourceText(CaptureSource const& source) {
    return std::visit(
        [](auto const& one) -> std::string {
            using Source = std::decay_t<decltype(one)>;
            if constexpr (std::is_same_v<Source, DisplaySource>)
                return "display:" + one.id;
            else if constexpr (std::is_same_v<Source, WindowSource>)
                return fmt::format("window:{}", one.id);
            else if constexpr (std::is_same_v<Source, ApplicationSource>)
                return "application:" + one.name;
            else
                return areaText(one);
        },
        source);
}

std::optional<CaptureSource> sourceOfText(std::string_view text) try {
    auto const kind = takeUpTo(':', text);
    if (kind == "display") return DisplaySource{std::string(text)};
    if (kind == "window") return parseWindowSource(text);
    if (kind == "application" && !text.empty()) return ApplicationSource{std::string(text)};
    return kind == "area" ? areaIn(text) : std::nullopt;
} catch (CaptureError const&) {
    return std::nullopt;
}

RecordingRequest chosenRecording(Preferences& preferences) {
    RecorderOptions options{.source = sourceOfText(preferences.get(sourceChosen)).value_or(DisplaySource{}),
                            .keys = chosenKeys(preferences)};
    if (preferences.get(microphoneRecorded)) options.microphone = MicrophoneSource{preferences.get(microphoneChosen)};
    if (preferences.get(systemAudioRecorded))
        options.systemSound = SystemSoundSource{preferences.get(systemAudioChosen)};
    if (preferences.get(cameraRecorded)) options.camera = cameraSource(preferences.get(cameraChosen), preferences);
    auto const countdown = std::clamp<std::int64_t>(preferences.get(countdownChosen), 0, longestCountdown);
    return {.recorder = std::move(options), .countdown = static_cast<int>(countdown)};
}

}
