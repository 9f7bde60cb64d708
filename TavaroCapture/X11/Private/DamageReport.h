#pragma once

#include <TavaroCapture/X11/Connection.h>

namespace tavaro::x11 {

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
