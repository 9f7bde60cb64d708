#pragma once

#include <Tavaro/Studio/Handles/FilmThing.h>

#include <optional>
#include <span>
#include <vector>

namespace tavaro {

/// Where a thing is held.
enum class FilmGrip { body, topLeft, top, topRight, right, bottomRight, bottom, bottomLeft, left, from, to };

/// -1 for a grip on the left (top) side, 1 on the right (bottom) one, 0 in the middle.
struct GripSides {
    int x = 0;
    int y = 0;
};
GripSides sidesOf(FilmGrip grip);

/// The grips of a thing besides its body, and where they are.
struct PlacedGrip {
    FilmGrip grip = FilmGrip::body;
    UnitPoint2 at;
};
std::vector<PlacedGrip> gripsOf(FilmThing const& thing);

/// How large a share of the canvas a point of the screen is.
struct PointSize {
    double x = 1.0 / 960;
    double y = 1.0 / 540;
};

struct FilmHit {
    FilmThing thing;
    FilmGrip grip = FilmGrip::body;
};

/// What is under a point: a grip of the one thing that is selected, else the topmost thing.
std::optional<FilmHit> hitThing(std::span<FilmThing const> things, std::span<FilmThing const> selected, UnitPoint2 at,
                                PointSize point);

}
