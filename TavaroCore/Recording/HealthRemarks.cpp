#include <TavaroCore/Recording/HealthRemarks.h>

#include <TavaroCore/Values/Timecode.h>

#include <algorithm>
#include <fmt/format.h>

namespace tavaro {

namespace {

std::string lostSpots(std::vector<double> const& spots) {
    constexpr std::size_t mostNamed = 5;
    std::string result = "It was interrupted at ";
    std::size_t const named = std::min(spots.size(), mostNamed);
    for (std::size_t i = 0; i < named; ++i) {
        bool const isLast = i + 1 == spots.size();
        result += fmt::format("{}{}", i == 0 ? "" : isLast ? " and " : ", ", Timecode::format(spots[i]));
    }
    if (spots.size() > named) result += fmt::format(" and at {} more places", spots.size() - named);
    return result + ".";
}

/// In the order in which `warning` looks at them.
void forgetGravest(CaptureHealth& health) {
    if (health.captureLost)
        health.captureLost = false;
    else if (health.microphoneLost.value_or(false))
        health.microphoneLost.reset();
    else if (health.cameraLost.value_or(false))
        health.cameraLost.reset();
    else if (health.interruptions > 0)
        health.interruptions = 0;
    else
        health.droppedFrames = health.writerRejectedFrames = 0;
}

}

std::vector<std::string> healthRemarks(CaptureHealth const& health) {
    std::vector<std::string> result;
    auto rest = health;
    forgetGravest(rest);
    for (auto sentence = rest.warning(); sentence; sentence = rest.warning()) {
        result.push_back(*sentence);
        forgetGravest(rest);
    }
    if (health.memoryPressureEvents > 0)
        result.push_back(fmt::format("The machine ran short of memory {} time{} during the take.",
                                     health.memoryPressureEvents, health.memoryPressureEvents == 1 ? "" : "s"));
    if (!health.interruptedAt.empty()) result.push_back(lostSpots(health.interruptedAt));
    return result;
}

}
