#pragma once

#include <TavaroCapture/CameraSync/Private/Claps.h>
#include <TavaroCapture/CameraSync/Private/MotionMeter.h>
#include <TavaroCapture/Sources/Private/FrameSource.h>
#include <TavaroCapture/Sources/Private/SoundSource.h>

#include <mutex>
#include <vector>

namespace tavaro {

/// A camera and a microphone that watch somebody clap. `start` and `stop` belong to one thread. The sources outlive it.
class ClapSession {
public:
    ClapSession(CameraSource& camera, SoundSource& microphone) : camera_(camera), microphone_(microphone) {}
    ~ClapSession() { stop(); }
    ClapSession(ClapSession const&) = delete;
    ClapSession& operator=(ClapSession const&) = delete;

    void start();
    void stop();
    /// After `stop`.
    ClapMatch match() const;

private:
    void hear(SoundBlock const& block);

    CameraSource& camera_;
    SoundSource& microphone_;
    double start_ = 0; // moment of the media clock
    std::mutex mutable lock_;
    MotionMeter motion_;              // guarded by lock_, as the next
    std::vector<StereoSample> sound_; // since the start; silent where nothing came
};

}
