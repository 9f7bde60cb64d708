#pragma once

#include <TavaroVoice/Speaking/Speaker.h>

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// A voice as the service describes it.
struct ElevenVoice {
    std::string voiceID;
    std::string name;
    std::optional<std::string> category;
    std::optional<std::string> description;
    std::map<std::string, std::string> labels;
    std::optional<std::string> previewURL;

    bool operator==(ElevenVoice const&) const = default;
};

struct ElevenModel {
    std::string modelID;
    std::string name;
    bool canDoTextToSpeech = false;

    bool operator==(ElevenModel const&) const = default;
};

inline constexpr auto defaultElevenModel = "eleven_multilingual_v2";
inline constexpr auto defaultElevenVoice = "21m00Tcm4TlvDq8ikWAM";

/// What is offered before the user's own voices are known, the default one first.
std::span<ElevenVoice const> builtInElevenVoices();

/// The voices in the service's answer; entries without an id or a name are left out, and labels that are no texts.
/// Throws `JSONError` where it is no list of voices.
std::vector<ElevenVoice> elevenVoicesOf(std::string_view json);
std::vector<ElevenModel> elevenModelsOf(std::string_view json);

/// The same voice among others.
Voice voiceOf(ElevenVoice const& voice);

}
