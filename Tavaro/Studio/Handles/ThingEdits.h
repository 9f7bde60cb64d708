#pragma once

#include <Tavaro/Studio/Handles/FilmGrip.h>

#include <TavaroRender/Places/FramePlaces.h>

namespace tavaro {

struct DemoProject;

/// A thing that is to be somewhere else, or of another size.
struct ThingChange {
    FilmThing was;
    FilmThing becomes;
    FilmGrip grip = FilmGrip::body; // held by; only `body` leaves its size as it is
    /// A hand puts it where it is seen, keys move it from where the document has it: texts are drawn on whole pixels,
    /// which a step of one is lost in.
    enum class By { hand, keys };
    By by = By::hand;
};

/// Changes the document so that the thing is there, as far as its kind lets it be: what belongs to the recording stays
/// on it, sizes stay within the ranges of the inspectors. `places` are those of the picture it was taken from. A thing
/// that has gone meanwhile is passed over.
void carryOut(ThingChange const& change, DemoProject& project, FramePlaces const& places);

/// A new area that is hidden from this moment of the edit on; none where no recording is shown.
std::optional<UUID> hideArea(DemoProject& project, FramePlaces const& places, NormalizedRect const& ofCanvas);

}
