#include <TavaroRender/Layers/Private/SpokenCaption.h>

#include <algorithm>
#include <cmath>

#include <TavaroRender/Layers/Private/ReadableText.h>

namespace tavaro {

namespace {

constexpr std::size_t longestText = 600; // characters; a caption of two lines has a tenth of that
constexpr double spokenLinger = 0.35;    // seconds that a word stays lit when no other follows

/// Where a word of the cue lies in the text as it is drawn.
struct DrawnWord {
    std::size_t begin = 0;
    std::size_t end = 0;
};

struct DrawnText {
    std::string text;
    std::vector<DrawnWord> words;
};

/// Makes the cue's text readable piece by piece, so that its words keep their places.
DrawnText drawnText(CaptionCue const& cue, std::vector<SpokenPart> const& parts) {
    DrawnText result;
    char const* after = nullptr;
    for (auto const& part : parts) {
        if (after) {
            std::string_view const gap(after, static_cast<std::size_t>(part.text.data() - after));
            result.text += readableText(gap, longestText);
        }
        if (result.text.size() > longestText) {
            result.text += "…";
            break;
        }
        DrawnWord word{result.text.size(), 0};
        result.text += readableText(part.text, longestText);
        word.end = result.text.size();
        result.words.push_back(word);
        after = part.text.data() + part.text.size();
    }
    if (parts.empty()) result.text = readableText(cue.text, longestText);
    return result;
}

/// Eighths of the part that have been spoken.
int stepsSpoken(SpokenPart const& part, double at) {
    constexpr int stepsPerWord = LayerSpec::Caption::stepsPerWord;
    if (!(part.end > part.start) || at >= part.end) return stepsPerWord;
    double const share = (at - part.start) / (part.end - part.start);
    return static_cast<int>(std::ceil(std::clamp(share, 0.0, 1.0) * stepsPerWord));
}

}

LayerSpec::Caption spokenCaption(CaptionTrack const& track, CaptionCue const& cue, double at) {
    auto const parts = spokenParts(cue);
    auto drawn = drawnText(cue, parts);
    LayerSpec::Caption caption{.style = track.style, .font = track.font};
    if (track.reveal == CaptionReveal::word) {
        auto const visible = track.visibleText(cue, at);
        std::size_t count = 0;
        while (count < drawn.words.size() &&
               parts[count].text.data() + parts[count].text.size() <= visible.data() + visible.size()) {
            ++count;
        }
        caption.shownBytes = visible.empty() || count == 0 ? 0 : drawn.words[count - 1].end;
        if (count == drawn.words.size() && count > 0) caption.shownBytes = std::string::npos;
    }
    caption.text = std::move(drawn.text);

    auto const next =
        std::find_if(parts.begin(), parts.end(), [&](SpokenPart const& part) { return !(part.start <= at); });
    auto const spoken = static_cast<std::size_t>(next - parts.begin());
    if (spoken == 0 || spoken > drawn.words.size()) return caption;
    auto const& word = drawn.words[spoken - 1];
    auto const& part = parts[spoken - 1];
    bool const isLit = track.style == CaptionStyle::karaoke || at < part.end + spokenLinger;
    caption.spokenBegin = isLit ? word.begin : word.end;
    caption.spokenEnd = word.end;
    caption.spokenSteps = track.style == CaptionStyle::karaoke ? stepsSpoken(part, at) : 0;
    return caption;
}

}
