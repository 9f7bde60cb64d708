#include <TavaroCore/Recording/CaptureHealth.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

constexpr double noticeableLoss = 0.005;

// In floating point, so that counters from a damaged document cannot overflow.
double lostFrames(CaptureHealth const& health) {
    return static_cast<double>(health.droppedFrames) + static_cast<double>(health.writerRejectedFrames);
}

double allFrames(CaptureHealth const& health) { return static_cast<double>(health.framesWritten) + lostFrames(health); }

bool lostNoticeably(CaptureHealth const& health) {
    return allFrames(health) >= 1 && health.lossRate() >= noticeableLoss;
}

}

double CaptureHealth::lossRate() const {
    double const all = allFrames(*this);
    return all < 1 ? 0 : lostFrames(*this) / all;
}

bool CaptureHealth::isClean() const {
    return !captureLost && interruptions == 0 && !lostNoticeably(*this) && !microphoneLost.value_or(false) &&
           !cameraLost.value_or(false);
}

std::optional<std::string> CaptureHealth::warning() const {
    if (captureLost) return "The capture stopped unexpectedly — the recording may be short.";
    if (microphoneLost.value_or(false)) return "The microphone was on but recorded nothing.";
    if (cameraLost.value_or(false)) return "The camera was on but recorded nothing.";
    if (interruptions >= 1) {
        return fmt::format("The capture was interrupted {} time{} and recovered.", interruptions,
                           interruptions == 1 ? "" : "s");
    }
    if (lostNoticeably(*this)) {
        return fmt::format("{:.0f} frames were dropped ({:.1f}%) — your Mac was busy.", lostFrames(*this),
                           lossRate() * 100);
    }
    return std::nullopt;
}

std::string CaptureHealth::summary() const {
    if (isClean()) return fmt::format("{} frames, none dropped", framesWritten);
    return warning().value_or(fmt::format("{} frames written", framesWritten));
}

}
