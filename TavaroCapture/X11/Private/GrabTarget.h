#pragma once

#include <TavaroCapture/X11/Private/SharedPicture.h>
#include <TavaroMedia/Frames/PictureChanges.h>

#include <memory>
#include <optional>
#include <string>

namespace tavaro::x11 {

/// Rows of a picture, `[top, bottom)`.
struct Rows {
    int top = 0;
    int bottom = 0;

    bool isEmpty() const { return top >= bottom; }
};

/// What a grabber reads from: knows where the pixels are and which rows were drawn since it was last asked.
class GrabTarget {
public:
    virtual ~GrabTarget() = default;

    /// Where the picture lies on the desktop now. Its size never changes.
    virtual PixelRect frame() const = 0;
    /// Takes in an event of the connection.
    virtual void handle(xcb_generic_event_t const& event) = 0;
    /// Adds to the picture's changes what was drawn since the last call. Empties the report.
    virtual void takeDamage(PictureChanges& changes) = 0;
    /// Whether takeDamage would have something to tell.
    virtual bool isDamaged() const = 0;
    /// Reads these rows into their place in `picture`; false when they cannot be read now.
    virtual bool fetch(Rows rows, SharedPicture& picture) = 0;
    /// The source is gone for good.
    virtual bool isLost() const = 0;
    /// It is not there now, but may come back.
    virtual bool isAway() const { return false; }
    /// A sentence: in what it is no longer what the picture was made for.
    virtual std::optional<std::string> remark() const { return std::nullopt; }
};

}
