#include <TavaroRender/Audio/Private/AudioMixer.h>

#include <algorithm>
#include <cmath>
#include <set>

#include <TavaroCore/Editing/AudioSplits.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroCore/Values/JoinedRanges.h>
#include <TavaroMedia/Audio/TimeStretch.h>
#include <TavaroRender/Audio/Private/MixRuns.h>

namespace tavaro {

namespace {

constexpr double longestOutput = 1e7;  // seconds
constexpr double loudestClip = 16;     // linear; more is a slip of the pen
constexpr double clickDistance = 0.09; // seconds
constexpr double musicExtra = 0.1;     // music goes so much deeper
constexpr double deepestMusic = 0.9;
constexpr double cutOffFade = 0.25; // seconds; sound that goes on beyond the output ends like this

constexpr std::int64_t muteRamp = audioRate / 200;
// A voice is heard coming: the others give way before it speaks, and come back slowly, not in every pause.
constexpr std::int64_t duckAttack = audioRate * 15 / 100;
constexpr std::int64_t duckRelease = audioRate * 40 / 100;
constexpr std::int64_t duckHold = duckAttack + duckRelease + audioRate / 4;

bool isTime(double seconds) { return std::abs(seconds) < longestOutput; } // not for what is no number

std::int64_t samples(double seconds) { return std::llround(seconds * audioRate); }

/// The plan under construction.
struct Building {
    explicit Building(DemoProject const& document) : project(document) {
        auto const within = [](double seconds) { return isTime(seconds) ? std::max(seconds, 0.0) : 0.0; };
        intro = within(project.introDuration());
        plan.length = samples(within(project.presentationDuration()));
        editEnd = std::min(samples(intro + within(project.duration())), plan.length);
    }

    DemoProject const& project;
    MixPlan plan;
    double intro = 0;
    std::int64_t editEnd = 0; // output samples

    std::int64_t output(double editSeconds) const { return samples(intro + editSeconds); }
    std::vector<SampleSpan> output(std::vector<TimeRange> const& ranges, std::int64_t gap) const;
    std::size_t sourceNumber(std::string const& asset, AudioTrack const& track);
    void add(AudioTrack const& track, std::vector<AudioClip> const& clips);
    void addWindows(AudioTrack const& track, MixTrack& mixed) const;
    void addSegments();
};

std::vector<SampleSpan> Building::output(std::vector<TimeRange> const& ranges, std::int64_t gap) const {
    std::vector<SampleSpan> result;
    for (auto const& range : ranges) {
        if (isTime(range.start) && isTime(range.end())) result.push_back({output(range.start), output(range.end())});
    }
    return joined(std::move(result), gap);
}

EnhancementSettings enhancementOf(AudioTrack const& track) {
    auto const strength = std::isfinite(track.noiseReductionStrength) ? track.noiseReductionStrength : 0;
    bool const reduces = track.noiseReduction && strength > 0;
    return {.noiseReduction = reduces,
            .noiseReductionStrength = reduces ? std::min(strength, 1.0) : 0,
            .voiceClarity = track.voiceClarity,
            .normalize = track.normalize};
}

std::size_t Building::sourceNumber(std::string const& asset, AudioTrack const& track) {
    MixSource source{asset, enhancementOf(track)};
    auto const found = std::ranges::find(plan.sources, source);
    auto const number = static_cast<std::size_t>(found - plan.sources.begin());
    if (found == plan.sources.end()) plan.sources.push_back(std::move(source));
    return number;
}

bool isHeard(AudioTrack const& track) { return !track.isMuted && track.gain > 0 && std::isfinite(track.gain); }

bool isHeard(AudioClip const& clip) {
    return isTime(clip.start) && isTime(clip.sourceStart) && clip.duration > 0 && isTime(clip.duration) &&
           clip.gain > 0 && std::isfinite(clip.gain) && clip.speed > 0 && std::isfinite(clip.speed) &&
           !clip.asset.empty();
}

std::vector<TimeRange> spans(std::vector<AudioTrack> const& tracks, AudioRole role) {
    std::vector<TimeRange> ranges;
    for (auto const& track : tracks) {
        if (track.role != role || !isHeard(track)) continue;
        for (auto const& clip : track.clips) {
            if (isHeard(clip)) ranges.push_back(clip.range());
        }
    }
    return ranges;
}

void Building::addWindows(AudioTrack const& track, MixTrack& mixed) const {
    mixed.duckAmount = duckAmount(project, track);
    std::vector<TimeRange> windows;
    bool const isAutomatic = project.voiceover && project.voiceover->ducksOtherAudio;
    bool const isVoiceover = track.role == AudioRole::voiceover;
    if (!isVoiceover && (isAutomatic || track.duckedBy == AudioRole::voiceover)) {
        windows = voiceoverWindows(project);
        std::ranges::copy(spans(project.audioTracks, AudioRole::voiceover), std::back_inserter(windows));
    }
    if (track.duckedBy && *track.duckedBy != AudioRole::voiceover && *track.duckedBy != track.role)
        mixed.duckedBySignal = track.duckedBy;
    mixed.duckWindows = output(windows, duckHold);
}

void Building::add(AudioTrack const& track, std::vector<AudioClip> const& clips) {
    bool const isTaken = isRecorded(track.role);
    auto const end = isTaken ? editEnd : plan.length;
    std::vector<MixPiece> pieces;
    for (auto const& clip : clips) {
        if (!isHeard(clip)) continue;
        auto const gain = std::min(clip.gain, loudestClip) * std::min(track.gain, loudestClip);
        MixPiece piece{.source = sourceNumber(clip.asset, track),
                       .start = output(clip.start),
                       .end = output(clip.start + clip.duration),
                       .sourceStart = samples(clip.sourceStart),
                       .speed = std::clamp(clip.speed, TimeStretch::slowest, TimeStretch::fastest),
                       .gain = static_cast<float>(gain),
                       .fadeIn = samples(isTime(clip.fadeIn) ? clip.fadeIn : 0),
                       .fadeOut = samples(isTime(clip.fadeOut) ? clip.fadeOut : 0)};
        if (piece.end > end && end == plan.length) piece.fadeOut = std::max(piece.fadeOut, samples(cutOffFade));
        if (keepInside(piece, 0, end)) pieces.push_back(piece);
    }
    if (pieces.empty()) return;
    MixTrack mixed{.role = track.role, .runs = runs(std::move(pieces))};
    if (isTaken)
        mixed.muting = GainEnvelope::dips(output(project.mutedRanges(), 2 * muteRamp), 0, -muteRamp, -muteRamp);
    addWindows(track, mixed);
    mixed.ducking = duckingEnvelope(mixed.duckWindows, mixed.duckAmount);
    plan.tracks.push_back(std::move(mixed));
}

/// A line whose picture was sped up or slowed down is as long as that made it, and has to be said in that time. One
/// that was cut inside only ends early: it is to be said anew.
double speedOf(VoiceoverSegment const& segment, DemoProject const& project) {
    constexpr double sameSpeed = 0.001;
    auto const sound = project.assetDurations.find(*segment.audioAsset);
    if (segment.isDirty || !segment.audioDuration || sound == project.assetDurations.end()) return 1;
    double const speed = sound->second / *segment.audioDuration;
    return std::isfinite(speed) && speed > 0 && std::abs(speed - 1) > sameSpeed ? speed : 1;
}

/// Segments sound with the settings of the first voice-over track; where there is none, as they are.
void Building::addSegments() {
    if (!project.voiceover) return;
    std::set<std::string> laid;
    AudioTrack settings{.role = AudioRole::voiceover};
    bool hasTrack = false;
    for (auto const& track : project.audioTracks) {
        if (track.role != AudioRole::voiceover) continue;
        if (!hasTrack) settings = track;
        hasTrack = true;
        for (auto const& clip : track.clips) laid.insert(clip.asset);
    }
    if (!isHeard(settings)) return;
    std::vector<AudioClip> clips;
    for (auto const& segment : project.voiceover->segments) {
        if (!segment.audioAsset || laid.contains(*segment.audioAsset)) continue;
        clips.push_back({.asset = *segment.audioAsset,
                         .start = segment.start,
                         .duration = segment.duration(),
                         .speed = speedOf(segment, project)});
    }
    add(settings, clips);
}

}

GainEnvelope duckingEnvelope(std::vector<SampleSpan> const& windows, double amount) {
    if (!(amount > 0)) return {};
    return GainEnvelope::dips(joined(windows, duckHold), static_cast<float>(1 - std::min(amount, 1.0)), duckAttack,
                              duckRelease);
}

std::vector<TimeRange> voiceoverWindows(DemoProject const& project) {
    std::vector<TimeRange> windows;
    if (!project.voiceover) return windows;
    for (auto const& segment : project.voiceover->segments) {
        if (segment.audioAsset && segment.duration() > 0 && isTime(segment.start))
            windows.push_back({segment.start, segment.duration()});
    }
    return joined(std::move(windows), 0);
}

double duckAmount(DemoProject const& project, AudioTrack const& track) {
    auto const within = [](double amount) { return std::isfinite(amount) ? std::clamp(amount, 0.0, 1.0) : 0.0; };
    bool const isAutomatic = project.voiceover && project.voiceover->ducksOtherAudio;
    if (!isAutomatic || track.role == AudioRole::voiceover) return within(track.duckAmount);
    auto const amount = within(project.voiceover->duckAmount);
    return track.role == AudioRole::music ? std::min(amount + musicExtra, deepestMusic) : amount;
}

std::vector<double> clickTimes(DemoProject const& project) {
    std::vector<double> times;
    if (!project.cursor.clickSound) return times;
    recordingOnTimeline(project).forEachShown(project.metadata->clicks, [&](ClickEvent const&, double time) {
        if (isTime(time)) times.push_back(time);
    });
    std::ranges::sort(times);
    std::vector<double> kept;
    for (auto const time : times) {
        if (kept.empty() || time - kept.back() >= clickDistance) kept.push_back(time);
    }
    for (auto& time : kept) time += project.introDuration();
    return kept;
}

MixPlan AudioMixer::build(DemoProject const& project) {
    Building building(project);
    for (auto const& track : project.audioTracks) {
        if (isHeard(track)) building.add(track, track.clips);
    }
    building.addSegments();
    auto const volume = project.cursor.clickSoundVolume;
    if (volume > 0) {
        building.plan.clickGain = static_cast<float>(std::min(volume, 1.0));
        for (auto const time : clickTimes(project)) building.plan.clicks.push_back(samples(time));
    }
    return std::move(building.plan);
}

}
