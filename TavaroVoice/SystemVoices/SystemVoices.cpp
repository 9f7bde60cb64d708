#include <TavaroVoice/SystemVoices/SystemVoices.h>

#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/SystemVoices/Private/EspeakSpeaker.h>
#include <TavaroVoice/SystemVoices/Private/FestivalSpeaker.h>
#include <TavaroVoice/SystemVoices/Private/FliteSpeaker.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Voice/VoiceoverPlan.h>
#include <TavaroPlatform/Processes/DetachedProcess.h>

#include <algorithm>
#include <fmt/format.h>

namespace tavaro {

SystemVoices::Places SystemVoices::Places::ofThisMachine() {
    return {.espeak = findProgram("espeak-ng"), .festival = findProgram("festival")};
}

SystemVoices::SystemVoices(Places const& places) {
    auto const add = [&](char const* name, std::unique_ptr<Speaker> speaker) {
        engines_.push_back({name, std::move(speaker)});
    };
    add("festival",
        places.festival ? std::make_unique<FestivalSpeaker>(*places.festival, places.festivalVoices) : nullptr);
    add("flite", std::make_unique<FliteSpeaker>());
    add("espeak-ng", places.espeak ? std::make_unique<EspeakSpeaker>(*places.espeak) : nullptr);
}

std::vector<Voice> SystemVoices::voices() {
    std::vector<Voice> all;
    for (auto const& engine : engines_) {
        if (!engine.speaker) continue;
        auto some = engine.speaker->voices();
        std::ranges::move(some, std::back_inserter(all));
    }
    return all;
}

std::vector<Voice> SystemVoices::available(std::string_view language) {
    auto all = voices();
    std::erase_if(all, [&](Voice const& voice) { return !speaks(voice, language); });
    return all;
}

Speech SystemVoices::speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) {
    for (auto const& engine : engines_) {
        if (!settings.voiceID.starts_with(fmt::format("system:{}/", engine.name))) continue;
        if (engine.speaker) return engine.speaker->speak(text, settings, stop);
        throw VoiceError(VoiceError::Kind::noEngine,
                         fmt::format("The voice “{}” needs {}, which is not installed on this machine.",
                                     excerpt(settings.voiceID), engine.name));
    }
    throw noSuchVoice(settings.voiceID);
}

}
