#pragma once

#include <Tavaro/Model/Jobs/Job.h>

#include <TavaroCore/Privacy/FindingHash.h>
#include <TavaroCore/Privacy/Redaction.h>
#include <TavaroCore/Values/TimeRange.h>
#include <TavaroVision/Scanning/PrivacyScan.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tavaro {

class ProjectPackage;
struct DemoProject;

/// `scanMovie`, or what stands in for it.
using MovieScan = std::function<ScanOutcome(ScanRequest const&, std::function<void(ScanProgress const&)> const&,
                                            std::stop_token const&)>;

/// What of a project's recordings is looked at.
enum class ScanExtent {
    missing,    // what was not looked at with these settings
    everything, // all of it, once more
};

struct RecordingScan {
    std::string asset;
    std::filesystem::path movie;
    double duration = 0;           // seconds; 0 where the document does not tell
    std::vector<TimeRange> ranges; // of it, ascending and apart; empty: all
};

struct PrivacyScanRequest {
    std::vector<RecordingScan> recordings; // empty: nothing is missing
    RedactionSettings settings;
    ScanExtent extent = ScanExtent::missing;
    FindingKey key;
    double interval = ScanRequest{}.interval; // seconds after which what keeps changing is read again
    MovieScan scan = scanMovie;
};

/// The scan of all recordings that the film's clips show, each once, however they are cut. What was looked at before
/// with settings that find the same is left out; of a film that shows movies beside its recording these are looked at
/// each time. Makes the user's key of findings where there is none. Throws `VisionError` where the project has no
/// recording, and `FileError`.
PrivacyScanRequest privacyScanRequest(DemoProject const& project, ProjectPackage const& package,
                                      RedactionSettings const& settings, ScanExtent extent = ScanExtent::missing);

/// Whether two scans look for the same; how it is hidden does not matter.
bool looksForTheSame(RedactionSettings const& a, RedactionSettings const& b);

/// What of the recording was never looked at with settings that find the same, in its seconds. None without clips.
std::vector<TimeRange> unscannedRanges(DemoProject const& project, RedactionSettings const& settings);

struct ScannedRecording {
    std::string asset;
    ScanOutcome outcome;
};

struct MadePrivacyScan {
    std::vector<ScannedRecording> recordings;
    RedactionSettings settings;
    ScanExtent extent = ScanExtent::missing;
    FindingKey key;
    std::vector<std::string> warnings; // of patterns that cannot be used
    bool isStopped = false;
    std::optional<std::string> failure = {}; // why it stopped by itself, as a sentence
};

/// Looks at all of it beside the main queue. The document is not touched: who takes in what was found keeps it
/// (`keepPrivacyScan`). Cancelled, it ends with what was found until then. Fails with `VisionError` and `MediaError`.
Job<MadePrivacyScan, ScanProgress> privacyScanJob(MainQueue& queue, PrivacyScanRequest request);

}
