#pragma once

#include <TavaroCore/Records/UUID.h>

#include <optional>
#include <string>

namespace tavaro {

struct Timeline;

/// What an output time shows, so that a playhead stays on its picture when the edit around it changes.
struct PicturePlace {
    double time = 0;          // output seconds when it was looked up
    std::optional<UUID> clip; // none where no clip is shown
    std::string asset;
    double source = 0; // seconds of the asset
    double inside = 0; // output seconds from the clip's start: of a held frame all there is
};

PicturePlace placeAt(Timeline const& timeline, double time);

/// Where a timeline shows that picture: in the same clip if it still does, else at the time nearest to the one before.
/// A picture that was cut out is where its cut is; the time is never past the end.
double timeOf(Timeline const& timeline, PicturePlace const& place);

}
