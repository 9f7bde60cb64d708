#include <TavaroVoice/Voiceover/VoiceChoice.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroVoice/Errors/VoiceError.h>

#include <algorithm>
#include <string>

namespace tavaro {

namespace {

Voice const* byID(std::vector<Voice> const& voices, std::string_view id) {
    auto const found = std::ranges::find(voices, id, &Voice::id);
    return found == voices.end() ? nullptr : &*found;
}

/// Null where several have it.
Voice const* byName(std::vector<Voice> const& voices, std::string_view name) {
    auto const wanted = bareText(name);
    Voice const* found = nullptr;
    for (auto const& voice : voices) {
        if (bareText(voice.name) != wanted) continue;
        if (found) return nullptr;
        found = &voice;
    }
    return found;
}

/// How well a voice of this machine is understood; lower is better. HTS voices of festival come first, the diphones of
/// flite next, the formants of espeak-ng last. Among those of an engine English ones, as drafted scripts are English.
int rank(Voice const& voice) {
    int const engine = voice.engine == "festival" ? 0 : voice.engine == "flite" ? 2 : 4;
    bool const isClear = engine == 4 ? voice.language == "en-US" : voice.id.find("slt") != std::string::npos;
    int const foreign = voice.language.starts_with("en") ? 0 : 10;
    return engine + (isClear ? 0 : 1) + foreign;
}

Voice const* clearest(std::vector<Voice> const& voices) {
    Voice const* best = nullptr;
    for (auto const& voice : voices) {
        if (isSystemVoice(voice.id) && (!best || rank(voice) < rank(*best))) best = &voice;
    }
    return best;
}

void use(VoiceSettings& settings, Voice const& voice) {
    settings.voiceID = voice.id;
    settings.voiceName = voice.name;
}

void use(VoiceSettings& settings, OfferedVoices const& offered, std::string_view id) {
    if (auto const* voice = byID(offered.voices, id)) return use(settings, *voice);
    if (settings.voiceID == id) return;
    settings.voiceID = id;
    settings.voiceName.clear();
}

/// One that nobody gets is as good as none: where the service speaks all the same, it is asked for again, and the
/// reason said.
bool hasKey(OfferedVoices const& offered) {
    try {
        return offered.hasKey();
    } catch (VoiceError const&) {
        return false;
    }
}

void choose(VoiceSettings& settings, std::string_view asked, OfferedVoices const& offered) {
    auto const* const named = byID(offered.voices, asked) ? nullptr : byName(offered.voices, asked);
    if (!asked.empty() && named) return use(settings, *named);
    if (!asked.empty()) return use(settings, offered, asked);
    if (!settings.voiceID.empty()) return use(settings, offered, settings.voiceID);
    auto const* const best = hasKey(offered) ? nullptr : clearest(offered.voices);
    if (best) return use(settings, *best);
    use(settings, offered, offered.serviceVoice);
}

}

VoiceSettings chosenVoice(VoiceSettings plan, std::string_view asked, OfferedVoices const& offered) {
    choose(plan, asked, offered);
    if (plan.modelID.empty() && !isSystemVoice(plan.voiceID)) plan.modelID = offered.serviceModel;
    return plan;
}

}
