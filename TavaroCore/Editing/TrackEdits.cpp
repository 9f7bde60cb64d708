#include <TavaroCore/Editing/TrackEdits.h>

#include <TavaroCore/Editing/Private/EditError.h>
#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace tavaro {

namespace {

template<class Change> void forTracksOf(DemoProject& project, AudioRole role, Change change) {
    bool isFound = false;
    for (auto& track : project.audioTracks) {
        if (track.role != role) continue;
        change(track);
        isFound = true;
    }
    if (isFound) return;
    throw EditError(EditError::Kind::noSuchTrack, "This project has no " + std::string(nameOf(role)) + " track.");
}

}

void setTrackMuted(DemoProject& project, AudioRole role, bool isMuted) {
    forTracksOf(project, role, [&](AudioTrack& track) { track.isMuted = isMuted; });
}

void setTrackGain(DemoProject& project, AudioRole role, double gain) {
    if (!std::isfinite(gain)) {
        throw EditError(EditError::Kind::badNumber, "The volume cannot be set: it has to be a number.");
    }
    forTracksOf(project, role, [&](AudioTrack& track) { track.gain = std::clamp(gain, 0.0, loudestGain); });
}

}
