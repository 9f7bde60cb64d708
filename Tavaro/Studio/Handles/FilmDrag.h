#pragma once

#include <Tavaro/Studio/Handles/FilmMagnets.h>

#include <vector>

namespace tavaro {

/// Where a hand has a thing, and how it wants it.
struct FilmPointer {
    UnitPoint2 at; // share of the canvas
    PointSize point;
    bool keepsShape = false; // or the way, of what is moved
    bool fromCenter = false;
    bool isFree = false; // nothing catches it
};

/// What a drag makes of its things.
struct FilmDragged {
    std::vector<FilmThing> things; // as they are to be, in the order of those dragged
    std::vector<FilmGuide> guides; // that caught it
};

/// One drag on the picture: where its things are to be for each place of the pointer. Values only.
class FilmDrag {
public:
    /// `dragged` begins with the thing that is held; by a grip it is the only one. The camera's picture is caught by
    /// its `placements` too.
    FilmDrag(FilmHit const& hit, std::vector<FilmThing> dragged, FilmMagnets magnets,
             std::vector<NormalizedRect> placements, UnitPoint2 from);

    FilmGrip grip() const { return grip_; }
    std::vector<FilmThing> const& before() const { return dragged_; }
    FilmDragged to(FilmPointer const& pointer) const;

private:
    FilmDragged moved(UnitPoint2 by, FilmPointer const& pointer) const;
    FilmDragged reshaped(UnitPoint2 by, FilmPointer const& pointer) const;
    FilmDragged aimed(UnitPoint2 by, FilmPointer const& pointer) const;

    FilmGrip grip_;
    std::vector<FilmThing> dragged_;
    FilmMagnets magnets_;
    std::vector<NormalizedRect> placements_;
    UnitPoint2 from_;
};

/// Whether a thing of that kind keeps its shape whatever is held.
bool hasOneShape(ThingKind kind);

/// A rectangle whose grip was moved by so much; no side gets smaller than a few points.
NormalizedRect reshaped(NormalizedRect const& rect, FilmGrip grip, UnitPoint2 by, FilmPointer const& how);

}
