#include <TavaroVoice/Transcription/SpokenLocale.h>

#include <algorithm>
#include <cstdlib>

namespace tavaro {

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

/// A subtag in the case that is usual for its length: a region is "US", a script "Hans", all else small.
std::string subtag(std::string_view text) {
    std::string written(text);
    std::ranges::transform(written, written.begin(), text.size() == 2 ? upper : lower);
    if (text.size() == 4 && isLetter(text[0])) written[0] = upper(written[0]);
    return written;
}

bool isSubtag(std::string_view text) {
    return !text.empty() && text.size() <= 8 &&
           std::ranges::all_of(text, [](char c) { return isLetter(c) || isDigit(c); });
}

}

std::optional<std::string> localeIdentifier(std::string_view text) {
    auto rest = text.substr(0, text.find_first_of(".@"));
    if (rest.ends_with('-') || rest.ends_with('_')) return std::nullopt;
    auto const take = [&] {
        auto const part = rest.substr(0, rest.find_first_of("-_"));
        rest.remove_prefix(std::min(rest.size(), part.size() + 1));
        return part;
    };
    auto const language = take();
    bool const isLanguage = (language.size() == 2 || language.size() == 3) && std::ranges::all_of(language, isLetter);
    if (!isLanguage) return std::nullopt;
    std::string identifier(language);
    std::ranges::transform(identifier, identifier.begin(), lower);
    while (!rest.empty()) {
        auto const part = take();
        if (!isSubtag(part)) return std::nullopt;
        identifier += '-' + subtag(part);
    }
    return identifier;
}

std::string languageOfLocale(std::string_view locale) { return std::string(locale.substr(0, locale.find('-'))); }

std::string usersLocale() {
    for (auto const* const name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        char const* const set = std::getenv(name);
        if (!set || !*set) continue;
        return localeIdentifier(set).value_or("en-US");
    }
    return "en-US";
}

}
