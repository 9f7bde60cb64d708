#include <Tavaro/Model/Voice/VoiceoverJob.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Speech/VoiceoverCaptions.h>
#include <TavaroVoice/Voiceover/Placement.h>
#include <TavaroVoice/Voiceover/SpokenPlan.h>
#include <TavaroVoice/Voiceover/StoredLine.h>

#include <stop_token>
#include <utility>

namespace tavaro {

namespace {

VoiceoverProgress progressOf(SpokenSoFar const& soFar) {
    return {static_cast<std::int64_t>(soFar.done), static_cast<std::int64_t>(soFar.failed),
            static_cast<std::int64_t>(soFar.total)};
}

GeneratedVoiceover generated(ProjectPackage const& package, VoiceoverRequest const& request,
                             JobReporter<VoiceoverProgress>& reporter) {
    std::stop_source stop;
    JobControl::CancelAction const cancel(reporter, [&] { stop.request_stop(); });
    auto const offered = request.service.offered();
    reporter.stopIfCancelled("The voiceover was cancelled.");
    auto const voice = voiceOf(request, offered);
    SpeakingTask const task{.lines = linesToSpeak(request.plan, voice, request.only),
                            .voice = voice,
                            .assets = package.assetsURL(),
                            .speakers = request.service.speakers};
    bool const isPaid = !isSystemVoice(voice.voiceID) && speakingCost(task.lines, voice, task.assets).lines > 0;
    if (isPaid && !offered.hasKey())
        throw VoiceError(VoiceError::Kind::noKey, "Add your ElevenLabs API key in Settings to generate voiceover.");
    if (!task.lines.empty()) package.createDirectories();
    reporter.progress({.total = static_cast<std::int64_t>(task.lines.size())});
    auto lines =
        speakLines(task, stop.get_token(), [&](SpokenSoFar const& soFar) { reporter.progress(progressOf(soFar)); });
    return {std::move(lines), request.plan.voice, voice};
}

void makeCaptions(DemoProject& project, ProjectPackage const& package) {
    auto const said = [&](std::string const& asset) {
        std::vector<CaptionWord> words;
        auto const line = storedLine(package.assetsURL(), ProjectPackage::confinedAssetName(asset));
        if (!line) return words;
        for (auto const& [text, start, end] : line->words) words.push_back({text, start, end});
        return words;
    };
    project.captions.cues = captionCuesFromVoiceover(project, said);
    project.captions.isEnabled = true;
}

}

VoiceSettings voiceOf(VoiceoverRequest const& request, OfferedVoices const& offered) {
    auto voice = chosenVoice(request.plan.voice, request.voice, offered);
    voice.speed = request.speed.value_or(voice.speed);
    return voice;
}

Job<GeneratedVoiceover, VoiceoverProgress> voiceoverJob(MainQueue& queue, ProjectPackage const& package,
                                                        VoiceoverRequest request) {
    return {queue, "com.tavaro.job.voiceover",
            [package, request = std::move(request)](JobReporter<VoiceoverProgress>& reporter) {
                return generated(package, request, reporter);
            }};
}

void takeIn(DemoProject& project, ProjectPackage const& package, GeneratedVoiceover const& generated,
            VoiceoverTaking const& taking) {
    auto const& lines = generated.lines;
    bool const isInVain = lines.spoken.empty() && !(lines.unspoken.empty() && lines.notBegun.empty());
    if (!project.voiceover || isInVain) return;
    auto& plan = *project.voiceover;
    // A voice that somebody chose meanwhile is the latest word; the lines in the other one are then to be said again.
    if (plan.voice == generated.before) plan.voice = generated.voice;
    if (taking.longLines != LongLines::asThePlanSays)
        plan.stretchesVideoToFit = taking.longLines == LongLines::holdTheFrame;
    takeIn(project, lines);
    placeVoiceover(project);
    if (taking.captions == VoiceoverCaptions::made) makeCaptions(project, package);
}

}
