#include <TavaroVoice/ElevenLabs/ElevenLabsKey.h>

#include <TavaroPlatform/Keychain/Keychain.h>
#include <TavaroPlatform/Keychain/KeychainError.h>

#include <algorithm>
#include <utility>

namespace tavaro::elevenLabsKey {

namespace {

std::optional<Secret>& ofEnvironment() {
    static std::optional<Secret> key;
    return key;
}

Keychain keychain() { return {service, "ElevenLabs API key of Tavaro"}; }

}

void takeFromEnvironment() {
    if (auto key = tavaro::takeFromEnvironment(variable)) ofEnvironment() = std::move(key);
}

bool isFromEnvironment() { return ofEnvironment().has_value(); }

std::string problemOf(std::string_view key) {
    constexpr std::size_t least = 8, most = 256;
    bool const isPlain = std::ranges::all_of(key, [](unsigned char c) { return c > 0x20 && c < 0x7F; });
    if (key.empty()) return "There is no key: nothing was given.";
    if (!isPlain) return "That is no ElevenLabs API key: it has other characters than letters, digits and marks.";
    if (key.size() < least || key.size() > most) return "That is no ElevenLabs API key: it is too short or too long.";
    return {};
}

Found find() {
    if (auto const& key = ofEnvironment()) return {key->copy(), {}};
    try {
        auto key = keychain().read();
        if (key && problemOf(key->text()).empty()) return {std::move(key), {}};
        return {};
    } catch (KeychainError const& error) {
        return {std::nullopt, error.kind == KeychainError::Kind::missing ? "" : error.what()};
    }
}

void store(Secret const& key) { keychain().write(key); }

bool forget() { return keychain().forget(); }

}
