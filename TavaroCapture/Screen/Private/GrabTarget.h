#pragma once

#include <TavaroCapture/Screen/Private/SharedPicture.h>
#include <TavaroCapture/X11/Private/Desktop.h>

#include <algorithm>
#include <memory>

namespace tavaro::x11 {

/// Rows of a picture, `[top, bottom)`.
struct Rows {
    int top = 0;
    int bottom = 0;

    bool isEmpty() const { return top >= bottom; }
    Rows unionWith(Rows const& other) const {
        if (isEmpty()) return other;
        if (other.isEmpty()) return *this;
        return {std::min(top, other.top), std::max(bottom, other.bottom)};
    }
};

/// What a grabber reads from: knows where the pixels are and which rows were drawn since it was last asked.
class GrabTarget {
public:
    virtual ~GrabTarget() = default;

    /// Where the picture lies on the desktop now. Its size never changes.
    virtual PixelRect frame() const = 0;
    /// Takes in an event of the connection.
    virtual void handle(xcb_generic_event_t const& event) = 0;
    /// Rows drawn since the last call, as far as handled events tell. Empties the report.
    virtual Rows takeDamage() = 0;
    /// Whether takeDamage would have something to tell.
    virtual bool isDamaged() const = 0;
    /// Reads these rows into their place in `picture`; false when they cannot be read now.
    virtual bool fetch(Rows rows, SharedPicture& picture) = 0;
    /// The source is gone for good.
    virtual bool isLost() const = 0;
};

std::unique_ptr<GrabTarget> makeRootTarget(Connection& connection, PixelRect const& frame);
/// Shows the window, and over it the popups and dialogs that belong to it, or all windows of its application.
std::unique_ptr<GrabTarget> makeWindowTarget(Connection& connection, ResolvedSource const& source);

/// The server's report of what was drawn into one drawable.
class DamageReport {
public:
    DamageReport(Connection& connection, xcb_drawable_t drawable);
    ~DamageReport();
    DamageReport(DamageReport const&) = delete;
    DamageReport& operator=(DamageReport const&) = delete;

    /// Takes in an event of the connection.
    void handle(xcb_generic_event_t const& event);
    bool isDamaged() const { return !drawn_.isEmpty(); }
    /// The rectangle around everything drawn since the last call, in the drawable's coordinates; the first time all of
    /// it. Empties the report.
    PixelRect take();

private:
    Connection& connection_;
    std::uint32_t const damage_;
    PixelRect drawn_;
};

/// Announces to the server the extensions that grabbing needs. Throws `CaptureError` where one is missing.
void prepareGrabbing(Connection& connection);

}
