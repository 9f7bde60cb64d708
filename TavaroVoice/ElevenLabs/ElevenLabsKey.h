#pragma once

#include <TavaroPlatform/Keychain/Secret.h>

#include <optional>
#include <string>
#include <string_view>

/// The user's key of the voice service. It is in the keychain; for a machine without one, or for a run alone, in an
/// environment variable. It is in no file, log or argument, and no child has it.
namespace tavaro::elevenLabsKey {

inline constexpr auto service = "com.tavaro.elevenlabs";
inline constexpr auto variable = "TAVARO_ELEVENLABS_KEY";

/// Takes the variable out of the environment, with what is around the key; for `main`, before there are threads.
void takeFromEnvironment();
bool isFromEnvironment();

/// What is wrong with a text as a key; empty where nothing is.
std::string problemOf(std::string_view key);

struct Found {
    std::optional<Secret> key;
    std::string problem; // a sentence, where there is one that is none, or the keychain could not be asked
};
/// That of the environment, else that of the keychain, which may ask the user: not for a thread that shows something.
Found find();

/// Throws `KeychainError`.
void store(Secret const& key);
/// False where there was none. Throws `KeychainError`.
bool forget();

}
