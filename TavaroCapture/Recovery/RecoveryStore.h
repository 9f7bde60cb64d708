#pragma once

#include <TavaroCapture/Segments/RecordingManifest.h>
#include <TavaroCapture/Segments/TakeStream.h>
#include <TavaroCore/Recording/RecordingMetadata.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

struct RecoveredTake {
    UUID recordingID;
    std::filesystem::path directory;
    std::filesystem::path movie;
    double duration = 0;
    std::vector<TakeStream> streams;   // beside the screen, as far as they can be read
    RecordingMetadata metadata;        // up to the last checkpoint
    std::vector<std::string> warnings; // sentences: what could not be brought back
};

struct PrunedRecordings {
    int removed = 0;                   // old takes
    std::vector<std::string> problems; // sentences: what could not be removed
};

/// The working folders of takes below one recordings folder: marks those in progress, and finds, brings back or
/// removes those that nobody finished. A running take holds a claim on its folder, in whichever process it runs; such
/// folders are never found, recovered or pruned.
class RecoveryStore {
public:
    /// A take that was never finished.
    struct Recoverable {
        UUID id;
        RecordingMarker marker;
        RecordingManifest manifest;
        std::vector<std::filesystem::path> mediaFiles; // segments of the screen, in order; the last may lack its end
        std::optional<RecordingMetadata> metadata;     // up to the last checkpoint, as far as it can be read
        std::vector<SegmentRecord> segments;           // one for each media file
        std::vector<StreamRecord> streams;             // beside the screen, with the segments on disk
        double estimatedDuration = 0;                  // seconds, of the screen, or where there is none of the rest
        std::vector<std::string> warnings;             // sentences: what of it cannot be read

        std::filesystem::path directory() const { return marker.directory; }
    };

    /// `folders::recordings()`.
    static std::filesystem::path defaultDirectory();
    static std::filesystem::path metadataCheckpointURL(std::filesystem::path const& directory);

    /// Writes the marker that says a take is being recorded into `directory`.
    static void markInProgress(std::filesystem::path const& directory, UUID const& recordingID,
                               std::string const& mode);
    /// Clears the marker: the take is safe elsewhere.
    static void markComplete(std::filesystem::path const& directory);

    /// Every unfinished, unclaimed take, the newest first. A folder with nothing readable in it, or with hardly any
    /// sound only, is left out.
    static std::vector<Recoverable> findRecoverable(std::filesystem::path const& recordings = defaultDirectory());
    /// Joins the segments of each stream into one file beside them. Where nothing of the screen can be read, its movie
    /// is a dark one as long as what was recorded beside it. The take stays among the recoverable ones until
    /// `markComplete` or `removeWorkingDirectory`. Throws `CaptureError` "segment join failed" with the reason.
    static RecoveredTake recover(Recoverable const& take);
    /// Removes the take's working folder.
    static void discard(Recoverable const& take);

    /// Removes the working folder that holds `file`, once a project has taken the file over. Refuses a folder that is
    /// no working folder of a take.
    static void removeWorkingDirectory(std::filesystem::path const& file);
    /// Removes unclaimed working folders whose take is older and either complete or one of which nothing can be read,
    /// and what interrupted removals left.
    static PrunedRecordings pruneOldRecordings(double olderThanSeconds = 14 * 86400.0,
                                               std::filesystem::path const& recordings = defaultDirectory());
};

}
