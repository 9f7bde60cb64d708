#include <TavaroVoice/SystemVoices/Private/EspeakSpeaker.h>

#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Speaking/Private/SpeechBuilder.h>
#include <TavaroVoice/SystemVoices/Private/EngineFailure.h>

#include <TavaroCore/Voice/VoiceoverPlan.h>
#include <TavaroMedia/Audio/MonoSound.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroPlatform/Processes/ProgramRun.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <sstream>

namespace tavaro {

namespace {

constexpr std::string_view beginning = "system:espeak-ng/";
constexpr auto engine = "espeak-ng";
constexpr double usualRate = 175, slowestRate = 80, fastestRate = 450; // words a minute, as the program takes them

bool isNameOfLanguage(std::string_view name) {
    return !name.empty() && name.front() != '-' &&
           std::ranges::all_of(name, [](unsigned char c) { return std::isalnum(c) != 0 || c == '-'; });
}

/// "en-us" as "en-US", "chr-us-qaaa" as "chr-US-Qaaa".
std::string languageTag(std::string const& name) {
    std::string tag;
    std::istringstream parts(name);
    bool isExtension = false;
    for (std::string part; std::getline(parts, part, '-');) {
        std::ranges::transform(part, part.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        if (!tag.empty() && part.size() == 2 && !isExtension)
            std::ranges::transform(part, part.begin(),
                                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        if (!tag.empty() && part.size() == 4 && !isExtension)
            part[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(part[0])));
        isExtension = isExtension || part == "x";
        tag += (tag.empty() ? "" : "-") + part;
    }
    return tag;
}

ProgramAnswer said(std::filesystem::path const& program, std::string const& language, int rate, std::string input,
                   std::stop_token const& stop) {
    auto const patience = std::chrono::seconds(20) + std::chrono::milliseconds(10 * input.size());
    return runProgram(
        {.command = {program.string(), "-v", language, "-s", std::to_string(rate), "-b", "1", "--stdin", "--stdout"},
         .input = std::move(input),
         .patience = patience,
         .mostOutput = 256 << 20},
        stop);
}

}

std::vector<Voice> EspeakSpeaker::voicesOf(std::string_view listing) {
    std::istringstream lines{std::string(listing)};
    std::vector<Voice> voices;
    std::string line;
    std::getline(lines, line); // the heading
    while (std::getline(lines, line)) {
        std::istringstream columns(line);
        std::string priority, language, gender, name;
        if (!(columns >> priority >> language >> gender >> name) || !isNameOfLanguage(language)) continue;
        auto const id = std::string(beginning) + language;
        if (std::ranges::any_of(voices, [&](Voice const& voice) { return voice.id == id; })) continue;
        std::ranges::replace(name, '_', ' ');
        while (name.ends_with(' ')) name.pop_back();
        voices.push_back({.id = id, .name = name, .language = languageTag(language), .engine = engine});
    }
    return voices;
}

std::vector<Voice> EspeakSpeaker::voices() {
    if (!voices_) {
        auto const answer = runProgram(
            {.command = {program_.string(), "--voices"}, .patience = std::chrono::seconds(10), .mostOutput = 1 << 20});
        voices_ = answer.isGood() ? voicesOf(answer.out) : std::vector<Voice>();
    }
    return *voices_;
}

bool EspeakSpeaker::hasVoice(std::string const& id) {
    auto const all = voices();
    return std::ranges::any_of(all, [&](Voice const& voice) { return voice.id == id; });
}

Speech EspeakSpeaker::speak(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop) {
    std::string spoken;
    auto const phrases = spokenPhrases(text, Letters::all);
    for (auto const& phrase : phrases) spoken += spokenText(phrase) + "\n";
    if (!hasVoice(settings.voiceID)) throw noSuchVoice(settings.voiceID);
    expectNoStop(stop);
    auto const speed = audibleSpeed(settings.speed);
    auto const rate = std::clamp(std::round(usualRate * speed), slowestRate, fastestRate);
    auto const answer =
        said(program_, settings.voiceID.substr(beginning.size()), static_cast<int>(rate), std::move(spoken), stop);
    expectGood(answer, engine);
    SpeechBuilder builder;
    try {
        builder.append(soundOfWAV(answer.out), phrases.front(), {});
    } catch (MediaError const& error) {
        throw engineFailure(engine, error.detail());
    }
    auto speech = builder.take();
    if (speech.samples.empty()) throw engineFailure(engine, "it made no sound");
    // What its own rate does not reach.
    auto const left = speed * usualRate / rate;
    return std::abs(left - 1) < 0.01 ? speech : stretched(std::move(speech), left);
}

}
