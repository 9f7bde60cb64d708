#pragma once

#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Timeline/Timeline.h>

#include <optional>
#include <set>
#include <string>
#include <variant>

/// What a person's hand on the timeline asks for. The editor carries it out; the timeline itself changes nothing. From
/// `EditBegan` to `EditEnded` each edit replaces the one before it: its times are those of the document as it was when
/// the edit began, so that what a drag passed over on its way is as it was.
namespace tavaro::timelineIntents {

/// What is selected from now on.
struct Select {
    std::set<UUID> ids;
};
struct Scrub {
    double time = 0;
};
struct ScrubEnded {};

/// The edits up to the end are one step of the history, of that name.
struct EditBegan {
    std::string name;
};
struct EditEnded {};
/// The document becomes what it was when the edit began.
struct EditCancelled {};

struct MoveItems {
    std::set<UUID> ids;
    double by = 0;
    double at = 0; // of what the film shows several times, the place nearest to that is held
};
struct TrimItem {
    UUID id;
    ClipEdge edge = ClipEdge::leading;
    double to = 0;
    double at = 0; // likewise
};
/// A zoom's way in or out.
struct SetRamp {
    UUID id;
    ClipEdge edge = ClipEdge::leading;
    double seconds = 0;
};
/// The clip shows other moments of its recording, from where it is and as long as it is.
struct SlipClip {
    UUID id;
    double by = 0; // source seconds
};
/// The clip goes before that one, or behind the last.
struct PlaceClip {
    UUID id;
    std::optional<UUID> before;
};

/// A double click: what the item is made of, to be edited.
struct Open {
    UUID id;
};
struct ToggleLane {
    std::string key;
};

}

namespace tavaro {

using TimelineIntent = std::variant<timelineIntents::Select, timelineIntents::Scrub, timelineIntents::ScrubEnded,
                                    timelineIntents::EditBegan, timelineIntents::EditEnded,
                                    timelineIntents::EditCancelled, timelineIntents::MoveItems,
                                    timelineIntents::TrimItem, timelineIntents::SetRamp, timelineIntents::SlipClip,
                                    timelineIntents::PlaceClip, timelineIntents::Open, timelineIntents::ToggleLane>;

}
