#include <TavaroVoice/ElevenLabs/ElevenLabsVoices.h>

#include <TavaroCore/Records/JSONError.h>
#include <TavaroCore/Records/JSONValue.h>

#include <array>

namespace tavaro {

namespace {

JSONValue::Array const& listIn(JSONValue const& value, char const* of) {
    if (auto const* const list = value.as<JSONValue::Array>()) return *list;
    throw JSONError(JSONError::Kind::wrongType, std::string("there is no list of ") + of);
}

std::optional<std::string> textIn(JSONValue const& value, std::string_view key) {
    auto const* const text = value.find<std::string>(key);
    return text ? std::optional(*text) : std::nullopt;
}

ElevenVoice voiceIn(JSONValue const& value) {
    ElevenVoice voice{.voiceID = textIn(value, "voice_id").value_or(""),
                      .name = textIn(value, "name").value_or(""),
                      .category = textIn(value, "category"),
                      .description = textIn(value, "description"),
                      .previewURL = textIn(value, "preview_url")};
    if (auto const* const labels = value.find<JSONValue::Object>("labels"))
        for (auto const& [name, label] : *labels)
            if (auto const* const text = label.as<std::string>()) voice.labels.emplace(name, *text);
    return voice;
}

ElevenVoice builtIn(char const* id, char const* name, char const* description, char const* accent, char const* use) {
    return {.voiceID = id, .name = name, .description = description, .labels = {{"accent", accent}, {"use_case", use}}};
}

}

std::span<ElevenVoice const> builtInElevenVoices() {
    static std::array const voices{
        builtIn(defaultElevenVoice, "Rachel", "Calm, even narration.", "American", "narration"),
        builtIn("TxGEqnHWrfWFTfGW9XjX", "Josh", "Warm and conversational.", "American", "demos"),
        builtIn("EXAVITQu4vr4xnSDxMaL", "Sarah", "Bright and friendly.", "American", "product"),
        builtIn("ErXwobaYiN019PkySvjV", "Antoni", "Measured, documentary tone.", "American", "explainer"),
        builtIn("ThT5KcBeYPX3keUQqHPh", "Dorothy", "British, clear diction.", "British", "tutorial")};
    return voices;
}

std::vector<ElevenVoice> elevenVoicesOf(std::string_view json) {
    auto const answer = JSONValue::parse(json);
    auto const* const list = answer.find("voices");
    std::vector<ElevenVoice> voices;
    for (auto const& entry : listIn(list ? *list : answer, "voices")) {
        auto voice = voiceIn(entry);
        if (!voice.voiceID.empty() && !voice.name.empty()) voices.push_back(std::move(voice));
    }
    return voices;
}

std::vector<ElevenModel> elevenModelsOf(std::string_view json) {
    auto const answer = JSONValue::parse(json);
    std::vector<ElevenModel> models;
    for (auto const& entry : listIn(answer, "models")) {
        auto const* const speaks = entry.find<bool>("can_do_text_to_speech");
        ElevenModel model{.modelID = textIn(entry, "model_id").value_or(""),
                          .name = textIn(entry, "name").value_or(""),
                          .canDoTextToSpeech = speaks && *speaks};
        if (!model.modelID.empty()) models.push_back(std::move(model));
    }
    return models;
}

Voice voiceOf(ElevenVoice const& voice) {
    auto const language = voice.labels.find("language");
    return {.id = voice.voiceID,
            .name = voice.name,
            .language = language == voice.labels.end() ? "" : language->second,
            .engine = "ElevenLabs",
            .description = voice.description.value_or(voice.category.value_or("")),
            .labels = voice.labels,
            .previewURL = voice.previewURL};
}

}
