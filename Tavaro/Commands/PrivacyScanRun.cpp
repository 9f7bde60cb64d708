#include <Tavaro/Commands/PrivacyScanRun.h>

#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Privacy/FindingListing.h>
#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Values/Timecode.h>

#include <fmt/format.h>

#include <utility>
#include <vector>

namespace tavaro::commands {

namespace {

std::string stateOf(ScanProgress const& progress) {
    auto const seen = Timecode::format(progress.seconds);
    auto const all = progress.total > 0 ? fmt::format("{} of {}", seen, Timecode::format(progress.total)) : seen;
    return fmt::format("{}, {} found", all, progress.found);
}

std::vector<SensitiveKind> kindsOf(MadePrivacyScan const& made) {
    std::vector<SensitiveKind> kinds;
    for (auto const& movie : made.recordings)
        for (auto const& finding : movie.outcome.findings) kinds.push_back(finding.kind);
    return kinds;
}

}

MadePrivacyScan runScan(PrivacyScanRequest request, std::string const& title, ProgressLine::Output output) {
    MainQueue queue;
    auto job = privacyScanJob(queue, std::move(request));
    Interruption const interruption;
    ProgressLine line(title, output);
    job.onProgress([&](ScanProgress const& progress) { line.text(stateOf(progress)); });
    job.start();
    queue.runUntil([&] {
        if (interruption.isRequested()) job.cancel();
        return job.isFinished();
    });
    return std::move(job.result());
}

HiddenText hidePrivateText(std::filesystem::path const& package, ScanExtent extent, ProgressLine::Output output,
                           std::function<void(RedactionSettings&)> const& change) {
    auto const stored = openProject(package);
    auto settings = stored.project.redactionSettings;
    if (change) change(settings);
    auto request = privacyScanRequest(stored.project, stored.package, settings, extent);
    HiddenText hidden{.isNothingNew = request.recordings.empty()};
    hidden.made = runScan(std::move(request), "Looking for private text", output);
    OpenProject open(package, LockHolding::whileOpen);
    open.commit(privacyScanStep, [&](DemoProject& project) { hidden.kept = keepPrivacyScan(project, hidden.made); });
    return hidden;
}

void printHidden(HiddenText const& hidden) {
    auto const kinds = kindsOf(hidden.made);
    auto const& kept = hidden.kept;
    for (auto const& warning : hidden.made.warnings) terminal::tell("{}\n", warning);
    if (hidden.isNothingNew)
        terminal::say("All of it was looked at before; --again looks once more.\n");
    else if (kinds.empty())
        terminal::say("Nothing private was found. A scan does not find everything: look at the film yourself.\n");
    else
        terminal::say("Found {}: {} hidden, {} rejected before.\n", countedKinds(kinds), kept.hidden, kept.rejected);
    if (kept.maskedStrokes > 0)
        terminal::say("{} that typed it {} taken out of the log, for good.\n", counted(kept.maskedStrokes, "letter"),
                      kept.maskedStrokes == 1 ? "was" : "were");
}

bool hideInNewTake(std::filesystem::path const& package, ProgressLine::Output output) {
    try {
        auto const hidden = hidePrivateText(package, ScanExtent::missing, output);
        if (output != ProgressLine::Output::silent) printHidden(hidden);
        if (hidden.made.isStopped)
            terminal::tell("The rest of the take was not looked at; `tavaro scan` goes on with it.\n");
        return !hidden.made.isStopped;
    } catch (Error const& error) {
        terminal::tell("The take is saved, but it was not looked at for private text: {}\n", error.what());
        return false;
    }
}

}
