#pragma once

#include <Tavaro/Model/Privacy/PrivacyScanJob.h>

#include <TavaroVision/Errors/VisionError.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace tavaro {

inline ScreenFinding finding(SensitiveKind kind, std::string const& masked, double start, double end) {
    return {.kind = kind,
            .label = "label",
            .masked = masked,
            .textHash = "hash of " + masked,
            .start = start,
            .end = end,
            .keyframes = {{start, {0.2, 0.3, 0.1, 0.05}}}};
}

/// A track of a finding, as a scan leaves it.
inline RedactionTrack found(SensitiveKind kind, std::string const& masked, double start, double end,
                            bool isHidden = true) {
    return {.kind = kind,
            .label = masked,
            .textHash = "hash of " + masked,
            .start = start,
            .end = end,
            .keyframes = {{start, {0.2, 0.3, 0.1, 0.05}}},
            .isEnabled = isHidden,
            .isAutomatic = true};
}

/// Finds what a test says, once it lets it; until then it has looked at 12 seconds.
class FakeScan {
public:
    MovieScan scan() {
        return [this](ScanRequest const& request, std::function<void(ScanProgress const&)> const& told,
                      std::stop_token const& stop) { return run(request, told, stop); };
    }
    void go() { mayGo_ = true; }

    std::vector<ScreenFinding> findings;
    std::optional<std::string> failure;
    std::vector<std::vector<TimeRange>> asked; // by each run; after it ended

private:
    static constexpr double looked = 12;

    ScanOutcome run(ScanRequest const& request, std::function<void(ScanProgress const&)> const& told,
                    std::stop_token const& stop) {
        if (failure) throw VisionError(VisionError::Kind::noReader, *failure);
        asked.push_back(request.ranges);
        told({looked, 60, 1});
        while (!mayGo_ && !stop.stop_requested()) std::this_thread::sleep_for(std::chrono::milliseconds(2));
        if (!stop.stop_requested())
            return {findings, request.ranges.empty() ? std::vector<TimeRange>{{0, 60}} : request.ranges, {}, false};
        ScanOutcome early{{}, {{0, looked}}, {}, true};
        for (auto const& each : findings)
            if (each.end <= looked) early.findings.push_back(each);
        return early;
    }

    std::atomic<bool> mayGo_ = false;
};

}
