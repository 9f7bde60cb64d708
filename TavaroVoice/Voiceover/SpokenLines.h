#pragma once

#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Voice/VoiceoverPlan.h>
#include <TavaroVoice/Errors/VoiceError.h>
#include <TavaroVoice/Speaking/Speaker.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tavaro {

/// Makes who speaks; called on each thread that needs one, so it may be called by several at once.
using SpeakerSource = std::function<std::unique_ptr<Speaker>()>;

struct LineToSpeak {
    UUID id; // of the segment
    std::string text;
};

struct SpokenLine {
    UUID id;
    std::string text;
    std::string asset;
    double duration = 0; // seconds
};

struct UnspokenLine {
    UUID id;
    std::string text;
    VoiceError::Kind kind = VoiceError::Kind::failed;
    std::string sentence; // why
};

/// What came of lines that were to be spoken, each in the order given.
struct SpokenLines {
    std::vector<SpokenLine> spoken;
    std::vector<UnspokenLine> unspoken;
    std::vector<UUID> notBegun;         // after a stop
    std::size_t newlySpoken = 0;        // of the sounds that the spoken lines have; the others were there already
    std::optional<std::string> stopped; // why the rest was not begun
    bool isCancelled = false;
};

struct SpokenSoFar {
    std::size_t done = 0; // lines, with those that failed
    std::size_t failed = 0;
    std::size_t total = 0;
};

struct SpeakingTask {
    std::vector<LineToSpeak> lines;
    VoiceSettings voice;
    std::filesystem::path assets; // the package's folder of them; it is there
    SpeakerSource speakers;
};

/// Says lines, several at once: four with a service, one a core on this machine. Each sound is in the package as soon
/// as it came, complete or not at all, so neither a cancel nor a crash loses one; a line whose sound is there is not
/// said again, nor is one that is there twice. A stop begins no other line; those that a service was asked for already
/// still come, as they may be paid for, which takes seconds. A failure stays with its line and the others go on; what
/// would befall every line (no key, no quota, a full disk, no such voice, a service that fails again and again) stops
/// those that have not begun. `progress` is called from several threads, one at a time.
SpokenLines speakLines(SpeakingTask const& task, std::stop_token const& stop,
                       std::function<void(SpokenSoFar const&)> const& progress = {});

}
