#pragma once

#include <TavaroVision/Scanning/Private/ReadPieces.h>

#include <string_view>
#include <vector>

namespace tavaro {

struct PlacedLine;

/// A line of base64 but for a few letters.
bool isNearlyBase64(std::string_view text);

/// Long words of base64 in a line that has other text too.
std::vector<std::string_view> base64Words(std::string_view text);

/// What of a line may be one of a key file, also its last; empty where there is none. Before it there is its number at
/// most.
ReadPiece keyLineIn(std::string_view text);

/// The next line of a file: right below, and it begins or ends where the one above does.
bool isNextInFile(PlacedLine const& above, PlacedLine const& below);

/// "-----BEGIN CERTIFICATE-----"
bool announcesPublicFile(std::string_view text);

}
