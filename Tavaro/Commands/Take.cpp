#include <Tavaro/Commands/Take.h>

#include <Tavaro/Commands/MadeProject.h>
#include <Tavaro/Model/Making/AddStreams.h>

#include <TavaroCapture/Recovery/RecoveryStore.h>
#include <TavaroCore/Direction/SmartDirector.h>
#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace tavaro {

namespace {

void warn(std::string const& sentence) { fmt::print(stderr, "{}\n", sentence); }

DemoProject projectOf(TakeMovie const& take, ProjectPackage const& package, DemoMode mode) {
    NewProject made{
        .movie = take.movie, .importMode = ImportMode::move, .metadata = take.metadata, .mode = mode, .remark = warn};
    addStreams(made, take.streams);
    try {
        return createProject(package, made);
    } catch (Error const& failure) {
        throw Error(fmt::format("{} The recording is kept; `tavaro recover last` brings it back.", failure.what()));
    }
}

/// What cannot be removed now goes with the next pruning of old takes.
void leaveWorkingFolder(TakeMovie const& take) {
    RecoveryStore::markComplete(take.movie.parent_path());
    try {
        RecoveryStore::removeWorkingDirectory(take.movie);
    } catch (Error const& failure) {
        fmt::print(stderr, "{}\n", failure.what());
    }
}

}

void saveTake(TakeMovie const& take, std::filesystem::path const& package, DemoMode mode, FirstEdit edit,
              TakeOutput output) {
    for (auto const& sentence : take.warnings) warn(sentence);
    ProjectPackage const target(package);
    auto project = projectOf(take, target, mode);
    leaveWorkingFolder(take);
    auto const& log = take.metadata;
    MadeProject made{.path = package.string(),
                     .duration = take.duration,
                     .sourceSize = project.sourceSize,
                     .clicks = static_cast<std::int64_t>(log.clicks.size()),
                     .keystrokes = static_cast<std::int64_t>(log.keystrokes.size()),
                     .droppedFrames = log.health.droppedFrames};
    if (edit == FirstEdit::polished) {
        made.report = SmartDirector(PolishOptions{}, mode).polish(project);
        target.save(project);
    }
    if (output == TakeOutput::json) {
        fmt::print("{}\n", encodeJSON(made));
        return;
    }
    fmt::print("{} of {}×{}: {}\n", Timecode::format(take.duration, Timecode::Fraction::hundredths),
               project.sourceSize.width, project.sourceSize.height, log.health.summary());
    if (made.report) fmt::print("{}\n", fmt::join(made.report->summaryLines(), "\n"));
    fmt::print("{}\n", made.path);
}

}
