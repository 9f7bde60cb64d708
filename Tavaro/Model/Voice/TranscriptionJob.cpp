#include <Tavaro/Model/Voice/TranscriptionJob.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Transcription/SpokenLocale.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <stop_token>
#include <utility>

namespace tavaro {

namespace {

constexpr double offsetStep = 0.001; // seconds; offsets that close are the same

/// By how much the recording's time is ahead of the clip's sound; none where no picture of the recording is beside it.
/// Its middle is asked, since an edge may be that of another clip.
std::optional<double> offsetOf(AudioClip const& clip, RecordingOnTimeline const& shown) {
    auto const recorded = shown.recordedTime(clip.start + clip.duration / 2);
    if (!recorded) return std::nullopt;
    return *recorded - (clip.sourceStart + clip.sourceSpan() / 2);
}

/// Where the sound begins, as most of it says: somebody may have moved a part of it.
class Offsets {
public:
    void add(AudioClip const& clip, RecordingOnTimeline const& shown) {
        auto const offset = offsetOf(clip, shown);
        if (offset) seconds_[static_cast<std::int64_t>(std::llround(*offset / offsetStep))] += clip.sourceSpan();
    }
    double most() const {
        auto const most = std::ranges::max_element(seconds_, {}, [](auto const& each) { return each.second; });
        return most == seconds_.end() ? 0 : static_cast<double>(most->first) * offsetStep;
    }

private:
    std::map<std::int64_t, double> seconds_;
};

/// Those of the tracks, and the lines of a narration, which are on none.
std::vector<AudioClip> clipsOf(DemoProject const& project, AudioRole role) {
    std::vector<AudioClip> clips;
    for (auto const& track : project.audioTracks)
        if (track.role == role) clips.insert(clips.end(), track.clips.begin(), track.clips.end());
    if (role != AudioRole::voiceover || !project.voiceover) return clips;
    for (auto const& line : project.voiceover->segments)
        if (line.audioAsset)
            clips.push_back({.asset = *line.audioAsset, .start = line.start, .duration = line.duration()});
    return clips;
}

std::string localeOf(TranscriptionChoices const& choices) {
    if (choices.locale.empty()) return usersLocale();
    if (auto identifier = localeIdentifier(choices.locale)) return *identifier;
    throw VoiceError(VoiceError::Kind::unknownLocale,
                     "On-device transcription doesn't support " + excerpt(choices.locale) + ".");
}

MadeTranscript transcribe(TranscriptionRequest const& request, JobReporter<TranscriptionProgress>& reporter) {
    std::stop_source stop;
    JobControl::CancelAction const cancel(reporter, [&] { stop.request_stop(); });
    if (request.sounds.empty())
        throw VoiceError(VoiceError::Kind::noSound, "This recording has no microphone audio to transcribe.");
    auto const locale = localeOf(request.choices);
    auto const engine = chosenEngine(transcriptionEngines(request.places), request.choices.engine, locale);
    std::size_t stage = 0;
    TranscriptionWatch const watch{
        .progress =
            [&](TranscriptionState const& state) {
                reporter.progress(
                    {.stage = stage++, .seconds = state.seconds, .total = state.total, .words = state.words});
            },
        .remark = [&](std::string const& sentence) { reporter.remark(sentence); },
        .stop = stop.get_token()};
    auto transcript = OnDeviceTranscriber(workOf(engine, locale)).transcribe(request.sounds, locale, watch);
    if (transcript.words.empty()) throw VoiceError(VoiceError::Kind::noSound, "No speech was found.");
    return {std::move(transcript), engine};
}

}

std::vector<SpokenSound> spokenSounds(DemoProject const& project, ProjectPackage const& package, AudioRole role) {
    auto const shown = recordingOnTimeline(project);
    std::vector<std::string> assets; // in the order of the tracks
    std::map<std::string, Offsets> offsets;
    for (auto const& clip : clipsOf(project, role)) {
        if (!offsets.contains(clip.asset)) assets.push_back(clip.asset);
        offsets[clip.asset].add(clip, shown);
    }
    std::vector<SpokenSound> sounds;
    for (auto const& asset : assets) sounds.push_back({package.assetURL(asset), offsets[asset].most()});
    return sounds;
}

Job<MadeTranscript, TranscriptionProgress> transcriptionJob(MainQueue& queue, TranscriptionRequest request) {
    return {queue, "com.tavaro.job.transcription",
            [request = std::move(request)](JobReporter<TranscriptionProgress>& reporter) {
                return transcribe(request, reporter);
            }};
}

void keepTranscript(DemoProject& project, Transcript const& transcript) { project.transcript = transcript; }

}
