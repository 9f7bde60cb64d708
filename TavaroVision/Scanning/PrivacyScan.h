#pragma once

#include <TavaroCore/Privacy/FindingHash.h>
#include <TavaroCore/Privacy/Redaction.h>
#include <TavaroCore/Values/TimeRange.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tavaro {

/// Something private that a recording shows, from the first frame that shows any of it to the end of the last. All
/// times are seconds of the recording.
struct ScreenFinding {
    SensitiveKind kind = SensitiveKind::custom;
    std::string label;    // shown instead of the value
    std::string masked;   // its first character, and how long it is
    std::string textHash; // `findingHash` of the whole value
    double start = 0;
    double end = 0;
    std::vector<RedactionKeyframe> keyframes; // where it is, padded; ascending, one at least
    std::optional<TimeRange> typed;           // when it grew letter by letter

    bool operator==(ScreenFinding const&) const = default;
};

struct ScanRequest {
    std::filesystem::path movie;
    RedactionSettings settings;
    std::vector<TimeRange> ranges; // what of the recording is looked at; ascending, apart; empty: all of it
    FindingKey key;
    double interval = 0.25; // seconds after which what keeps changing is read again
};

struct ScanProgress {
    double seconds = 0; // of the recording that were looked at
    double total = 0;
    std::size_t found = 0;
};

struct ScanOutcome {
    std::vector<ScreenFinding> findings;
    std::vector<TimeRange> ranges;     // what was looked at; less than was asked for where it was stopped
    std::vector<std::string> warnings; // of patterns that cannot be used, and lines that cannot be read
    bool isStopped = false;
    std::optional<std::string> failure = {}; // why it stopped by itself in the middle, as a sentence
};

/// Reads the frames of a recording as they change, and tells what of their text is private. Runs until it is done, on
/// the caller's thread and a reader's process a core; `told` is called there, about ten times a second. What was found
/// until it is stopped, or until nothing can be read any more, is part of the outcome. Throws `VisionError` where
/// nothing can be read at all, and `MediaError`.
ScanOutcome scanMovie(ScanRequest const& request, std::function<void(ScanProgress const&)> const& told,
                      std::stop_token const& stop);

}
