#include <Tavaro/Model/Recording/RecordingPreferences.h>

#include <TavaroCore/Records/Fields.h>

#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <optional>
#include <utility>

namespace tavaro {

namespace {

struct KnownLag {
    std::string id;
    double seconds = 0;
};

/// None for what is no lag, as people may write into the file.
std::optional<KnownLag> lagIn(std::string const& entry) {
    auto const end = entry.rfind('=');
    if (end == std::string::npos || end == 0) return std::nullopt;
    KnownLag lag{entry.substr(0, end)};
    auto const* const last = entry.data() + entry.size();
    auto const [read, error] = std::from_chars(entry.data() + end + 1, last, lag.seconds);
    bool const isGood = error == std::errc{} && read == last && std::abs(lag.seconds) <= longestCameraLag;
    return isGood ? std::optional(lag) : std::nullopt;
}

}

KeyLogging chosenKeys(Preferences& preferences) {
    return enumNamed<KeyLogging>(preferences.get(keysChosen)).value_or(KeyLogging::none);
}

CameraDeviceSource cameraSource(std::string id, Preferences& preferences) {
    CameraDeviceSource source{std::move(id)};
    for (auto const& entry : preferences.get(cameraLags))
        if (auto const lag = lagIn(entry)) source.lags[lag->id] = lag->seconds;
    return source;
}

void keepCameraLag(Preferences& preferences, std::string const& id, double seconds) {
    preferences.update(cameraLags, [&](std::vector<std::string>& entries) {
        std::erase_if(entries, [&](std::string const& entry) { return entry.starts_with(id + "="); });
        entries.push_back(fmt::format("{}={:.3f}", id, seconds));
    });
}

}
