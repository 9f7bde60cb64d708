#pragma once

#include <TavaroCore/Records/UUID.h>
#include <TavaroRender/Composition/ZoomUse.h>

#include <vector>

namespace tavaro {

struct DemoProject;

/// How a film is looked at while one works on it; at first as it is.
struct FilmView {
    enum class Shows {
        film,
        wholeRecording, // with what the crop leaves out
        rawTake,        // as it was recorded: nothing of what the edit adds, but what it hides stays hidden
    };

    Shows shows = Shows::film;
    ZoomUse zooms = ZoomUse::zoomed;
    std::vector<UUID> resting; // overlays that are there from their first moment to their last, without animation

    /// While the film plays: as it is, or as it was recorded.
    FilmView playing() const;
    /// The document that looks so.
    DemoProject of(DemoProject const& project) const;

    bool operator==(FilmView const&) const = default;
};

}
