#include <TavaroCore/Privacy/Private/KeyFiles.h>

#include <TavaroCore/Privacy/Characters.h>
#include <TavaroCore/Privacy/Private/SensitiveText.h>

#include <algorithm>
#include <string>

namespace tavaro {

namespace {

bool isBase64(char c) { return isAlphanumeric(c) || isAnyOf(c, "+/="); }

/// DER (ITU-T X.690) of what begins with a version number, as private keys do, and the magic word of OpenSSH's.
bool beginsAsKey(std::string_view base64) {
    if (base64.starts_with("b3BlbnNzaC1rZXktdjE")) return true;
    if (base64.starts_with("MII") && base64.size() > 12) { // a sequence of 256 bytes and more, the integer 0
        return isAnyOf(base64[5], "AQgw") && base64.substr(6, 3) == "IBA";
    }
    return base64.starts_with("MHcCAQEE") || base64.starts_with("MC4CAQAw") || base64.starts_with("MIGHAgEA") ||
           base64.starts_with("MIGTAgEA") || base64.starts_with("MIGkAgEB") || base64.starts_with("MIHcAgEB") ||
           base64.starts_with("MFECAQEw");
}

/// Both cases and digits, and few slashes as in a path.
bool isMixed(std::string_view text) {
    return std::any_of(text.begin(), text.end(), isDigit) && std::any_of(text.begin(), text.end(), isUpper) &&
           std::any_of(text.begin(), text.end(), isLower);
}

}

std::optional<KeyFilePiece> beginningOfKeyFile(std::string_view text) {
    auto const start = text.find("--");
    if (start == text.npos) return std::nullopt;
    std::string folded;
    for (char const c : text) folded += lookAlike(c);
    auto const begin = folded.find("BEGlN ", start), kind = folded.find("PRlVATE KEY", start);
    if (begin == folded.npos || kind == folded.npos || kind < begin) return std::nullopt;
    auto const first = text.find_last_not_of('-', begin - 1);
    auto end = std::min(text.find('-', kind), text.size());
    while (end < text.size() && text[end] == '-') ++end;
    while (text.substr(end).starts_with("\\n") && end + 2 < text.size() &&
           isBase64(text[end + 2])) { // a key in one line
        end += 2;
        while (end < text.size() && isBase64(text[end])) ++end;
    }
    auto const dashes = first == text.npos ? 0 : first + 1;
    return begin - dashes < 2 ? std::nullopt : std::optional(KeyFilePiece{dashes, end});
}

std::optional<KeyFilePiece> bodyOfKeyFile(std::string_view text, KeyFilePlace place) {
    constexpr std::size_t shortestInside = 8, shortestBegin = 24;
    if (text.size() < (place == KeyFilePlace::inside ? shortestInside : shortestBegin)) return std::nullopt;
    std::size_t start = 0, end = text.size();
    auto const isAtSide = [](char c) { return isBlank(c) || isDigit(c) || isAnyOf(c, "|>\"'+,:;#)"); };
    while (end > 0 && (isBlank(text[end - 1]) || isAnyOf(text[end - 1], "\"',;)\\|"))) --end;
    auto const blank = text.substr(0, end).find_last_of(" \t|\"'>");
    if (blank != text.npos && std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(blank), isAtSide)) {
        start = blank + 1;
    }
    auto body = text.substr(start, end - start);
    if (body.ends_with("\\n")) body.remove_suffix(2);
    if (body.size() < shortestInside || !std::all_of(body.begin(), body.end(), isBase64)) return std::nullopt;
    KeyFilePiece const piece{start, start + body.size()};
    if (place == KeyFilePlace::inside) return piece;
    if (body.size() >= shortestBegin && beginsAsKey(body)) return piece;
    bool const isLineOfFile = (body.size() == 64 || body.size() == 70) && !body.starts_with("MII");
    return isLineOfFile && isMixed(body) && SensitiveText::entropy(body) > 4.5 ? std::optional(piece) : std::nullopt;
}

bool beginsPublicFile(std::string_view text) {
    auto const at = text.find("-----BEGIN ");
    return at != text.npos && text.find("PRIVATE KEY", at) == text.npos;
}

bool endsFile(std::string_view text) { return text.find("-----END ") != text.npos; }

}
