#include <TavaroRender/Audio/Private/SignalDucking.h>

#include <algorithm>
#include <cmath>
#include <map>

#include <TavaroRender/Audio/Private/MixRenderer.h>
#include <TavaroRender/Audio/Private/MixRuns.h>

namespace tavaro {

namespace {

constexpr std::int64_t stepSamples = audioRate / 50;
constexpr std::int64_t stepsAtOnce = 100;
// Speech is louder than this in each of its syllables, the noise of a room is not.
constexpr double heardLevel = -42;                          // dB of full scale
constexpr std::int64_t shortestSound = audioRate * 6 / 100; // less is a click or a knock

double level(std::span<StereoSample const> samples) {
    double power = 0;
    for (auto const& [left, right] : samples) power += 0.5 * (double{left} * left + double{right} * right);
    return 10 * std::log10(power / static_cast<double>(samples.size()) + 1e-20);
}

/// The sound of one role alone, before anything lowers it.
MixPlan tracksOf(MixPlan const& plan, AudioRole role) {
    MixPlan part{.length = plan.length, .sources = plan.sources};
    std::ranges::copy_if(plan.tracks, std::back_inserter(part.tracks),
                         [role](MixTrack const& track) { return track.role == role; });
    for (auto& track : part.tracks) track.ducking = {};
    return part;
}

std::vector<SampleSpan> heard(MixPlan part, std::vector<std::filesystem::path> const& files,
                              std::function<bool()> const& goOn) {
    if (part.tracks.empty()) return {};
    auto const length = part.length;
    MixRenderer renderer(std::move(part), files);
    std::vector<StereoSample> block(stepSamples * stepsAtOnce);
    std::vector<SampleSpan> ranges;
    for (std::int64_t at = 0; at < length; at += std::ssize(block)) {
        if (goOn && !goOn()) break;
        renderer.render(at, block);
        for (std::int64_t step = 0; step < stepsAtOnce; ++step) {
            auto const samples = std::span(block).subspan(static_cast<std::size_t>(step * stepSamples), stepSamples);
            auto const start = at + step * stepSamples;
            if (level(samples) > heardLevel) ranges.push_back({start, start + stepSamples});
        }
    }
    auto syllables = joined(std::move(ranges), stepSamples * 2);
    std::erase_if(syllables, [](SampleSpan const& range) { return range.end - range.start < shortestSound; });
    return syllables;
}

}

void resolveDucking(MixPlan& plan, std::vector<std::filesystem::path> const& files, std::function<bool()> const& goOn) {
    std::map<AudioRole, std::vector<SampleSpan>> found;
    for (auto const& track : plan.tracks) {
        if (!track.duckedBySignal || track.duckAmount <= 0 || found.contains(*track.duckedBySignal)) continue;
        found[*track.duckedBySignal] = heard(tracksOf(plan, *track.duckedBySignal), files, goOn);
    }
    for (auto& track : plan.tracks) {
        if (!track.duckedBySignal) continue;
        auto windows = track.duckWindows;
        auto const& more = found[*track.duckedBySignal];
        windows.insert(windows.end(), more.begin(), more.end());
        track.ducking = duckingEnvelope(windows, track.duckAmount);
    }
}

}
