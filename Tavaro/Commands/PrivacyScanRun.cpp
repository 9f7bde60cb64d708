#include <Tavaro/Commands/PrivacyScanRun.h>

#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Privacy/DueScan.h>
#include <Tavaro/Model/Privacy/FindingListing.h>
#include <Tavaro/Model/Privacy/PrivacyPreferences.h>
#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Model/Project/StoredProject.h>
#include <Tavaro/Model/Thumbnails/Thumbnail.h>

#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroPlatform/Preferences/Preferences.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cerrno>
#include <unistd.h>
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

/// Before the scan, which may take long.
void expectWritable(ProjectPackage const& package) {
    if (::access(package.url().c_str(), W_OK | X_OK) != 0) throw FileError::writing(package.projectFileURL(), errno);
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
    expectWritable(stored.package);
    auto request = privacyScanRequest(stored.project, stored.package, settings, extent);
    HiddenText hidden{.isNothingNew = request.recordings.empty()};
    hidden.made = runScan(std::move(request), "Looking for private text", output);
    OpenProject open(package, LockHolding::whileOpen);
    open.commit(privacyScanStep, [&](DemoProject& project) { hidden.kept = keepPrivacyScan(project, hidden.made); });
    if (!hidden.made.isStopped) DueScan::forget(open.package());
    if (!hidden.isNothingNew) writeThumbnail(open.package(), open.document());
    return hidden;
}

void printHidden(HiddenText const& hidden) {
    auto const kinds = kindsOf(hidden.made);
    auto const& kept = hidden.kept;
    for (auto const& warning : hidden.made.warnings) terminal::tell("{}\n", warning);
    if (auto const& sought = hidden.made.settings.kinds; sought != RedactionSettings{}.kinds) {
        std::vector<std::string_view> names;
        for (auto const kind : sought) names.push_back(nameOf(kind));
        terminal::say("Looked for these kinds only, as the project is set: {}.\n",
                      names.empty() ? "none" : fmt::to_string(fmt::join(names, ", ")));
    }
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

bool isScanWanted(bool isAskedFor) { return isAskedFor || Preferences().get(newTakesScanned); }

bool hideInNewTake(std::filesystem::path const& path, TakeOutput wanted) {
    auto const output = wanted == TakeOutput::json ? ProgressLine::Output::silent : ProgressLine::Output::automatic;
    try {
        auto const [package, project] = openProject(path);
        if (!DueScan::isDue(package, project)) return true;
        auto const due = DueScan::claim(package, project);
        if (!due) {
            terminal::tell("The Tavaro that is running looks at the take for private text.\n");
            return true;
        }
        auto const hidden = hidePrivateText(path, ScanExtent::missing, output);
        if (output != ProgressLine::Output::silent) printHidden(hidden);
        if (hidden.made.failure) terminal::tell("{}\n", *hidden.made.failure);
        if (hidden.made.isStopped)
            terminal::tell("The rest of the take was not looked at yet; `tavaro scan` goes on with it.\n");
        return !hidden.made.isStopped;
    } catch (Error const& error) {
        terminal::tell("The take is saved, but it was not looked at for private text: {}\n", error.what());
        return false;
    }
}

void tellIfScanIsDue(ProjectPackage const& package, DemoProject const& project) {
    if (DueScan::isDue(package, project))
        terminal::tell(
            "This take was to be looked at for private text, and was not yet as a whole: tavaro scan \"{}\"\n",
            package.url().string());
}

}
