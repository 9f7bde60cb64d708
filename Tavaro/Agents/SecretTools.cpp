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
#include <exception>
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

std::string notLookedAt(std::exception_ptr const& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (Error const& error) {
        return notLookedAt(error);
    }
}

/// Empty where nobody wants it to be looked at.
std::string takeSummary(OpenProject const& take) {
    auto const& document = take.document();
    if (DueScan::isDue(take.package(), document)) return "It is being looked at for private text.";
    return document.redactionScan ? hiddenSummary(listedFindings(document)) : "";
}

void tell(RunningCall& call, ScanProgress const& progress) {
    auto const share = progress.total > 0 ? progress.seconds / progress.total : 0;
    call.progress(std::min(share, 1.0), fmt::format("{:.0f} s looked at, {} found.", progress.seconds, progress.found));
}

}

std::shared_ptr<SecretTools::ScanJob> SecretTools::begin(RunningCall& call, OpenProjects::Opened const& project) {
    auto const& document = project->document();
    auto const& settings = document.redactionSettings;
    bool const isAnythingLeft = !document.redactionScan || !unscannedRanges(document, settings).empty();
    auto const extent = isAnythingLeft ? ScanExtent::missing : ScanExtent::everything;
    auto const job = std::make_shared<ScanJob>(
        privacyScanJob(queue_, privacyScanRequest(document, project->package(), settings, extent)));
    call.keep(job);
    call.whenAbandoned([&job = *job] { job.cancel(); });
    job->onProgress(call.later([](RunningCall& here, ScanProgress const& progress) { tell(here, progress); }));
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
    if (made.failure) throw MCPToolError(MCPErrorCode::failed, *made.failure + " What was found until then is hidden.");
    if (made.isStopped)
        throw MCPToolError(MCPErrorCode::failed, "The scan was stopped. What it had found by then is hidden.");
    auto const findings = listedFindings(project->document());
    auto text = hiddenSummary(findings);
    for (auto const& warning : made.warnings) text += " " + warning;
    call.finish(toolResult::ok(text, hiddenResult(step, kept, findings)));
}

void SecretTools::tellOfTake(RunningCall& call, UUID const& project, Told const& over) {
    if (!application_.preferences().get(newTakesScanned)) return over(call, "");
    application_.project(project,
                         call.later([this, over](RunningCall& here, Outcome<OpenProjects::Opened> const& opened) {
                             try {
                                 awaitScan(here, opened.value(), over);
                             } catch (Error const& failure) {
                                 over(here, notLookedAt(failure));
                             }
                         }));
}

void SecretTools::awaitScan(RunningCall& call, OpenProjects::Opened const& project, Told const& over) {
    auto& scans = application_.newTakes();
    auto const package = project->package().url();
    if (!scans.isExpected(package)) return over(call, takeSummary(*project));
    auto const progress = call.later([package](RunningCall& here, NewTakeScans::Progress const& progress) {
        if (progress.package == package) tell(here, progress.scan);
    });
    call.keep(std::make_shared<NewTakeScans::Observation>(scans.observe(progress)));
    scans.whenOver(package, call.later([project, over](RunningCall& here, std::exception_ptr const& failure) {
        over(here, failure ? notLookedAt(failure) : takeSummary(*project));
    }));
}

}
