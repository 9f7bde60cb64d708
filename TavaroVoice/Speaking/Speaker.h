#pragma once

#include <map>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

struct VoiceSettings;

/// Who can speak.
struct Voice {
    std::string id;                            // "system:…" on this machine, otherwise as the service has it
    std::string name;                          // to be shown
    std::string language;                      // BCP 47, as "en-US"; empty where a voice speaks many
    std::string engine;                        // "flite", "espeak-ng", "festival", "ElevenLabs"
    std::string description;                   // a sentence, or nothing
    std::map<std::string, std::string> labels; // "accent", "use_case", …
    std::optional<std::string> previewURL;     // where the service has a sample

    bool operator==(Voice const&) const = default;
};

/// A voice of this machine: it needs no key and costs nothing.
inline bool isSystemVoice(std::string_view id) { return id.starts_with("system:"); }

/// Whether it speaks a language: "en" is every English, "en-GB" what is spoken in Britain. A voice of many languages
/// speaks each.
bool speaks(Voice const& voice, std::string_view language);

struct SpokenWord {
    std::string text;
    double start = 0; // seconds of the speech
    double end = 0;

    bool operator==(SpokenWord const&) const = default;
};

/// A text as a voice says it.
struct Speech {
    std::vector<float> samples; // one channel, full scale ±1
    int sampleRate = 48'000;
    std::vector<SpokenWord> words; // in order; empty where the engine does not tell their times

    double duration() const { return static_cast<double>(samples.size()) / sampleRate; }
};

/// An engine, or a service, with its voices. One thread at a time for each object.
class Speaker {
public:
    Speaker() = default;
    Speaker(Speaker const&) = delete;
    Speaker& operator=(Speaker const&) = delete;
    virtual ~Speaker();

    /// In the order in which they are offered. Throws `VoiceError`.
    virtual std::vector<Voice> voices() = 0;

    /// Says the text in `settings.voiceID` at `settings.speed` (1 is the voice's own). Ends early, with
    /// `VoiceError::Kind::cancelled`, when a stop is requested. All failures are `VoiceError`s.
    virtual Speech speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) = 0;
};

}
