#include <TavaroVoice/Voiceover/SpokenPlan.h>

#include <TavaroCore/Captions/SpokenText.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroVoice/Voiceover/LineAudio.h>
#include <TavaroVoice/Voiceover/StoredLine.h>

#include <algorithm>
#include <map>
#include <set>

namespace tavaro {

namespace {

/// Volume and muting of the narration are those of a track, which may be without clips.
void ensureTrack(DemoProject& project) {
    bool const isThere = std::ranges::any_of(
        project.audioTracks, [](AudioTrack const& track) { return track.role == AudioRole::voiceover; });
    if (!isThere) project.audioTracks.push_back({.role = AudioRole::voiceover});
}

}

std::vector<LineToSpeak> linesToSpeak(VoiceoverPlan const& plan, VoiceSettings const& voice,
                                      std::vector<UUID> const& only) {
    std::vector<LineToSpeak> lines;
    for (auto const& segment : plan.segments) {
        bool const isAsked =
            only.empty() ? needsGeneration(segment, voice) : std::ranges::find(only, segment.id) != only.end();
        if (isAsked && hasWords(segment.text)) lines.push_back({segment.id, segment.text});
    }
    return lines;
}

SpeakingCost speakingCost(std::vector<LineToSpeak> const& lines, VoiceSettings const& voice,
                          std::filesystem::path const& assets) {
    SpeakingCost cost;
    std::set<std::string> counted;
    for (auto const& line : lines) {
        auto const asset = lineAsset(line.text, voice);
        if (!counted.insert(asset).second || storedLine(assets, asset)) continue;
        ++cost.lines;
        cost.characters += lengthOf(trimmed(line.text));
    }
    return cost;
}

void takeIn(DemoProject& project, SpokenLines const& lines) {
    if (!project.voiceover || lines.spoken.empty()) return;
    std::map<UUID, SpokenLine const*> spoken;
    for (auto const& line : lines.spoken) spoken.emplace(line.id, &line);
    for (auto& segment : project.voiceover->segments) {
        auto const line = spoken.find(segment.id);
        if (line == spoken.end() || line->second->text != segment.text) continue;
        segment.audioAsset = line->second->asset;
        segment.audioDuration = line->second->duration;
        segment.isDirty = false;
        project.assetDurations[line->second->asset] = line->second->duration;
    }
    ensureTrack(project);
}

}
