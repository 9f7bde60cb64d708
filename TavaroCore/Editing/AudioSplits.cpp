#include <TavaroCore/Editing/AudioSplits.h>

#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Timeline/Private/TimelineMath.h>

#include <algorithm>

namespace tavaro {

namespace {

bool spans(AudioClip const& clip, double at) {
    return at - clip.start > TimelineMath::shortestPiece && clip.range().end() - at > TimelineMath::shortestPiece;
}

AudioClip splitOff(AudioClip& head, double at) {
    double const offset = at - head.start;
    auto tail = head;
    tail.id = UUID::random();
    tail.start = at;
    tail.sourceStart += offset * tail.speed;
    tail.duration -= offset;
    tail.fadeIn = 0;
    tail.fadeOut = std::min(tail.fadeOut, tail.duration);
    head.duration = offset;
    head.fadeOut = 0;
    head.fadeIn = std::min(head.fadeIn, head.duration);
    return tail;
}

}

bool isRecorded(AudioRole role) {
    return role == AudioRole::microphone || role == AudioRole::system || role == AudioRole::camera;
}

void splitAudio(DemoProject& project, double at, AudioReach reach) {
    for (auto& track : project.audioTracks) {
        if (reach == AudioReach::recorded && !isRecorded(track.role)) continue;
        for (std::size_t i = 0; i < track.clips.size(); ++i) {
            if (!spans(track.clips[i], at)) continue;
            auto tail = splitOff(track.clips[i], at);
            track.clips.insert(track.clips.begin() + static_cast<std::ptrdiff_t>(++i), std::move(tail));
        }
    }
}

}
