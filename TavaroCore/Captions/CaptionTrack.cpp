#include <TavaroCore/Captions/CaptionTrack.h>

#include <TavaroCore/Captions/Private/SharedTime.h>
#include <TavaroCore/Captions/SpokenText.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

/// The words' places in the text, when it is the words one after the other with nothing but white space between them.
std::vector<SpokenPart> partsByWords(CaptionCue const& cue) {
    std::vector<SpokenPart> parts;
    std::string_view const text = cue.text;
    std::size_t at = 0;
    for (auto const& word : cue.words) {
        auto const found = text.find(word.text, at);
        if (found == std::string_view::npos || !trimmed(text.substr(at, found - at)).empty()) return {};
        parts.push_back({text.substr(found, word.text.size()), word.start, word.end});
        at = found + word.text.size();
    }
    return trimmed(text.substr(at)).empty() ? parts : std::vector<SpokenPart>{};
}

/// A part of a script: a word, or a part of a long one.
struct ScriptPart {
    std::string_view text;
    std::size_t length = 0;
    bool followsBlank = true;
};

std::vector<ScriptPart> partsOf(std::string_view script, std::size_t maxLength) {
    std::vector<ScriptPart> parts;
    for (auto const word : writtenWords(script)) {
        bool isFirst = true;
        for (auto const part : brokenWord(word, maxLength)) {
            parts.push_back({part, lengthOf(part), isFirst});
            isFirst = false;
        }
    }
    return parts;
}

struct CueText {
    std::string text;
    std::vector<std::string_view> words;
};

std::vector<CueText> filled(std::vector<ScriptPart> const& parts, std::size_t maxLength) {
    std::vector<CueText> cues;
    std::size_t length = 0;
    for (auto const& part : parts) {
        std::size_t const blank = part.followsBlank ? 1 : 0;
        if (cues.empty() || length + blank + part.length > maxLength) {
            cues.emplace_back();
            length = 0;
        } else if (blank) {
            cues.back().text += ' ';
            ++length;
        }
        cues.back().text += part.text;
        cues.back().words.push_back(part.text);
        length += part.length;
    }
    return cues;
}

}

std::vector<SpokenPart> spokenParts(CaptionCue const& cue) {
    if (auto parts = partsByWords(cue); !parts.empty()) return parts;
    auto const texts = writtenWords(cue.text);
    std::vector<SpokenPart> parts(texts.size());
    bool const isTimed = texts.size() == cue.words.size();
    auto const starts = isTimed ? std::vector<double>{} : startsByLength(cue.range(), texts);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        parts[i] = isTimed ? SpokenPart{texts[i], cue.words[i].start, cue.words[i].end}
                           : SpokenPart{texts[i], starts[i], starts[i + 1]};
    }
    return parts;
}

CaptionCue const* CaptionTrack::cue(double at) const {
    auto const found =
        std::find_if(cues.rbegin(), cues.rend(), [&](CaptionCue const& cue) { return cue.range().contains(at); });
    return found == cues.rend() ? nullptr : &*found;
}

std::string_view CaptionTrack::visibleText(CaptionCue const& of, double at) const {
    std::string_view const text = of.text;
    if (reveal == CaptionReveal::line) return text;
    auto const parts = spokenParts(of);
    auto const last =
        std::find_if(parts.rbegin(), parts.rend(), [&](SpokenPart const& part) { return part.start <= at; });
    if (last == parts.rend()) return {};
    return text.substr(0, static_cast<std::size_t>(last->text.data() - text.data()) + last->text.size());
}

std::vector<CaptionCue> CaptionTrack::cuesFromScript(std::string_view script, double start, double duration,
                                                     std::int64_t maxCharacters) {
    if (!(duration > 0) || !std::isfinite(start) || !std::isfinite(duration)) return {};
    auto const maxLength = static_cast<std::size_t>(std::max<std::int64_t>(maxCharacters, 1));
    auto const texts = filled(partsOf(script, maxLength), maxLength);
    std::vector<std::string_view> lines(texts.size());
    std::transform(texts.begin(), texts.end(), lines.begin(),
                   [](CueText const& cue) { return std::string_view(cue.text); });
    auto const starts = startsByLength({start, duration}, lines);
    std::vector<CaptionCue> cues(texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        auto& cue = cues[i];
        cue.start = starts[i];
        cue.duration = starts[i + 1] - starts[i];
        cue.text = texts[i].text;
        cue.words = wordsByLength(cue.range(), texts[i].words);
    }
    return cues;
}

}
