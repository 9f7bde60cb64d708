#include <Tavaro/Model/Making/TakeProject.h>

#include <Tavaro/Model/Making/AddStreams.h>
#include <Tavaro/Model/Making/Polish.h>
#include <Tavaro/Model/Privacy/DueScan.h>
#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Model/Thumbnails/Thumbnail.h>

#include <TavaroCapture/Recovery/RecoveryStore.h>
#include <TavaroCore/Direction/SmartDirector.h>
#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Recording/HealthRemarks.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

using Remark = std::function<void(std::string const&)>;

DemoProject projectOf(TakeMovie const& take, ProjectPackage const& package, TakeProject const& wanted,
                      Remark const& remark) {
    NewProject made{.movie = take.movie,
                    .importMode = ImportMode::move,
                    .metadata = take.metadata,
                    .mode = wanted.mode,
                    .isScanDue = wanted.isScanDue || DueScan::isNoted(take.movie.parent_path()),
                    .remark = remark};
    addStreams(made, take.streams);
    try {
        return createProject(package, made);
    } catch (Error const& failure) {
        throw Error(fmt::format("{} The recording is kept; `tavaro recover last` brings it back.", failure.what()));
    }
}

/// What cannot be removed now goes with the next pruning of old takes.
void leaveWorkingFolder(TakeMovie const& take, Remark const& remark) {
    RecoveryStore::markComplete(take.movie.parent_path());
    try {
        RecoveryStore::removeWorkingDirectory(take.movie);
    } catch (Error const& failure) {
        remark(failure.what());
    }
}

}

MadeTake makeTakeProject(TakeMovie const& take, TakeProject const& wanted,
                         std::function<void(std::string const&)> const& remark) {
    for (auto const& sentence : take.warnings) remark(sentence);
    ProjectPackage const target(wanted.package);
    auto project = projectOf(take, target, wanted, remark);
    leaveWorkingFolder(take, remark);
    auto const& log = take.metadata;
    MadeProject made{.path = wanted.package.string(),
                     .duration = take.duration,
                     .sourceSize = project.sourceSize,
                     .clicks = static_cast<std::int64_t>(log.clicks.size()),
                     .keystrokes = static_cast<std::int64_t>(log.keystrokes.size()),
                     .droppedFrames = log.health.droppedFrames};
    if (wanted.firstEdit == FirstEdit::polished) {
        OpenProject open(target.url(), LockHolding::whileOpen); // others see the project from its making on
        open.commit(polishStep, [&](DemoProject& edited) {
            made.report = SmartDirector(PolishOptions{}, wanted.mode).polish(edited);
        });
        project = open.document();
    }
    writeThumbnail(target, project);
    for (auto const& sentence : healthRemarks(log.health)) remark(sentence);
    return {project.id, made, log.health.summary()};
}

}
