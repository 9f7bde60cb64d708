#include <TavaroCore/Speech/TranscriptCaptions.h>

#include <TavaroCore/Captions/CaptionTrack.h>
#include <TavaroCore/Captions/Private/SharedTime.h>
#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Speech/TimelineWords.h>

#include <algorithm>

namespace tavaro {

namespace {

constexpr double longestStretch = 1; // seconds that a cue waits for the next

bool endsSentence(std::string_view text) { return text.ends_with('.') || text.ends_with('?') || text.ends_with('!'); }

/// The written words with their times, without the fillers.
std::vector<CaptionWord> captionWords(DemoProject const& project) {
    std::vector<CaptionWord> result;
    for (auto const& [word, range, index] : timelineWords(project)) {
        if (word.isFiller()) continue;
        for (auto& each : wordsByLength(range, writtenWords(word.text))) result.push_back(std::move(each));
    }
    return result;
}

class CueBuilder {
public:
    explicit CueBuilder(CaptionBreaks const& breaks) : breaks_(breaks) {}

    void add(CaptionWord word) {
        auto const length = static_cast<std::int64_t>(lengthOf(word.text));
        if (!words_.empty()) {
            bool const isPause = word.start - words_.back().end > breaks_.breakOnPause;
            if (isPause || length_ + length + 1 > breaks_.maxCharacters) close();
        }
        length_ += length + (words_.empty() ? 0 : 1);
        words_.push_back(std::move(word));
        if (endsSentence(words_.back().text) && length_ > breaks_.maxCharacters / 3) close();
    }

    std::vector<CaptionCue> finish() {
        close();
        for (std::size_t i = 0; i + 1 < cues_.size(); ++i) {
            double const gap = cues_[i + 1].start - cues_[i].range().end();
            if (gap > 0) cues_[i].duration += std::min(gap, longestStretch);
        }
        return std::move(cues_);
    }

private:
    void close() {
        if (words_.empty()) return;
        auto& cue = cues_.emplace_back();
        cue.start = words_.front().start;
        cue.duration = std::max(words_.back().end - cue.start, 0.0);
        for (auto const& word : words_) {
            if (!cue.text.empty()) cue.text += ' ';
            cue.text += word.text;
        }
        cue.words = std::move(words_);
        words_.clear();
        length_ = 0;
    }

    CaptionBreaks const breaks_;
    std::vector<CaptionWord> words_;
    std::int64_t length_ = 0;
    std::vector<CaptionCue> cues_;
};

}

std::vector<CaptionCue> captionCues(std::vector<CaptionWord> words, CaptionBreaks const& breaks) {
    CueBuilder builder(breaks);
    for (auto& word : words) builder.add(std::move(word));
    return builder.finish();
}

std::vector<CaptionCue> captionCuesFromTranscript(DemoProject const& project, CaptionBreaks const& breaks) {
    return captionCues(captionWords(project), breaks);
}

}
