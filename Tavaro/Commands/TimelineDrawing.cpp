#include <Tavaro/Commands/TimelineDrawing.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroCore/Values/Timecode.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

namespace tavaro::commands {

namespace {

constexpr int labelWidth = 11;
constexpr int fewestColumns = 20;
constexpr std::string_view scenes[] = {"s", "o", "|", "C"}; // screen only, overlay, split, camera only

/// Time across the columns of a lane.
class Lanes {
public:
    Lanes(double duration, int columns)
        : duration_(duration)
        , columns_(static_cast<std::size_t>(std::max(columns - labelWidth, fewestColumns))) {}

    /// The columns that a range covers, at least one; none for a range outside the edit.
    template<class Visit> void forEachColumn(TimeRange const& range, Visit&& visit) const {
        if (!(range.start < duration_ && range.end() >= 0)) return;
        double const perSecond = static_cast<double>(columns_) / duration_;
        auto const first = static_cast<std::size_t>(std::max(range.start, 0.0) * perSecond);
        auto const last = static_cast<std::size_t>(std::ceil(std::min(range.end(), duration_) * perSecond - 1e-6));
        for (auto i = first; i < std::max(last, first + 1) && i < columns_; ++i) visit(i);
    }

    /// Draws the items of one list; `glyph` gives each item's character.
    template<class Items, class RangeOf, class Glyph>
    void draw(std::string_view label, Items const& items, RangeOf&& rangeOf, Glyph&& glyph) {
        if (items.empty()) return;
        std::vector<std::string_view> cells(columns_, " ");
        std::size_t index = 0;
        for (auto const& item : items) {
            forEachColumn(rangeOf(item), [&](std::size_t column) { cells[column] = glyph(item, index); });
            ++index;
        }
        text_ += fmt::format("{:<{}}", label, labelWidth);
        while (!cells.empty() && cells.back() == " ") cells.pop_back();
        for (auto const cell : cells) text_ += cell;
        text_ += '\n';
    }

    /// Times at round steps, far enough apart to be read.
    void drawRuler() {
        double const wanted = 10 * duration_ / static_cast<double>(columns_);
        double step = 3600;
        for (double const round : {1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800}) {
            if (round >= wanted) {
                step = round;
                break;
            }
        }
        while (step < wanted) step *= 2;
        std::string line(labelWidth, ' ');
        for (double t = 0; t < duration_; t += step) {
            auto const column = static_cast<std::size_t>(t / duration_ * static_cast<double>(columns_)) + labelWidth;
            line.resize(std::max(line.size(), column), ' ');
            line += Timecode::format(t);
        }
        text_ += line + '\n';
    }

    std::string take() { return std::move(text_); }

private:
    double duration_;
    std::size_t columns_;
    std::string text_;
};

auto rangeOf = [](auto const& item) { return item.range(); };
auto momentOf = [](auto const& item) { return TimeRange{item.t, 0}; };

/// Neighbours differ, so that their border shows.
std::string_view alternating(std::size_t index, std::string_view even, std::string_view odd) {
    return index % 2 ? odd : even;
}

void drawSound(Lanes& lanes, DemoProject const& project) {
    for (auto const& track : project.audioTracks) {
        lanes.draw(nameOf(track.role), track.clips, rangeOf, [&](AudioClip const&, std::size_t index) {
            return track.isMuted ? std::string_view("·") : alternating(index, "▂", "▃");
        });
    }
    if (!project.voiceover) return;
    lanes.draw(
        "voice-over", project.voiceover->segments,
        [](VoiceoverSegment const& segment) {
            return TimeRange{segment.start, segment.duration()};
        },
        [](VoiceoverSegment const&, std::size_t index) { return alternating(index, "▂", "▃"); });
}

void drawCamera(Lanes& lanes, DemoProject const& project) {
    auto const& cues = project.layoutCues;
    lanes.draw(
        "scenes", cues,
        [&](LayoutCue const& cue) {
            auto const* next = &cue + 1;
            double const end = next == cues.data() + cues.size() ? project.duration() : next->time;
            return TimeRange{cue.time, end - cue.time};
        },
        [](LayoutCue const& cue, std::size_t) { return scenes[static_cast<std::size_t>(cue.scene)]; });
}

}

std::string timelineDrawing(DemoProject const& project, int columns) {
    if (!(project.duration() > 0)) return {};
    Lanes lanes(project.duration(), columns);
    lanes.drawRuler();
    lanes.draw("clips", project.timeline.clips, rangeOf, [](VideoClip const& clip, std::size_t index) {
        return clip.speed > 1 ? std::string_view("»") : clip.speed < 1 ? "‹" : alternating(index, "█", "▓");
    });
    lanes.draw("zooms", project.zoomEvents, rangeOf, [](ZoomEvent const& zoom, std::size_t) {
        return zoom.isLoupe() ? std::string_view("o") : zoom.isAutomatic ? "━" : "═";
    });
    lanes.draw("overlays", project.overlays, rangeOf,
               [](Overlay const&, std::size_t index) { return alternating(index, "▬", "▭"); });
    lanes.draw("captions", project.captions.cues, rangeOf,
               [](CaptionCue const&, std::size_t index) { return alternating(index, "▪", "▫"); });
    lanes.draw("silences", project.silences, rangeOf, [](SilenceSpan const&, std::size_t) { return "░"; });
    drawSound(lanes, project);
    drawCamera(lanes, project);
    auto const log = logOnTimeline(project);
    lanes.draw("clicks", log.clicks, momentOf, [](ClickEvent const&, std::size_t) { return "•"; });
    lanes.draw("keys", log.keystrokes, momentOf, [](KeystrokeEvent const&, std::size_t) { return "˙"; });
    return lanes.take();
}

}
