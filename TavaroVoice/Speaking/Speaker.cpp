#include <TavaroVoice/Speaking/Speaker.h>

#include <algorithm>
#include <cctype>

namespace tavaro {

namespace {

bool isSameLetter(unsigned char a, unsigned char b) {
    auto const plain = [](unsigned char c) { return c == '_' ? '-' : std::tolower(c); };
    return plain(a) == plain(b);
}

}

Speaker::~Speaker() = default;

bool speaks(Voice const& voice, std::string_view language) {
    if (voice.language.empty() || language.empty()) return true;
    std::string_view const own(voice.language);
    bool const isBeginning =
        own.size() >= language.size() && std::ranges::equal(own.substr(0, language.size()), language, isSameLetter);
    return isBeginning && (own.size() == language.size() || own[language.size()] == '-');
}

}
