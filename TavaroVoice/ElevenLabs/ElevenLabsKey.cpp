#include <TavaroVoice/ElevenLabs/ElevenLabsKey.h>

#include <TavaroPlatform/Keychain/Keychain.h>
#include <TavaroPlatform/Keychain/KeychainError.h>

#include <algorithm>
#include <cstdlib>
#include <fmt/format.h>
#include <utility>

namespace tavaro::elevenLabsKey {

namespace {

constexpr auto wrongLength = "That is no ElevenLabs API key: it is too short or too long.";

Found& ofEnvironment() {
    static Found found;
    return found;
}

std::string_view trimmed(std::string_view text) {
    constexpr auto blanks = " \t\r\n";
    auto const begin = text.find_first_not_of(blanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

/// `value` is none where it is longer than a secret. What is no key is not passed over: whoever set it means it.
Found checked(std::optional<Secret> const& value) {
    auto const key = value ? trimmed(value->text()) : std::string_view();
    auto const problem = value ? problemOf(key) : wrongLength;
    if (problem.empty()) return {Secret(key), {}};
    return {std::nullopt,
            fmt::format("{} Look at the variable {}, which goes before the keychain.", problem, variable)};
}

Keychain keychain() { return {service, "ElevenLabs API key of Tavaro"}; }

}

void takeFromEnvironment() {
    auto const* const value = std::getenv(variable);
    bool const isSet = value && *value != '\0';
    auto const taken = tavaro::takeFromEnvironment(variable);
    if (isSet) ofEnvironment() = checked(taken);
}

bool isFromEnvironment() { return ofEnvironment().key.has_value(); }

std::string problemOf(std::string_view key) {
    constexpr std::size_t least = 8, most = 256;
    bool const isPlain = std::ranges::all_of(key, [](unsigned char c) { return c > 0x20 && c < 0x7F; });
    if (key.empty()) return "There is no key: nothing was given.";
    if (!isPlain) return "That is no ElevenLabs API key: it has other characters than letters, digits and marks.";
    if (key.size() < least || key.size() > most) return wrongLength;
    return {};
}

Found find() {
    auto const& given = ofEnvironment();
    if (given.key) return {given.key->copy(), {}};
    if (!given.problem.empty()) return {std::nullopt, given.problem};
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
