#pragma once

#include <TavaroCapture/PipeWire/Private/VideoStream.h>
#include <TavaroCapture/Sources/Asking.h>
#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCapture/Sources/Private/FrameSource.h>
#include <TavaroCapture/Wayland/Private/Repaint.h>
#include <TavaroCapture/Wayland/Private/ScreenCastPortal.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>
#include <mutex>
#include <optional>
#include <string>

namespace tavaro::wayland {

/// A monitor or a window that the user shares, as long as the object lives. A thread of its own takes the pictures as
/// they come, which is only when something changes; the last one is the picture meanwhile.
///
/// Positions are pixels of the shared pictures, from their top-left corner. The size of what is recorded is that of the
/// first picture, or of the area of it: when the screen grows later, what is beyond is left out; when it shrinks, the
/// rest is black.
class SharedScreen {
public:
    struct Options {
        ShareKind kind = ShareKind::monitor;
        std::string source;             // as listed: "display-1"
        std::optional<AreaSource> area; // of it; none: all of it
        int fps = 60;                   // no more are wanted
        Asking asking;
    };

    /// Asks the user, unless an earlier answer still counts, and waits for the first picture. Throws `CaptureError`.
    explicit SharedScreen(Options const& options);
    ~SharedScreen();
    SharedScreen(SharedScreen const&) = delete;
    SharedScreen& operator=(SharedScreen const&) = delete;

    PixelRect const& frame() const { return frame_; }
    double scaleFactor() const { return scaleFactor_; }
    PointerMode pointerMode() const { return pointerMode_; }

    // Any thread:

    /// Exchanges `picture` for the newest one, where there is a new one. BGRX.
    ScreenSource::Outcome take(Image& picture);
    /// None as long as the desktop has not told, and while it is hidden, or not on what is shared.
    std::optional<PixelPoint> pointer() const;

private:
    SharedSource share();
    void checkKind(SharedSource const& shared) const;
    void openStream(std::uint32_t node);
    void awaitFirstPicture();
    void askAgain();
    bool settleSize(DeviceFormat const& format);
    void note(pipewire::VideoPicture const& whole);
    void follow();
    [[noreturn]] void failWithoutPicture() const;
    [[noreturn]] void failOutside(DeviceFormat const& format) const;

    Options const options_;
    // The queue's once it runs, as all that are not said to be anybody's.
    ScreenCastPortal portal_;
    PointerMode const pointerMode_;
    std::optional<pipewire::Connection> connection_;
    std::optional<pipewire::VideoStream> stream_;
    std::optional<Repaint> repaint_; // while a picture is waited for
    double formatSince_ = 0;         // moment of the media clock; 0: a picture of it has come
    double logicalWidth_ = 0;
    std::optional<DeviceFormat> outside_; // a picture without the area
    Image incoming_;
    PixelRect frame_; // fixed by the first picture, as the next
    double scaleFactor_ = 1;

    std::mutex mutable lock_;
    Image latest_; // guarded by lock_, as the next three
    bool isNew_ = false;
    bool isLost_ = false;
    std::optional<PixelPoint> pointer_;

    std::atomic<bool> isEnding_ = false;
    SerialQueue queue_{"com.tavaro.capture.shared-screen", SerialQueue::Urgency::prompt}; // one task, to the end
};

}
