#pragma once

#include <TavaroCapture/X11/Connection.h>

#include <vector>

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
    /// Rectangles, in the drawable's coordinates, that cover everything drawn since the last call; the first time all
    /// of it. Empties the report.
    std::vector<PixelRect> take();

private:
    Connection& connection_;
    std::uint32_t const damage_;
    std::uint32_t const region_; // where the server lists what was drawn
    PixelRect drawn_;            // around it
};

/// Announces to the server the extensions that grabbing needs. Throws `CaptureError` where one is missing.
void prepareGrabbing(Connection& connection);

}
