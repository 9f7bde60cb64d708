#include <Tavaro/Model/Privacy/KeptScan.h>

#include <Tavaro/Model/Privacy/PrivacyScanJob.h>
#include <Tavaro/Model/Privacy/Private/FindingTracks.h>
#include <Tavaro/Model/Privacy/Private/ScrubbedLog.h>
#include <Tavaro/Model/Privacy/Private/SourceRanges.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>

#include <set>
#include <utility>

namespace tavaro {

namespace {

using Text = std::pair<SensitiveKind, std::string>;

std::set<Text> hiddenTexts(DemoProject const& project) {
    std::set<Text> texts;
    for (auto const& track : *project.redactions)
        if (isFinding(track) && track.isEnabled) texts.emplace(track.kind, track.textHash);
    return texts;
}

/// The recording's part of it: the log is its.
ScanOutcome const* outcomeOfRecording(DemoProject const& project, MadePrivacyScan const& made) {
    for (auto const& each : made.recordings)
        if (each.asset == recordingAsset(project)) return &each.outcome;
    return nullptr;
}

RedactionScanInfo scanInfo(DemoProject const& project, MadePrivacyScan const& made) {
    RedactionScanInfo info{.settings = made.settings};
    auto const& before = project.redactionScan;
    bool const goesOn =
        made.extent == ScanExtent::missing && before && looksForTheSame(before->settings, made.settings);
    if (goesOn) info.ranges = before->ranges;
    if (auto const* const outcome = outcomeOfRecording(project, made))
        info.ranges.insert(info.ranges.end(), outcome->ranges.begin(), outcome->ranges.end());
    info.ranges = joinedRanges(std::move(info.ranges));
    return info;
}

std::size_t scrub(DemoProject& project, MadePrivacyScan const& made, std::set<Text> const& hidden) {
    SecretsOfLog secrets{.key = made.key};
    for (auto const& text : hidden) secrets.hashes.insert(text.second);
    if (auto const* const outcome = outcomeOfRecording(project, made))
        for (auto const& finding : outcome->findings)
            if (finding.typed && hidden.contains({finding.kind, finding.textHash}))
                secrets.typed.push_back(*finding.typed);
    return scrubLog(project.metadata, secrets);
}

}

bool isFinding(RedactionTrack const& track) { return !track.textHash.empty(); }

FindingState stateOf(RedactionTrack const& finding) {
    if (!finding.isEnabled) return FindingState::rejected;
    return finding.isAutomatic ? FindingState::hidden : FindingState::accepted;
}

KeptScan keepPrivacyScan(DemoProject& project, MadePrivacyScan const& made) {
    project.redactionSettings = made.settings;
    if (made.recordings.empty()) return {};
    auto const style = made.settings.prefersBlur ? RedactionStyle::blur : RedactionStyle::mask;
    auto tracks = *project.redactions;
    for (auto const& each : made.recordings)
        tracks = withFindings(
            tracks, {.asset = each.asset, .outcome = each.outcome, .style = style, .kinds = made.settings.kinds});
    if (tracks != *project.redactions) project.redactions.edit() = std::move(tracks);
    auto const hidden = hiddenTexts(project);
    KeptScan kept;
    for (auto const& each : made.recordings)
        for (auto const& finding : each.outcome.findings)
            ++(hidden.contains({finding.kind, finding.textHash}) ? kept.hidden : kept.rejected);
    kept.maskedStrokes = scrub(project, made, hidden);
    project.redactionScan = scanInfo(project, made);
    return kept;
}

}
