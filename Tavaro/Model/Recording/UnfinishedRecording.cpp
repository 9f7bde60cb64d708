#include <Tavaro/Model/Recording/UnfinishedRecording.h>

#include <Tavaro/Model/Project/PackagePath.h>
#include <Tavaro/Model/Recording/TakeNames.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Values/Timecode.h>

#include <fmt/format.h>

#include <algorithm>

namespace tavaro {

namespace {

using Recoverable = RecoveryStore::Recoverable;

MadeTake recover(Recoverable const& take, TakeProject project, JobControl& control) {
    constexpr char const* cancelled = "The recovery was cancelled. The recording is kept.";
    if (project.package.empty())
        project.package = unsavedPackagePath(recoveredName(take.marker.startedAt.milliseconds / 1000));
    expectPlaceFor(project.package);
    control.stopIfCancelled(cancelled);
    auto const recovered = RecoveryStore::recover(take);
    control.stopIfCancelled(cancelled);
    return makeTakeProject(
        {recovered.movie, recovered.metadata, recovered.duration, recovered.streams, recovered.warnings}, project,
        [&](std::string const& sentence) { control.remark(sentence); });
}

}

UnfinishedRecording listed(Recoverable const& take) {
    return {take.id, take.marker.startedAt, take.estimatedDuration, take.marker.mode};
}

std::vector<UnfinishedRecording> unfinishedRecordings() {
    std::vector<UnfinishedRecording> recordings;
    for (auto const& take : RecoveryStore::findRecoverable()) recordings.push_back(listed(take));
    return recordings;
}

std::optional<std::string> unfinishedOffer() {
    auto const found = unfinishedRecordings();
    if (found.empty()) return std::nullopt;
    if (found.size() > 1)
        return fmt::format("We found {} unfinished recordings. `tavaro recover` lists them.", found.size());
    auto const& one = found.front();
    return fmt::format("We found an unfinished recording of {}, {} long. `tavaro recover last` brings it back, `tavaro "
                       "recover last --discard` removes it.",
                       one.startedAt.text(), Timecode::format(one.estimatedDuration));
}

Recoverable unfinishedRecording(std::string const& id) {
    auto takes = RecoveryStore::findRecoverable();
    auto const found = std::find_if(takes.begin(), takes.end(),
                                    [&](Recoverable const& take) { return id == "last" || take.id.text() == id; });
    if (found == takes.end()) {
        throw CaptureError(CaptureError::Kind::recoveryFailed,
                           fmt::format("There is no unfinished recording “{}”.", id));
    }
    return std::move(*found);
}

Job<MadeTake> recoveryJob(MainQueue& queue, Recoverable take, TakeProject project) {
    return {queue, "com.tavaro.job.recover",
            [take = std::move(take), project = std::move(project)](JobReporter<NoProgress>& reporter) {
                return recover(take, project, reporter);
            }};
}

}
