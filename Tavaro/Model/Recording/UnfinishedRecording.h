#pragma once

#include <Tavaro/Model/Jobs/Job.h>
#include <Tavaro/Model/Making/TakeProject.h>

#include <TavaroCapture/Recovery/RecoveryStore.h>
#include <TavaroCore/Records/Date.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>

#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// A recording that nobody finished, as it is listed.
struct UnfinishedRecording {
    UUID id;
    Date startedAt;
    double estimatedDuration = 0; // seconds
    std::string mode;

    static constexpr auto fields = std::tuple{
        field("id", &UnfinishedRecording::id),
        field("startedAt", &UnfinishedRecording::startedAt),
        field("estimatedDuration", &UnfinishedRecording::estimatedDuration),
        field("mode", &UnfinishedRecording::mode),
    };
    bool operator==(UnfinishedRecording const&) const = default;
};
static_assert(listsEveryField<UnfinishedRecording>);

UnfinishedRecording listed(RecoveryStore::Recoverable const& take);

/// The newest first.
std::vector<UnfinishedRecording> unfinishedRecordings();

/// What to offer somebody who starts to work, as sentences; none where nothing is unfinished.
std::optional<std::string> unfinishedOffer();

/// The one of that id, or the newest for “last”. Throws `CaptureError` where there is none.
RecoveryStore::Recoverable unfinishedRecording(std::string const& id);

/// Brings the recording back as a project. A failure leaves it where it is.
Job<MadeTake> recoveryJob(MainQueue& queue, RecoveryStore::Recoverable take, TakeProject project);

}
