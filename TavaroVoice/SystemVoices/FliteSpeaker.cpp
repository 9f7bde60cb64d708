#include <TavaroVoice/SystemVoices/Private/FliteSpeaker.h>

#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Speaking/Private/SpeechBuilder.h>
#include <TavaroVoice/SystemVoices/Private/FliteLibrary.h>

#include <TavaroCore/Voice/VoiceoverPlan.h>

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>

namespace tavaro {

namespace {

constexpr std::string_view beginning = "system:flite/";

struct Known {
    std::string_view name;
    char const* shown;
    char const* language;
    char const* description;
};
// The best first.
constexpr std::array<Known, 5> known{{
    {"slt", "SLT", "en-US", "A woman's voice, clear and quick to make."},
    {"rms", "RMS", "en-US", "A man's voice, calm."},
    {"awb", "AWB", "en-GB", "A Scotsman's voice."},
    {"kal16", "KAL 16", "en-US", "A man's voice, mechanical."},
    {"kal", "KAL", "en-US", "A man's voice, mechanical and dull."},
}};

std::mutex mutex; // flite has state of its own

struct UtteranceRelease {
    void operator()(cst_utterance* utterance) const { fliteLibrary()->release(utterance); }
};
using Utterance = std::unique_ptr<cst_utterance, UtteranceRelease>;

/// Nothing here has a destructor that an error of flite's would pass by.
cst_utterance* synthesized(char const* text, cst_voice* voice) {
    auto const& flite = *fliteLibrary();
    std::jmp_buf back;
    *flite.onError = &back;
    cst_utterance* volatile utterance = nullptr;
    if (setjmp(back) == 0) utterance = flite.synthesize(text, voice); // NOLINT(cert-err52-cpp): flite's only way
    *flite.onError = nullptr;
    return utterance;
}

MonoSound soundOf(cst_utterance* utterance) {
    auto const* const wave = fliteLibrary()->wave(utterance);
    if (!wave || wave->num_channels != 1 || wave->num_samples < 0) return {};
    MonoSound sound{std::vector<float>(static_cast<std::size_t>(wave->num_samples)), wave->sample_rate};
    std::ranges::transform(std::span(wave->samples, sound.samples.size()), sound.samples.begin(),
                           [](short sample) { return static_cast<float>(sample) / 32'768; });
    return sound;
}

/// A token is what has spaces around it in the text; it may be said in several words.
std::vector<WordTime> timesOf(cst_utterance* utterance) {
    auto const& flite = *fliteLibrary();
    std::vector<WordTime> times;
    auto* const tokens = flite.relation(utterance, "Token");
    for (auto* token = tokens ? flite.head(tokens) : nullptr; token; token = flite.next(token)) {
        auto* const first = flite.daughter(token);
        if (!first) continue;
        auto const* last = first;
        for (auto const* word = first; word; word = flite.next(word)) last = word;
        times.push_back({flite.feature(first, "R:SylStructure.daughter1.daughter1.R:Segment.p.end"),
                         flite.feature(last, "R:SylStructure.daughtern.daughtern.R:Segment.end")});
    }
    return times;
}

cst_voice* voiceOf(std::string_view id) {
    auto const name = id.substr(std::min(beginning.size(), id.size()));
    auto const isKnown = std::ranges::any_of(known, [&](Known const& one) { return one.name == name; });
    return isKnown && id.starts_with(beginning) ? fliteVoice(name) : nullptr;
}

/// Of one phrase at a time, so that others get their turn.
void append(SpeechBuilder& builder, SpokenPhrase const& phrase, cst_voice* voice, double speed) {
    std::lock_guard const lock(mutex);
    fliteLibrary()->setFeature(voice->features, "duration_stretch", static_cast<float>(1 / speed));
    Utterance const utterance(synthesized(spokenText(phrase).c_str(), voice));
    auto const sound = utterance ? soundOf(utterance.get()) : MonoSound{};
    if (sound.samples.empty())
        throw VoiceError(VoiceError::Kind::failed, "The voice failed: flite made no sound of a line.");
    builder.append(sound, phrase, timesOf(utterance.get()));
}

}

std::vector<Voice> FliteSpeaker::voices() {
    std::lock_guard const lock(mutex);
    std::vector<Voice> voices;
    for (auto const& one : known) {
        if (!fliteVoice(one.name)) continue;
        voices.push_back({.id = std::string(beginning) + std::string(one.name),
                          .name = one.shown,
                          .language = one.language,
                          .engine = "flite",
                          .description = one.description});
    }
    return voices;
}

Speech FliteSpeaker::speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) {
    auto const phrases = spokenPhrases(text, Letters::ascii);
    cst_voice* voice = nullptr;
    {
        std::lock_guard const lock(mutex);
        voice = voiceOf(settings.voiceID);
    }
    if (!voice) throw noSuchVoice(settings.voiceID);
    SpeechBuilder builder;
    for (auto const& phrase : phrases) {
        expectNoStop(stop);
        append(builder, phrase, voice, audibleSpeed(settings.speed));
    }
    return builder.take();
}

}
