#include <TavaroRender/Composition/Private/SpeechPresence.h>

#include <algorithm>
#include <mutex>
#include <optional>
#include <vector>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroCore/Speech/TimelineWords.h>
#include <TavaroCore/Values/JoinedRanges.h>
#include <TavaroCore/Values/Smoothstep.h>

namespace tavaro {

namespace {

constexpr float speechLevel = 0.018f;   // of the microphone
constexpr double shortestSpeech = 0.25; // seconds; less is a knock or a cough
constexpr double breath = 0.6;          // seconds between words that belong together
constexpr double before = 0.6;          // seconds that the speaker is there before the first word, fading in
constexpr double after = 1.6;           // and behind the last
constexpr double fade = 0.45;

std::vector<TimeRange> loudRanges(DemoProject const& project) {
    auto const& levels = project.metadata->micLevels;
    double const bucket = recordedSeconds(project) / static_cast<double>(levels.size());
    auto const recording = recordingOnTimeline(project);
    std::vector<TimeRange> ranges;
    auto const isLoud = [](float level) { return level >= speechLevel; };
    for (auto begin = std::ranges::find_if(levels, isLoud); begin != levels.end();) {
        auto const end = std::find_if_not(begin, levels.end(), isLoud);
        TimeRange const loud{bucket * static_cast<double>(begin - levels.begin()),
                             bucket * static_cast<double>(end - begin)};
        for (auto const& shown : recording.stretches(loud)) ranges.push_back(shown.range);
        begin = std::find_if(end, levels.end(), isLoud);
    }
    return ranges;
}

/// None where nothing tells.
std::optional<std::vector<TimeRange>> spokenRanges(DemoProject const& project) {
    std::vector<TimeRange> spoken;
    if (project.transcript && !(*project.transcript)->words.empty()) {
        for (auto const& word : timelineWords(project)) spoken.push_back(word.range);
    } else if (!project.metadata->micLevels.empty()) {
        spoken = joined(loudRanges(project), breath);
        std::erase_if(spoken, [](TimeRange const& range) { return range.duration < shortestSpeech; });
    } else {
        return std::nullopt;
    }
    return joined(std::move(spoken), before + after);
}

}

struct SpeechPresence::Ranges {
    std::once_flag found;
    std::optional<std::vector<TimeRange>> spoken; // ascending, so far apart that their fades do not meet
};

SpeechPresence::SpeechPresence(DemoProject const& project) : project_(project), ranges_(std::make_unique<Ranges>()) {}

SpeechPresence::~SpeechPresence() = default;

double SpeechPresence::at(double time) const {
    std::call_once(ranges_->found, [&] { ranges_->spoken = spokenRanges(project_); });
    if (!ranges_->spoken) return 1;
    auto const& spoken = *ranges_->spoken;
    auto const presence = [&](TimeRange const& range) {
        double const in = (time - (range.start - before)) / fade;
        double const out = (range.end() + after - time) / fade;
        return smoothstep(0, 1, std::min(in, out));
    };
    auto const next = std::ranges::upper_bound(spoken, time, {}, &TimeRange::start);
    double const coming = next != spoken.end() ? presence(*next) : 0;
    return std::max(next != spoken.begin() ? presence(*(next - 1)) : 0, coming);
}

}
