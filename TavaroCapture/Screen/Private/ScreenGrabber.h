#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroMedia/Frames/Image.h>

#include <memory>
#include <string>

namespace tavaro {

/// Takes pictures of one source, without the pointer. One thread.
///
/// The picture's size is fixed when the grabber is made: the source's size then, each side rounded down to even. A
/// display or an area is read from the root window. A window is read from its own off-screen pixmap, so what covers it
/// does not show; its menus and dialogs do. An application shows all its windows above and over its frontmost one. When
/// the window moves, the picture follows; when it grows it is cropped on the right and at the bottom, when it shrinks
/// the rest is black; minimised, it keeps its last picture.
///
/// The server reports what is drawn, and only rows that changed are read again; an unchanged screen costs almost
/// nothing. The report is checked four times a second against the whole picture, and no longer trusted once it missed
/// something.
class ScreenGrabber {
public:
    /// Throws `CaptureError` for a source that cannot be recorded.
    ScreenGrabber(CaptureSource const& source, std::string const& display);
    ~ScreenGrabber();
    ScreenGrabber(ScreenGrabber const&) = delete;
    ScreenGrabber& operator=(ScreenGrabber const&) = delete;

    Size2 size() const;
    /// What the picture shows, on the desktop, as of the last grab; a window may move.
    PixelRect frame() const;
    /// Pixels per point, from the resolution that the desktop's settings give its text.
    double scaleFactor() const;

    enum class Outcome { changed, unchanged, lost };
    /// Brings the picture up to date at the time `now` of the media clock.
    Outcome grab(double now);
    /// BGRX pixels; good until the next `grab`.
    ImageView picture() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
