#include <Tavaro/Studio/Handles/FilmGrip.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr double gripReach = 9; // points around a grip
constexpr double bodyReach = 4; // points around a body, so that small things can be hit
constexpr double dividerReach = 7;
constexpr double arrowReach = 14; // points beside an arrow's line

constexpr FilmGrip corners[] = {FilmGrip::topLeft, FilmGrip::topRight, FilmGrip::bottomRight, FilmGrip::bottomLeft};
constexpr FilmGrip edges[] = {FilmGrip::top, FilmGrip::right, FilmGrip::bottom, FilmGrip::left};

bool hasEdges(ThingKind kind) {
    return kind == ThingKind::area || kind == ThingKind::redaction || kind == ThingKind::crop;
}

UnitPoint2 placeOf(NormalizedRect const& rect, FilmGrip grip) {
    auto const sides = sidesOf(grip);
    return {rect.x + rect.width * (1 + sides.x) / 2, rect.y + rect.height * (1 + sides.y) / 2};
}

bool isNear(UnitPoint2 a, UnitPoint2 b, PointSize point) {
    return std::abs(a.x - b.x) <= gripReach * point.x && std::abs(a.y - b.y) <= gripReach * point.y;
}

/// Points of the screen from the line between two places.
double distanceFromLine(UnitPoint2 at, FilmThing const& arrow, PointSize point) {
    double const x = (at.x - arrow.from.x) / point.x, y = (at.y - arrow.from.y) / point.y;
    double const dx = (arrow.to.x - arrow.from.x) / point.x, dy = (arrow.to.y - arrow.from.y) / point.y;
    double const length = dx * dx + dy * dy;
    double const t = length > 0 ? std::clamp((x * dx + y * dy) / length, 0.0, 1.0) : 0;
    return std::hypot(x - t * dx, y - t * dy);
}

bool isOn(FilmThing const& thing, UnitPoint2 at, PointSize point) {
    if (thing.kind == ThingKind::arrow) return distanceFromLine(at, thing, point) <= arrowReach;
    auto const& rect = thing.rect;
    double const reach = thing.kind == ThingKind::divider ? dividerReach : bodyReach;
    double const x = reach * point.x, y = reach * point.y;
    return at.x >= rect.x - x && at.x <= rect.maxX() + x && at.y >= rect.y - y && at.y <= rect.maxY() + y;
}

}

GripSides sidesOf(FilmGrip grip) {
    switch (grip) {
    case FilmGrip::topLeft: return {-1, -1};
    case FilmGrip::top: return {0, -1};
    case FilmGrip::topRight: return {1, -1};
    case FilmGrip::right: return {1, 0};
    case FilmGrip::bottomRight: return {1, 1};
    case FilmGrip::bottom: return {0, 1};
    case FilmGrip::bottomLeft: return {-1, 1};
    case FilmGrip::left: return {-1, 0};
    case FilmGrip::body: [[fallthrough]];
    case FilmGrip::from: [[fallthrough]];
    case FilmGrip::to: break;
    }
    return {};
}

std::vector<PlacedGrip> gripsOf(FilmThing const& thing) {
    if (thing.isRejected) return {};
    if (thing.kind == ThingKind::arrow) return {{FilmGrip::from, thing.from}, {FilmGrip::to, thing.to}};
    if (thing.kind == ThingKind::divider) return {{FilmGrip::body, thing.rect.center()}};
    std::vector<PlacedGrip> grips;
    for (auto const corner : corners) grips.push_back({corner, placeOf(thing.rect, corner)});
    if (!hasEdges(thing.kind)) return grips;
    for (auto const edge : edges) grips.push_back({edge, placeOf(thing.rect, edge)});
    return grips;
}

std::optional<FilmHit> hitThing(std::span<FilmThing const> things, std::span<FilmThing const> selected, UnitPoint2 at,
                                PointSize point) {
    if (selected.size() == 1) {
        for (auto const& each : gripsOf(selected.front())) {
            if (isNear(each.at, at, point)) return FilmHit{selected.front(), each.grip};
        }
    }
    auto const hit =
        std::find_if(things.rbegin(), things.rend(), [&](FilmThing const& thing) { return isOn(thing, at, point); });
    if (hit == things.rend()) return std::nullopt;
    return FilmHit{*hit, FilmGrip::body};
}

}
