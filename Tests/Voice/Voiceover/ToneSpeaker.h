#pragma once

#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Speaking/Speaker.h>
#include <TavaroVoice/Voiceover/SpokenLines.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Voice/VoiceoverPlan.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <mutex>
#include <numbers>
#include <optional>
#include <string>

namespace tavaro {

/// What the speakers of a test did, whichever thread they were on.
struct ToneStudio {
    /// May throw instead of speaking; hears the line's text and how many were asked for before.
    std::function<void(std::string const& text, int before)> mishap = [](auto const&, int) {};
    double wordSeconds = 0.25;
    double silence = 0.3; // before and behind each line, as some engines have it
    double amplitude = 0.2;

    std::mutex mutex;
    std::map<std::string, int> asked; // how often, by text
    int count = 0;

    int timesAsked(std::string const& text) const {
        auto const found = asked.find(text);
        return found == asked.end() ? 0 : found->second;
    }
    SpeakerSource speakers();
};

/// Says each word as a tone of `wordSeconds`, the last quarter of it silent.
class ToneSpeaker : public Speaker {
public:
    explicit ToneSpeaker(ToneStudio& studio) : studio_(studio) {}

    std::vector<Voice> voices() override {
        return {{.id = "system:tone", .name = "Tone", .language = "en-US", .engine = "tone"}};
    }

    Speech speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) override {
        {
            std::lock_guard const lock(studio_.mutex);
            studio_.asked[text] += 1;
            studio_.mishap(text, studio_.count++);
        }
        if (stop.stop_requested()) throw VoiceError(VoiceError::Kind::cancelled, "Cancelled.");
        Speech speech;
        auto const rest = [&](double seconds) { speech.samples.resize(speech.samples.size() + samples(seconds)); };
        rest(studio_.silence);
        double const word = studio_.wordSeconds / settings.speed;
        for (auto const written : writtenWords(text)) {
            double const start = speech.duration();
            for (std::size_t n = 0; n < samples(word * 0.75); ++n)
                speech.samples.push_back(static_cast<float>(
                    studio_.amplitude * std::sin(2 * std::numbers::pi * 440 * static_cast<double>(n) / 48'000)));
            speech.words.push_back({std::string(written), start, speech.duration()});
            rest(word * 0.25);
        }
        rest(studio_.silence);
        return speech;
    }

private:
    static std::size_t samples(double seconds) { return static_cast<std::size_t>(std::lround(seconds * 48'000)); }

    ToneStudio& studio_;
};

inline SpeakerSource ToneStudio::speakers() {
    return [this] { return std::make_unique<ToneSpeaker>(*this); };
}

}
