#include <TavaroVoice/Script/ScriptPlan.h>

#include <TavaroVoice/Script/Private/ScriptSentences.h>

#include <algorithm>
#include <deque>
#include <map>
#include <string_view>
#include <utility>

namespace tavaro {

namespace {

/// The segments of a plan by their texts, each to be taken once.
class Known {
public:
    explicit Known(std::vector<VoiceoverSegment> segments) {
        for (auto& segment : segments) byText_[segment.text].push_back(std::move(segment));
    }
    VoiceoverSegment take(std::string const& text) {
        auto const found = byText_.find(text);
        if (found == byText_.end() || found->second.empty()) return {.text = text};
        auto segment = std::move(found->second.front());
        found->second.pop_front();
        return segment;
    }

private:
    std::map<std::string, std::deque<VoiceoverSegment>, std::less<>> byText_;
};

}

VoiceoverPlan plannedScript(VoiceoverPlan plan, std::vector<ScriptLine> const& lines) {
    Known known(std::exchange(plan.segments, {}));
    double free = 0; // when the line before is over
    for (auto const& line : lines) {
        auto segment = known.take(line.text);
        if (!segment.audioAsset) segment.audioDuration.reset(); // what a cut had left room for
        segment.anchor = line.time;
        segment.start = std::max(line.time.value_or(free), free);
        free = segment.end() + segment.trailingPause;
        plan.segments.push_back(std::move(segment));
    }
    return plan;
}

std::vector<ScriptLine> timedLines(std::vector<ScriptLine> lines, std::optional<VoiceoverPlan> const& plan,
                                   double duration) {
    if (std::ranges::any_of(lines, [](ScriptLine const& line) { return line.time.has_value(); })) return lines;
    if (plan && plan->segments.size() == lines.size()) {
        for (std::size_t i = 0; i < lines.size(); ++i) lines[i].time = plan->segments[i].anchor;
        return lines;
    }
    double total = 0;
    for (auto const& line : lines) total += sentences::spokenSeconds(line.text);
    double const stretch = std::max(duration / total, 1.0);
    double spoken = 0;
    for (auto& line : lines) {
        if (spoken * stretch < duration) line.time = spoken * stretch;
        spoken += sentences::spokenSeconds(line.text);
    }
    return lines;
}

std::vector<ScriptLine> linesOf(VoiceoverPlan const& plan) {
    std::vector<ScriptLine> lines;
    for (auto const& segment : plan.segments) lines.push_back({segment.anchor.value_or(segment.start), segment.text});
    return lines;
}

}
