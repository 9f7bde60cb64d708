#include <Tavaro/Model/Voice/VoiceoverListing.h>

#include <Tavaro/Model/Voice/VoiceoverJob.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroVoice/Voiceover/LineAudio.h>
#include <TavaroVoice/Voiceover/SpokenPlan.h>

#include <map>

namespace tavaro {

namespace {

ListedLine listed(VoiceoverSegment const& segment, std::size_t index, VoiceSettings const& voice) {
    return {.number = static_cast<std::int64_t>(index + 1),
            .text = segment.text,
            .start = segment.start,
            .end = segment.end(),
            .anchor = segment.anchor,
            .isSpoken = segment.audioAsset && !needsGeneration(segment, voice)};
}

}

VoiceoverListing listingOf(DemoProject const& project, GeneratedVoiceover const& generated) {
    auto const& lines = generated.lines;
    VoiceoverListing listing{.voice = generated.voice.voiceID,
                             .voiceName = generated.voice.voiceName,
                             .spoken = static_cast<std::int64_t>(lines.spoken.size()),
                             .newlySpoken = static_cast<std::int64_t>(lines.newlySpoken),
                             .unspoken = static_cast<std::int64_t>(lines.unspoken.size() + lines.notBegun.size()),
                             .stopped = lines.stopped,
                             .isCancelled = lines.isCancelled,
                             .duration = project.duration()};
    listing.asked = listing.spoken + listing.unspoken;
    if (!project.voiceover) return listing;
    std::map<UUID, std::string> failures;
    for (auto const& line : lines.unspoken) failures.emplace(line.id, line.sentence);
    auto const& plan = *project.voiceover;
    for (std::size_t i = 0; i < plan.segments.size(); ++i) {
        auto& line = listing.lines.emplace_back(listed(plan.segments[i], i, plan.voice));
        auto const failure = failures.find(plan.segments[i].id);
        if (failure != failures.end()) line.failure = failure->second;
    }
    return listing;
}

VoiceoverCost voiceoverCost(ProjectPackage const& package, VoiceoverRequest const& request) {
    auto const voice = voiceOf(request, request.service.offered());
    auto const cost = speakingCost(linesToSpeak(request.plan, voice, request.only), voice, package.assetsURL());
    return {.voice = voice.voiceID,
            .lines = static_cast<std::int64_t>(cost.lines),
            .characters = static_cast<std::int64_t>(cost.characters),
            .isPaid = !isSystemVoice(voice.voiceID)};
}

}
