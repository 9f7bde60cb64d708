#pragma once

#include <TavaroCapture/Sources/Private/FrameSource.h>

#include <memory>
#include <string>

namespace tavaro::x11 {

/// Takes pictures of one source on an X screen.
///
/// The picture's size is fixed when the grabber is made: the source's size then, each side rounded down to even. A
/// display or an area is read from the root window; where it belongs to a display, the picture follows that when
/// displays are arranged anew, and the source is away while it is not there. A window is read from its own off-screen
/// pixmap, so what covers it does not show; its menus and dialogs do. An application shows all its windows above and
/// over its frontmost one; when that is closed, the next one that it has or opens within three seconds takes its place.
/// When the window moves, the picture follows; when it grows it is cropped on the right and at the bottom, when it
/// shrinks the rest is black; minimised, it keeps its last picture.
///
/// The server reports what is drawn, and only rows in which something changed are read again; an unchanged screen costs
/// almost nothing. The report is checked four times a second against the whole picture, and no longer trusted once it
/// missed something.
class ScreenGrabber final : public ScreenSource {
public:
    /// Throws `CaptureError` for a source that cannot be recorded.
    ScreenGrabber(CaptureSource const& source, std::string const& display);
    ~ScreenGrabber() override;
    ScreenGrabber(ScreenGrabber const&) = delete;
    ScreenGrabber& operator=(ScreenGrabber const&) = delete;

    Size2 size() const override;
    PixelRect frame() const override;
    double scaleFactor() const override;
    Outcome grab(double now) override;
    void giveUp() override;
    ImageView picture() const override;
    PictureChanges const* changes() const override;
    std::optional<std::string> remark() const override;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
