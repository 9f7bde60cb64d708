#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroMedia/Frames/DevicePictures.h>
#include <TavaroMedia/Frames/PictureChanges.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tavaro {

/// Something that can be filmed. Its size never changes; both sides are even.
class FrameSource {
public:
    virtual ~FrameSource() = default;
    virtual Size2 size() const = 0;
};

/// A screen, a part of it or a window, without the pointer wherever it can be had so: it has a picture at any time, and
/// the take asks for it at the take's own rate. One thread.
class ScreenSource : public FrameSource {
public:
    /// What the picture shows, on the desktop, as of the last grab; a window may move.
    virtual PixelRect frame() const = 0;
    /// Pixels per point, from the resolution that the desktop's settings give its text.
    virtual double scaleFactor() const = 0;

    enum class Outcome {
        changed,
        unchanged,
        away, // not there now, but it may come back; its last picture stays
        lost,
    };
    /// Brings the picture up to date at the time `now` of the media clock.
    virtual Outcome grab(double now) = 0;
    /// Any thread. Ends a `grab` that waits for a desktop that does not answer; each one from then on is lost.
    virtual void giveUp() {}
    /// BGRX pixels; good until the next `grab`.
    virtual ImageView picture() const = 0;
    /// Which of them are not as they were before that `grab`, good until the next one. None: all where it says that
    /// the picture changed, and none else.
    virtual PictureChanges const* changes() const { return nullptr; }
    /// A sentence: in what it is no longer what it was when it was opened. None: it is as it was.
    virtual std::optional<std::string> remark() const { return std::nullopt; }
};

struct CapturedPicture {
    DevicePicture picture;
    double capturedAt = 0; // moment of its exposure on the media clock
};

/// What a camera reports, on threads of its own, one call at a time.
struct CameraHandlers {
    std::function<void(CapturedPicture const&)> picture;            // good during the call
    std::function<void(double since)> lost;                         // pictures are missing from that moment on
    std::function<void(double at)> returned = [](double) {};        // it is back, itself and never another one
    std::function<void(std::int64_t)> missed = [](std::int64_t) {}; // so many that it took were damaged or never came
};

/// A camera: pictures come when it takes them.
class CameraSource : public FrameSource {
public:
    /// As listed; empty for one that is not.
    virtual std::string id() const { return {}; }
    /// Pictures a second, as the camera promises.
    virtual int fps() const = 0;
    /// Returns when pictures come, or after two seconds without any.
    virtual void start(CameraHandlers handlers) = 0;
    /// No handler runs after it. Returns within seconds, whatever the camera does.
    virtual void stop() = 0;
};

}
