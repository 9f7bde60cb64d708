#include <TavaroVoice/ElevenLabs/ElevenLabsClient.h>

#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Speaking/Private/SpeechBuilder.h>
#include <TavaroVoice/Web/Private/WebFailure.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Records/JSONValue.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdint>
#include <fmt/format.h>
#include <utility>

namespace tavaro {

namespace {

using Kind = VoiceError::Kind;

constexpr std::string_view headerName = "xi-api-key: ";
constexpr std::size_t mostOfLists = 16 << 20;
constexpr std::size_t mostOfBody = 300; // of what it says when it fails
constexpr auto acceptJSON = "Accept: application/json";
constexpr std::int64_t millisecondsPerCharacter = 50; // that a slow voice takes

/// Of a document, which may be a stranger's.
void expectVoiceID(std::string const& id) {
    bool const isName = !id.empty() && id.size() <= 64 && std::ranges::all_of(id, [](unsigned char c) {
        return std::isalnum(c) != 0 || c == '-' || c == '_';
    });
    if (!isName) throw noSuchVoice(id);
}

std::string trimmed(std::string text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == '\n')) text.pop_back();
    return text;
}

[[noreturn]] void failWithStatus(int status, std::string const& body) {
    switch (status) {
    case 401:
    case 403: throw VoiceError(Kind::rejectedKey, "That ElevenLabs API key was rejected.");
    case 429: throw VoiceError(Kind::quotaUsedUp, "Your ElevenLabs character quota is used up.");
    default: break;
    }
    auto const said = trimmed(excerpt(body, mostOfBody));
    throw VoiceError(Kind::service, said.empty() ? fmt::format("ElevenLabs returned {}.", status)
                                                 : fmt::format("ElevenLabs returned {}: {}", status, said));
}

std::string bodyFor(std::string const& text, VoiceSettings const& settings) {
    JSONValue::Object const voice{{"stability", settings.stability},
                                  {"similarity_boost", settings.similarityBoost},
                                  {"style", settings.style},
                                  {"use_speaker_boost", settings.useSpeakerBoost},
                                  {"speed", servedSpeed(settings.speed)}};
    return encodeJSON(
        JSONValue{JSONValue::Object{{"text", text},
                                    {"model_id", settings.modelID.empty() ? defaultElevenModel : settings.modelID},
                                    {"voice_settings", voice}}});
}

template<class Read> auto listFrom(std::string const& body, Read const& read) {
    try {
        return read(body);
    } catch (JSONError const& error) {
        throw VoiceError(Kind::service, fmt::format("ElevenLabs returned a list that cannot be read: {}.",
                                                    excerpt(error.what(), 200)));
    }
}

}

double servedSpeed(double speed) {
    constexpr double slowest = 0.7, fastest = 1.2;
    return std::clamp(audibleSpeed(speed), slowest, fastest);
}

std::string elevenLabsRoot(std::string host) {
    if (host.empty()) host = "api.elevenlabs.io";
    if (host.find("://") == std::string::npos) host = "https://" + host;
    while (host.ends_with('/')) host.pop_back();
    return host.ends_with("/v1") ? host : host + "/v1";
}

ElevenLabsClient::ElevenLabsClient(KeySource key, Settings settings)
    : keySource_(std::move(key))
    , root_(elevenLabsRoot(std::move(settings.host)))
    , web_(settings.limits, std::move(settings.certificates)) {}

void ElevenLabsClient::ensureKey() {
    if (header_) return;
    auto const key = keySource_();
    if (!key || key->isEmpty())
        throw VoiceError(Kind::noKey, "Add your ElevenLabs API key in Settings to generate voiceover.");
    Secret header(headerName);
    for (char const c : key->text()) header.append(c);
    header_ = std::move(header);
}

/// What came of it, where it went well.
WebReply ElevenLabsClient::ask(WebRequest request, std::stop_token const& stop) {
    ensureKey();
    request.secretHeader = &*header_;
    request.url = root_ + "/" + request.url;
    try {
        auto reply = web_.exchange(request, stop);
        if (reply.status < 200 || reply.status > 299) failWithStatus(reply.status, withoutKey(std::move(reply.body)));
        return reply;
    } catch (WebFailure const& failure) {
        if (failure.kind == WebFailure::Kind::cancelled) throw cancelledSpeech();
        throw VoiceError(Kind::notReached, fmt::format("Could not reach ElevenLabs: {}.",
                                                       withoutKey(excerpt(failure.what(), mostOfBody))));
    }
}

/// Servers repeat what they were sent.
std::string ElevenLabsClient::withoutKey(std::string text) const {
    auto const key = header_->text().substr(headerName.size());
    constexpr std::string_view shown = "…"; // in which the key may be found, too
    for (std::size_t at = 0; (at = text.find(key, at)) != std::string::npos; at += shown.size())
        text.replace(at, key.size(), shown);
    wipeTraces();
    return text;
}

std::vector<ElevenVoice> ElevenLabsClient::voices(std::stop_token const& stop) {
    auto const reply = ask({.url = "voices", .headers = {acceptJSON}, .mostBytes = mostOfLists}, stop);
    return listFrom(reply.body, elevenVoicesOf);
}

std::vector<ElevenModel> ElevenLabsClient::models(std::stop_token const& stop) {
    auto const reply = ask({.url = "models", .headers = {acceptJSON}, .mostBytes = mostOfLists}, stop);
    return listFrom(reply.body, elevenModelsOf);
}

/// The list of models is the smallest that the service gives to nobody without a key.
void ElevenLabsClient::validateKey(std::stop_token const& stop) {
    ask({.url = "models", .headers = {acceptJSON}, .mostBytes = mostOfLists}, stop);
}

std::string ElevenLabsClient::synthesize(std::string const& text, VoiceSettings const& settings,
                                         std::stop_token const& stop) {
    expectVoiceID(settings.voiceID);
    auto reply = ask(
        {.url = "text-to-speech/" + settings.voiceID,
         .headers = {"Accept: audio/mpeg", "Content-Type: application/json"},
         .body = bodyFor(text, settings),
         .patience = std::chrono::milliseconds(millisecondsPerCharacter * static_cast<std::int64_t>(lengthOf(text)))},
        stop);
    if (reply.body.empty()) throw VoiceError(Kind::service, "ElevenLabs returned no audio.");
    return std::move(reply.body);
}

void ElevenLabsClient::write(std::string const& text, VoiceSettings const& settings, std::filesystem::path const& file,
                             std::stop_token const& stop) {
    writeFileAtomically(file, synthesize(text, settings, stop));
}

}
