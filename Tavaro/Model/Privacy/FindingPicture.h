#pragma once

#include <TavaroCore/Records/UUID.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroMedia/Frames/Image.h>

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tavaro {

struct DemoProject;

/// A moment at which a redaction covers something, and where; nothing of what is under it.
struct FindingScene {
    std::string asset;                  // the movie
    double time = 0;                    // seconds of it
    NormalizedRect area;                // of its picture
    std::vector<NormalizedRect> others; // that are covered then, too

    bool operator==(FindingScene const&) const = default;
};

/// The middle of the time for which it is there; none for a redaction that there is not, or that is nowhere.
std::optional<FindingScene> sceneOf(DemoProject const& project, UUID const& redaction);

/// A small picture of that size of what is around an area, by which somebody knows the place again: the area and the
/// others are filled, so that not a pixel of them is in it.
Image findingPicture(ImageView frame, NormalizedRect const& area, std::span<NormalizedRect const> others, Size2 size);

}
