#pragma once

namespace tavaro {

struct DemoProject;
enum class AudioRole;

/// Which tracks an edit of the picture reaches.
enum class AudioReach {
    all,
    recorded, // what was taken down together with the picture: microphone, system, camera
};

bool isRecorded(AudioRole role);

/// Splits the audio clips that play across `at` in two, with hard ends there; the second part has an id of its own.
/// A part of 0.001 s or less is not made.
void splitAudio(DemoProject& project, double at, AudioReach reach);

}
