#pragma once

#include <Tavaro/Studio/Timeline/TimelineHit.h>
#include <Tavaro/Studio/Timeline/TimelineIntent.h>

#include <optional>
#include <set>
#include <variant>
#include <vector>

namespace tavaro {

/// A pointer's event, in points of the timeline.
struct TimelinePointer {
    double x = 0;
    double y = 0;
    bool isShiftHeld = false;
    bool isControlHeld = false;
    bool isAltHeld = false;
    TimelineHand hand = TimelineHand::mouse;
};

/// What gestures look at when an event comes.
struct GestureScene {
    TimelineScene scene;
    std::set<UUID> const& selection;
    bool snaps = true;
};

/// A hand on the timeline: from the pointer's events to what they ask for. Knows nothing of windows, and changes
/// nothing: whoever feeds it carries the intents out, and shows the document as edited at the next event.
class TimelineGestures {
public:
    using Intents = std::vector<TimelineIntent>;

    Intents press(GestureScene const& at, TimelinePointer const& pointer);
    Intents move(GestureScene const& at, TimelinePointer const& pointer);
    Intents release(GestureScene const& at, TimelinePointer const& pointer);
    Intents doubleClick(GestureScene const& at, TimelinePointer const& pointer);
    /// Escape, or the pointer was taken away: what the drag did is undone.
    Intents cancel();

    bool isIdle() const { return std::holds_alternative<Idle>(state_); }
    /// The button is down, but nothing is dragged yet.
    bool isPressed() const { return std::holds_alternative<Pressed>(state_); }
    /// Whether an edit is under way, which another's edit of the document ends.
    bool isEditing() const { return std::holds_alternative<Dragging>(state_); }
    /// For drawing: the rectangle that selects, and the time that the drag has caught on.
    std::optional<LaneBox> marquee() const;
    std::optional<double> caught() const { return caught_; }
    /// Where a dragged clip would go: the time of the gap.
    std::optional<double> gap() const { return gap_; }

private:
    enum class Drag { move, trim, ramp, slip, place };
    struct Idle {};
    struct Pressed {
        TimelineHit hit;
        TimelinePointer at;
    };
    struct Scrubbing {};
    struct Marquee {
        TimelinePointer from;
        double fromTime = 0;
        double fromDown = 0; // in lanes, so that scrolling keeps it
        LaneBox box;
        std::set<UUID> before;
        bool adds = false;
    };
    struct Dragging {
        Drag drag = Drag::move;
        TimelineHit hit;
        double pressTime = 0;
        std::set<UUID> ids; // what moves
        TimeRange extent;   // of all that moves
        double value = 0;   // of a ramp, when it was pressed
        std::optional<UUID> before;
        bool isPlaced = false;
    };

    Intents pressItem(GestureScene const& at, TimelineHit const& hit, TimelinePointer const& pointer);
    Intents beginDrag(GestureScene const& at, Pressed const& pressed);
    Intents drag(GestureScene const& at, Dragging& dragging, TimelinePointer const& pointer);
    Intents dragMove(GestureScene const& at, Dragging const& dragging, double time);
    Intents dragTrim(GestureScene const& at, Dragging const& dragging, double time);
    void dragPlace(GestureScene const& at, Dragging& dragging, double time);
    Intents sweep(GestureScene const& at, Marquee& marquee, TimelinePointer const& pointer);
    Intents click(GestureScene const& at, Pressed const& pressed);
    Intents scrub(GestureScene const& at, TimelinePointer const& pointer);

    std::variant<Idle, Pressed, Scrubbing, Marquee, Dragging> state_;
    std::optional<UUID> anchor_; // where a selection with the shift key begins
    std::optional<double> caught_;
    std::optional<double> gap_;
};

}
