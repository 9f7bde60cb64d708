#pragma once

#include <TavaroCapture/Sources/Private/EventSource.h>
#include <TavaroCore/Recording/EventLists.h>

#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// A point of the desktop in unit coordinates of the captured area, clamped to its nearest edge; the centre when the
/// area has no width or height.
UnitPoint2 normalizeTopLeft(PixelPoint point, PixelRect const& area);
/// The part of a desktop rectangle that lies in the captured area, in its unit coordinates; none when none does.
std::optional<NormalizedRect> normalizedFrame(PixelRect const& rect, PixelRect const& area);

/// What was pressed, where, and on what.
struct Press {
    MouseButton button = MouseButton::left;
    PixelPoint point; // desktop
    UnitPoint2 position;
    std::optional<std::string> application;
    std::optional<NormalizedRect> windowFrame;
};

/// Collects what the user does in a take and makes records of it: presses become clicks, double clicks and drags;
/// changes of the front application become spans. Times are on the take's timeline; one that runs backwards is lifted
/// to its predecessor's. Lives on one queue.
class EventLog {
public:
    /// A second press of a button this soon and this near (desktop pixels) makes a double click.
    static constexpr double doubleClickSeconds = 0.4;
    static constexpr int doubleClickDistance = 5;
    /// A press that travels this far before its release is a drag.
    static constexpr int dragDistance = 6;

    void notePointer(double t, PixelPoint point, UnitPoint2 position, CursorKind kind);
    void notePress(double t, Press press);
    void noteRelease(double t, MouseButton button, PixelPoint point);
    /// A key may be reported a while after it was pressed, when another application is in front.
    void noteKey(double t, Chord const& chord);
    /// Closes the open span and opens one for the application now in front; none when nothing is.
    void noteFrontmostApplication(double t, std::optional<ApplicationIdentity> application);
    void closeCurrentAppSpan(double t);
    /// Ends drags that nobody released and the open span.
    void close(double t);

    std::optional<ApplicationIdentity> const& frontmost() const { return frontmost_; }

    /// The records after those, which an earlier checkpoint already holds; the open span closed at `t`.
    RecordingMetadata since(EventCounts const& held, double t) const;
    /// How much can no longer change: an open span and clicks from the first held button on stay out.
    EventCounts settled() const;

private:
    struct OpenPress {
        std::size_t click;
        PixelPoint point;
    };
    struct LastPress {
        double t;
        MouseButton button;
        PixelPoint point;
    };
    void noteTravel(PixelPoint point, OpenPress const& press);
    std::optional<std::string> applicationAt(double t) const;

    RecordingMetadata log_;
    std::optional<OpenPress> open_[3]; // by button
    std::optional<LastPress> last_;    // none after a double click: a third press starts anew
    std::optional<ApplicationIdentity> frontmost_;
    double spanStart_ = 0;
};

}
