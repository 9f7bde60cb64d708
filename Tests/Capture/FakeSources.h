#pragma once

#include <TavaroCapture/Recorder/Private/TakeSources.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <vector>

namespace tavaro {

/// A scene that several sources capture at once: everything is black and silent until a moment of the media clock, and
/// from then on white and loud, or, where it blinks, white and black in turn. What they stamp is exact, however late
/// they are served.
struct FakeScene {
    double flashAt = 0;
    double blinkSeconds = std::numeric_limits<double>::infinity();

    bool isWhite(double moment) const;
};

/// When a source works, in moments of the media clock; at the end of it, it is lost. A microphone may come back.
struct FakeLife {
    double from = 0;
    double to = std::numeric_limits<double>::infinity();
    double back = std::numeric_limits<double>::infinity();
};

std::unique_ptr<ScreenSource> fakeScreen(FakeScene const& scene);
/// Nothing happens; the pointer stays where it is.
std::unique_ptr<EventSource> fakeEvents();
/// 30 pictures a second.
std::unique_ptr<CameraSource> fakeCamera(FakeScene const& scene, FakeLife const& life = {});
/// A tone of half of full scale, in blocks of about 20 ms.
std::unique_ptr<SoundSource> fakeMicrophone(FakeScene const& scene, FakeLife const& life = {});

/// Seconds of a movie, or of a sound, at which the flash is; below 0 where it is not in it.
double flashInMovie(std::filesystem::path const& movie);
/// All of them, and the blacks between.
std::vector<double> blinksInMovie(std::filesystem::path const& movie);
double flashInSound(std::filesystem::path const& sound);

}
