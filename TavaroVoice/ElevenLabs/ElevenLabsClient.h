#pragma once

#include <TavaroVoice/ElevenLabs/ElevenLabsVoices.h>
#include <TavaroVoice/Web/WebClient.h>

#include <TavaroCore/Voice/VoiceoverPlan.h>
#include <TavaroPlatform/Preferences/Preferences.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tavaro {

/// Where the service is, when it is elsewhere: "https://api.example.com".
inline Preference<std::string> const elevenLabsHost{"com.tavaro.voice.host", ""};
inline constexpr auto elevenLabsHostVariable = "TAVARO_ELEVENLABS_HOST"; // goes before the preference

/// The ElevenLabs service, with the user's key. Nothing is asked twice by itself: what was said may have been paid. All
/// failures are `VoiceError`s; none of their sentences has the key in it. One thread at a time.
class ElevenLabsClient {
public:
    struct Settings {
        std::string host; // empty for the service's own
        WebClient::Limits limits;
        std::filesystem::path certificates; // trusted instead of the system's
    };
    /// `key` is asked for at the first request; none is `VoiceError::Kind::noKey`.
    using KeySource = std::function<std::optional<Secret>()>;

    ElevenLabsClient(KeySource key, Settings settings);

    std::vector<ElevenVoice> voices(std::stop_token const& stop = {});
    std::vector<ElevenModel> models(std::stop_token const& stop = {});
    /// Whether the service takes the key: returns, or throws as any request does.
    void validateKey(std::stop_token const& stop = {});

    /// The text as MPEG audio, in `settings.voiceID` at `servedSpeed(settings.speed)`. What was sent before a stop may
    /// be paid for, and is given all the same where it comes soon.
    std::string synthesize(std::string const& text, VoiceSettings const& settings, std::stop_token const& stop = {});
    /// The same into a file, which appears when it is complete. Throws `FileError`, too.
    void write(std::string const& text, VoiceSettings const& settings, std::filesystem::path const& file,
               std::stop_token const& stop = {});

private:
    WebReply ask(WebRequest request, std::stop_token const& stop);
    void ensureKey();
    std::string withoutKey(std::string text) const;

    KeySource const keySource_;
    std::string const root_;
    std::optional<Secret> header_; // "xi-api-key: …"
    WebClient web_;
};

/// The speed nearest to this one that the service speaks at.
double servedSpeed(double speed);

/// The address below which the service's paths are; the service's own where `host` is empty. Only the name of a host
/// is taken for one of HTTPS.
std::string elevenLabsRoot(std::string host);

}
