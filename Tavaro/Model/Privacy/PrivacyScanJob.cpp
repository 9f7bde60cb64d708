#include <Tavaro/Model/Privacy/PrivacyScanJob.h>

#include <Tavaro/Model/Privacy/Private/SourceRanges.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Project/RecordingOfProject.h>
#include <TavaroPlatform/Folders/FindingKeyFile.h>
#include <TavaroVision/Errors/VisionError.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace {

constexpr double reading = 2; // seconds: text that is on both sides of a border is read whole
constexpr double overrun = 1; // seconds: what was looked at behind the recording's end was another recording

/// The recording first, then other movies by their places in the film.
std::vector<std::string> shownMovies(DemoProject const& project) {
    std::vector<std::string> movies{std::string(recordingAsset(project))};
    for (auto const& clip : project.timeline.clips)
        if (std::ranges::find(movies, clip.asset) == movies.end()) movies.push_back(clip.asset);
    return movies;
}

double lengthOf(DemoProject const& project, std::string const& asset) {
    auto const known = project.assetDurations.find(asset);
    return known == project.assetDurations.end() ? 0 : known->second;
}

std::vector<TimeRange> rangesToRead(std::vector<TimeRange> const& missing, double length) {
    std::vector<TimeRange> ranges;
    for (auto const& range : missing) {
        double const start = std::max(range.start - reading, 0.0);
        ranges.push_back({start, std::min(range.end() + reading, length) - start});
    }
    return joinedRanges(std::move(ranges));
}

/// The progress of all recordings as that of one.
class WholeProgress {
public:
    WholeProgress(PrivacyScanRequest const& request, JobReporter<ScanProgress>& reporter) : reporter_(reporter) {
        for (auto const& each : request.recordings) total_ += secondsOf(each);
    }
    void tell(ScanProgress const& progress) {
        reporter_.progress({.seconds = done_ + progress.seconds,
                            .total = std::max(total_, done_ + progress.total),
                            .found = found_ + progress.found});
    }
    void finish(RecordingScan const& recording, std::size_t found) {
        done_ += secondsOf(recording);
        found_ += found;
    }

private:
    static double secondsOf(RecordingScan const& recording) {
        double seconds = 0;
        for (auto const& range : recording.ranges) seconds += range.duration;
        return recording.ranges.empty() ? recording.duration : seconds;
    }

    JobReporter<ScanProgress>& reporter_;
    double total_ = 0;
    double done_ = 0;
    std::size_t found_ = 0;
};

void keepWarnings(MadePrivacyScan& made, std::vector<std::string> const& warnings) {
    for (auto const& warning : warnings)
        if (std::ranges::find(made.warnings, warning) == made.warnings.end()) made.warnings.push_back(warning);
}

MadePrivacyScan scanAll(PrivacyScanRequest const& request, JobReporter<ScanProgress>& reporter) {
    std::stop_source stop;
    JobControl::CancelAction const cancel(reporter, [&] { stop.request_stop(); });
    MadePrivacyScan made{.settings = request.settings, .extent = request.extent, .key = request.key};
    WholeProgress whole(request, reporter);
    for (auto const& each : request.recordings) {
        made.isStopped = made.isStopped || reporter.isCancelled();
        if (made.isStopped) break;
        ScanRequest const one{.movie = each.movie,
                              .settings = request.settings,
                              .ranges = each.ranges,
                              .key = request.key,
                              .interval = request.interval};
        auto outcome = request.scan(
            one, [&](ScanProgress const& progress) { whole.tell(progress); }, stop.get_token());
        whole.finish(each, outcome.findings.size());
        keepWarnings(made, outcome.warnings);
        made.isStopped = outcome.isStopped;
        made.failure = outcome.failure;
        made.recordings.push_back({each.asset, std::move(outcome)});
    }
    return made;
}

}

bool looksForTheSame(RedactionSettings const& a, RedactionSettings const& b) {
    return a.kinds == b.kinds && a.customWords == b.customWords && a.customPatterns == b.customPatterns;
}

std::vector<TimeRange> unscannedRanges(DemoProject const& project, RedactionSettings const& settings) {
    if (project.timeline.clips.empty()) return {};
    auto const length = recordedSeconds(project);
    std::vector<TimeRange> seen;
    if (project.redactionScan && looksForTheSame(project.redactionScan->settings, settings))
        seen = joinedRanges(project.redactionScan->ranges);
    bool const isOfAnother = !seen.empty() && seen.back().end() > length + overrun;
    return missingRanges(isOfAnother ? std::vector<TimeRange>{} : seen, length);
}

PrivacyScanRequest privacyScanRequest(DemoProject const& project, ProjectPackage const& package,
                                      RedactionSettings const& settings, ScanExtent extent) {
    if (project.timeline.clips.empty())
        throw VisionError(VisionError::Kind::failed, "This project has no recording to look at.");
    PrivacyScanRequest request{.settings = settings, .extent = extent, .key = ensureFindingKey()};
    auto const missing = unscannedRanges(project, settings);
    auto const length = recordedSeconds(project);
    bool const isFirst = extent == ScanExtent::everything || missing == std::vector{TimeRange{0, length}};
    for (auto const& asset : shownMovies(project)) {
        RecordingScan recording{asset, package.assetURL(asset), lengthOf(project, asset), {}};
        bool const isRecording = asset == recordingAsset(project);
        if (isRecording && !isFirst && missing.empty()) continue;
        if (isRecording && !isFirst) recording.ranges = rangesToRead(missing, length);
        request.recordings.push_back(std::move(recording));
    }
    return request;
}

Job<MadePrivacyScan, ScanProgress> privacyScanJob(MainQueue& queue, PrivacyScanRequest request) {
    return {queue, "com.tavaro.job.privacy-scan",
            [request = std::move(request)](JobReporter<ScanProgress>& reporter) { return scanAll(request, reporter); }};
}

}
