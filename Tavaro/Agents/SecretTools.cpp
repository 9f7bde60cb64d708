#include <Tavaro/Agents/Private/SecretTools.h>

#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Privacy/FindingListing.h>
#include <Tavaro/Model/Privacy/PrivacyPreferences.h>
#include <Tavaro/Model/Privacy/PrivacyScanJob.h>

#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroMCP/Protocol/MCPToolError.h>
#include <TavaroMCP/Protocol/ToolResult.h>

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace tavaro {

namespace {

/// Of what the film hides, and when it first does.
std::string hiddenSummary(std::vector<ListedFinding> const& findings) {
    std::vector<SensitiveKind> kinds;
    std::optional<double> first;
    for (auto const& each : findings) {
        if (each.isByHand || each.state == FindingState::rejected) continue;
        kinds.push_back(each.kind);
        if (!first && !each.shown.empty()) first = each.shown.front().start;
    }
    if (kinds.empty()) return "No secrets were found in the picture. Look at it all the same: a scan can miss some.";
    auto const when =
        first ? fmt::format(", from {} on", Timecode::format(*first, Timecode::Fraction::hundredths)) : "";
    return fmt::format("The film hides {}{}.", countedKinds(kinds), when);
}

JSONValue::Object hiddenResult(StepOutcome const& step, KeptScan const& kept,
                               std::vector<ListedFinding> const& findings) {
    return {{"changed", step.isChanged},
            {"duration", step.duration},
            {"found", kept.hidden + kept.rejected},
            {"rejected", kept.rejected},
            {"maskedKeystrokes", kept.maskedStrokes},
            {"findings", JSONValue::parse(encodeJSON(findings))}};
}

std::string notLookedAt(Error const& failure) {
    return fmt::format("It was not looked at for private text: {}", failure.what());
}

}

std::shared_ptr<SecretTools::ScanJob> SecretTools::begin(RunningCall& call, OpenProjects::Opened const& project) {
    auto const& document = project->document();
    auto const job = std::make_shared<ScanJob>(
        privacyScanJob(queue_, privacyScanRequest(document, project->package(), document.redactionSettings)));
    call.keep(job);
    call.whenAbandoned([&job = *job] { job.cancel(); });
    job->onProgress(call.later([](RunningCall& here, ScanProgress const& progress) {
        auto const share = progress.total > 0 ? progress.seconds / progress.total : 0;
        here.progress(std::min(share, 1.0),
                      fmt::format("{:.0f} s looked at, {} found.", progress.seconds, progress.found));
    }));
    return job;
}

void SecretTools::hide(RunningCall& call, OpenProjects::Opened const& project) {
    auto const job = begin(call, project);
    job->onFinished(call.later([this, project, &job = *job](RunningCall& here) {
        auto const made = std::make_shared<MadePrivacyScan const>(std::move(job.result()));
        locked_.perform(here, [=, this](RunningCall& later) { keep(later, project, *made); });
    }));
    job->start();
}

void SecretTools::keep(RunningCall& call, OpenProjects::Opened const& project, MadePrivacyScan const& made) {
    KeptScan kept;
    auto const step = commitFor(*project, call.client(), privacyScanStep,
                                [&](DemoProject& edited) { kept = keepPrivacyScan(edited, made); });
    if (made.isStopped)
        throw MCPToolError(MCPErrorCode::failed, "The scan was stopped. What it had found by then is hidden.");
    auto const findings = listedFindings(project->document());
    auto text = hiddenSummary(findings);
    for (auto const& warning : made.warnings) text += " " + warning;
    call.finish(toolResult::ok(text, hiddenResult(step, kept, findings)));
}

void SecretTools::hideInTake(RunningCall& call, UUID const& project, Told const& over) {
    if (!application_.preferences().get(newTakesScanned)) return over(call, "");
    application_.project(project,
                         call.later([this, over](RunningCall& here, Outcome<OpenProjects::Opened> const& opened) {
                             try {
                                 scanTake(here, opened.value(), over);
                             } catch (Error const& failure) {
                                 over(here, notLookedAt(failure));
                             }
                         }));
}

void SecretTools::scanTake(RunningCall& call, OpenProjects::Opened const& project, Told const& over) {
    auto const job = begin(call, project);
    job->onFinished(call.later([project, over, &job = *job](RunningCall& here) {
        std::string sentence;
        try {
            commitFor(*project, here.client(), privacyScanStep,
                      [&](DemoProject& edited) { keepPrivacyScan(edited, job.result()); });
            sentence = hiddenSummary(listedFindings(project->document()));
        } catch (Error const& failure) {
            sentence = notLookedAt(failure);
        }
        over(here, sentence);
    }));
    job->start();
}

}
