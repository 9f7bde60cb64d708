#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace tavaro {

struct KeyFilePiece {
    std::size_t start = 0; // bytes into a plain line
    std::size_t end = 0;
};

/// The line that begins a private key (RFC 7468), also where its hyphens are dashes or its letters look-alikes.
std::optional<KeyFilePiece> beginningOfKeyFile(std::string_view text);

/// A line of the base64 that a private key is stored as, whatever an editor has at its sides. Alone it must begin as
/// keys do, or be as long as lines of key files are; inside of a key file any base64 is.
enum class KeyFilePlace { unknown, inside };
std::optional<KeyFilePiece> bodyOfKeyFile(std::string_view text, KeyFilePlace place);

/// "-----BEGIN CERTIFICATE-----", "-----BEGIN PUBLIC KEY-----": what follows is no secret.
bool beginsPublicFile(std::string_view text);
bool endsFile(std::string_view text);

}
