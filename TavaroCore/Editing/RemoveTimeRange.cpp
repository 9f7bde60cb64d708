#include <TavaroCore/Editing/TimelineEdits.h>

#include <TavaroCore/Editing/Private/PictureRange.h>
#include <TavaroCore/Editing/TimedLists.h>
#include <TavaroCore/Timeline/Private/TimelineMath.h>

#include <cmath>
#include <string>
#include <string_view>

namespace tavaro {

namespace {

constexpr double smallestRemoved = 0.0001; // seconds; less changes nothing
constexpr double smallestGap = 0.000001;   // seconds; less is rounding

/// Whether an item lost more than rounding.
bool isCut(double before, double after) { return before - after > TimelineMath::shortestPiece; }

bool touches(TimeRange const& item, TimeRange const& removed) {
    return item.end() > removed.start && item.start < removed.end();
}

/// Whether the text is the words with a blank between each two.
bool isMadeOf(std::string_view text, std::vector<CaptionWord> const& words) {
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0) {
            if (!text.starts_with(' ')) return false;
            text.remove_prefix(1);
        }
        if (!text.starts_with(words[i].text)) return false;
        text.remove_prefix(words[i].text.size());
    }
    return text.empty() && !words.empty();
}

std::string joined(std::vector<CaptionWord> const& words) {
    std::string text;
    for (auto const& word : words) {
        if (!text.empty()) text += ' ';
        text += word.text;
    }
    return text;
}

/// The rule of a cut for each kind of item.
struct Cut {
    TimeRange removed;

    template<class Item> void operator()(std::vector<Item>& items) const {
        keepWhere(items, [&](Item& item) { return survives(item); });
    }

    void operator()(std::vector<LayoutCue>& cues) const {
        for (auto& cue : cues) cue.time = TimelineMath::map(cue.time, removed);
    }

    void operator()(std::vector<AudioClip>& clips) const {
        std::vector<AudioClip> result;
        result.reserve(clips.size() + 1);
        for (auto& clip : clips) appendPieces(std::move(clip), result);
        clips = std::move(result);
    }

private:
    template<class Item> bool survives(Item& item) const { return moves(item); }

    template<class Item> bool moves(Item& item) const {
        auto const left = TimelineMath::map(item.range(), removed);
        if (!left) return false;
        item.start = left->start;
        item.duration = left->duration;
        return true;
    }

    bool survives(ZoomEvent& zoom) const {
        double const before = zoom.duration;
        if (!moves(zoom)) return false;
        double const ramps = zoom.rampIn + zoom.rampOut;
        if (zoom.duration < before && ramps > zoom.duration) {
            zoom.rampIn *= zoom.duration / ramps;
            zoom.rampOut *= zoom.duration / ramps;
        }
        return true;
    }

    bool survives(CaptionCue& cue) const {
        bool const losesWords = touches(cue.range(), removed) && isMadeOf(cue.text, cue.words);
        if (!moves(cue)) return false;
        auto const count = cue.words.size();
        keepWhere(cue.words, [&](CaptionWord& word) {
            auto const left = TimelineMath::map({word.start, word.end - word.start}, removed);
            if (!left) return false;
            word.start = left->start;
            word.end = left->end();
            return true;
        });
        if (losesWords && cue.words.size() < count) cue.text = joined(cue.words);
        return !losesWords || !cue.words.empty();
    }

    bool survives(VoiceoverSegment& segment) const {
        auto const span = spanOf(segment);
        auto const left = TimelineMath::map(span, removed);
        if (!left) return false;
        segment.start = left->start;
        if (segment.anchor) segment.anchor = TimelineMath::map(*segment.anchor, removed);
        if (isCut(span.duration, left->duration)) {
            segment.audioDuration = left->duration; // what a new voice has room for
            segment.isDirty = true;
        }
        return true;
    }

    void appendPieces(AudioClip clip, std::vector<AudioClip>& result) const {
        auto const [head, tail] =
            TimelineMath::split({clip.start, clip.sourceStart, clip.duration}, clip.speed, removed);
        if (head) {
            auto piece = tail ? clip : std::move(clip);
            if (isCut(piece.duration, head->duration)) piece.fadeOut = 0;
            place(piece, *head);
            piece.fadeIn = std::min(piece.fadeIn, piece.duration);
            result.push_back(std::move(piece));
        }
        if (tail) {
            if (head) clip.id = UUID::random();
            if (isCut(clip.duration, tail->duration)) clip.fadeIn = 0;
            place(clip, *tail);
            clip.fadeOut = std::min(clip.fadeOut, clip.duration);
            result.push_back(std::move(clip));
        }
    }

    static void place(AudioClip& clip, TimelineMath::MediaSpan const& span) {
        clip.start = span.start;
        clip.sourceStart = span.sourceStart;
        clip.duration = span.duration;
    }
};

/// The spans before and between clips that show nothing.
std::vector<TimeRange> gapsOf(Timeline const& timeline) {
    std::vector<TimeRange> gaps;
    double shown = 0;
    for (auto const& clip : timeline.clips) {
        if (clip.start - shown > smallestGap) gaps.push_back({shown, clip.start - shown});
        shown = std::max(shown, clip.end());
    }
    return gaps;
}

}

TimeRange pictureRange(DemoProject& project, TimeRange const& range) {
    auto& timeline = project.timeline;
    timeline.sortClips();
    double start = std::max(range.start, 0.0), end = std::max(range.end(), start);
    auto const gaps = gapsOf(timeline);
    for (auto gap = gaps.rbegin(); gap != gaps.rend(); ++gap) {
        forEachTimedList(project, Cut{*gap});
        start = TimelineMath::map(start, *gap);
        end = TimelineMath::map(end, *gap);
    }
    timeline.closeGaps();
    start = timeline.nearestEdge(start);
    return {start, timeline.nearestEdge(end) - start};
}

void removeTimeRange(DemoProject& project, double start, double duration) {
    if (!(duration > smallestRemoved) || !std::isfinite(start) || !std::isfinite(duration)) return;
    auto const removed = pictureRange(project, {start, duration});
    if (!(removed.duration > 0)) return;
    project.timeline.remove(removed.start, removed.duration);
    forEachTimedList(project, Cut{removed});
}

}
