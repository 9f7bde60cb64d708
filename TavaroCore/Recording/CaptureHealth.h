#pragma once

#include <TavaroCore/Records/Fields.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// Counters of one capture, and what to tell the person who recorded.
struct CaptureHealth {
    std::int64_t framesWritten = 0;
    std::int64_t droppedFrames = 0;
    std::int64_t writerRejectedFrames = 0;
    std::int64_t repeatedFrames = 0; // repeated to keep the frame rate
    std::int64_t interruptions = 0;  // times the capture stopped and was restarted
    std::vector<double> interruptedAt;
    std::int64_t memoryPressureEvents = 0;
    bool captureLost = false;
    std::optional<bool> keyboardCaptured;
    std::optional<bool> microphoneLost; // enabled, but delivered no audio
    std::optional<bool> cameraLost;     // enabled, but delivered no frames

    /// Share of the frames that never reached the file, 0…1.
    double lossRate() const;
    bool isClean() const;
    /// The first thing that went wrong, as a sentence; none when nothing did.
    std::optional<std::string> warning() const;
    std::string summary() const;

    static constexpr auto fields = std::tuple{
        field("framesWritten", &CaptureHealth::framesWritten),
        field("droppedFrames", &CaptureHealth::droppedFrames),
        field("writerRejectedFrames", &CaptureHealth::writerRejectedFrames),
        field("repeatedFrames", &CaptureHealth::repeatedFrames),
        field("interruptions", &CaptureHealth::interruptions),
        field("interruptedAt", &CaptureHealth::interruptedAt),
        field("memoryPressureEvents", &CaptureHealth::memoryPressureEvents),
        field("captureLost", &CaptureHealth::captureLost),
        field("keyboardCaptured", &CaptureHealth::keyboardCaptured),
        field("microphoneLost", &CaptureHealth::microphoneLost),
        field("cameraLost", &CaptureHealth::cameraLost),
    };
    bool operator==(CaptureHealth const&) const = default;
};
static_assert(listsEveryField<CaptureHealth>);

}
