#include <Tavaro/Studio/Handles/FilmDrag.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavaro {

namespace {

constexpr double catchReach = 7; // points
constexpr double leastSide = 8;

/// Along the axis, on the screen, on which it goes further.
UnitPoint2 alongAxis(UnitPoint2 by, PointSize point) {
    bool const isAcross = std::abs(by.x) / point.x >= std::abs(by.y) / point.y;
    return isAcross ? UnitPoint2{by.x, 0} : UnitPoint2{0, by.y};
}

/// Sides as they get when the grip moves, before anything holds their shape.
UnitPoint2 stretched(NormalizedRect const& rect, GripSides sides, UnitPoint2 by, double share) {
    return {rect.width + sides.x * by.x * share, rect.height + sides.y * by.y * share};
}

double begin(double from, double length, double now, int side, bool fromCenter) {
    if (fromCenter || side == 0) return from + (length - now) / 2;
    return side < 0 ? from + length - now : from;
}

}

bool hasOneShape(ThingKind kind) {
    return kind != ThingKind::area && kind != ThingKind::redaction && kind != ThingKind::crop;
}

NormalizedRect reshaped(NormalizedRect const& rect, FilmGrip grip, UnitPoint2 by, FilmPointer const& how) {
    auto const sides = sidesOf(grip);
    auto wanted = stretched(rect, sides, by, how.fromCenter ? 2 : 1);
    UnitPoint2 const least{std::min(leastSide * how.point.x, rect.width),
                           std::min(leastSide * how.point.y, rect.height)};
    if (how.keepsShape && rect.width > 0 && rect.height > 0) {
        double const across = wanted.x / rect.width, down = wanted.y / rect.height;
        double k = sides.x == 0 ? down : sides.y == 0 ? across : std::max(across, down);
        k = std::max({k, least.x / rect.width, least.y / rect.height});
        wanted = {rect.width * k, rect.height * k};
    }
    wanted = {std::max(wanted.x, least.x), std::max(wanted.y, least.y)};
    return {begin(rect.x, rect.width, wanted.x, sides.x, how.fromCenter),
            begin(rect.y, rect.height, wanted.y, sides.y, how.fromCenter), wanted.x, wanted.y};
}

FilmDrag::FilmDrag(FilmHit const& hit, std::vector<FilmThing> dragged, FilmMagnets magnets,
                   std::vector<NormalizedRect> placements, UnitPoint2 from)
    : grip_(hit.grip)
    , dragged_(std::move(dragged))
    , magnets_(std::move(magnets))
    , placements_(std::move(placements))
    , from_(from) {}

FilmDragged FilmDrag::to(FilmPointer const& pointer) const {
    UnitPoint2 const by{pointer.at.x - from_.x, pointer.at.y - from_.y};
    if (grip_ == FilmGrip::body) return moved(by, pointer);
    if (grip_ == FilmGrip::from || grip_ == FilmGrip::to) return aimed(by, pointer);
    return reshaped(by, pointer);
}

FilmDragged FilmDrag::moved(UnitPoint2 by, FilmPointer const& pointer) const {
    FilmDragged result;
    if (pointer.keepsShape) by = alongAxis(by, pointer.point);
    auto const& held = dragged_.front();
    auto const rect = movedBy(held, by).rect;
    auto const caught = [&](NormalizedRect const& place) {
        return std::abs(place.center().x - rect.center().x) <= 2 * catchReach * pointer.point.x &&
               std::abs(place.center().y - rect.center().y) <= 2 * catchReach * pointer.point.y;
    };
    auto const placement = std::ranges::find_if(placements_, caught);
    if (!pointer.isFree && placement != placements_.end()) {
        by = {by.x + placement->x - rect.x, by.y + placement->y - rect.y};
    } else if (!pointer.isFree) {
        bool const isDivider = held.kind == ThingKind::divider;
        double const across[] = {rect.x, rect.center().x, rect.maxX()}, down[] = {rect.y, rect.center().y, rect.maxY()};
        auto const x = magnets_.pull(FilmGuide::Way::vertical, across, catchReach * pointer.point.x);
        auto const y = magnets_.pull(FilmGuide::Way::horizontal, down, catchReach * pointer.point.y);
        bool const staysLevel = isDivider ? held.isUpright() : pointer.keepsShape && by.y == 0;
        bool const staysUpright = isDivider ? !held.isUpright() : pointer.keepsShape && by.x == 0;
        if (x && !staysUpright) by.x += x->by;
        if (y && !staysLevel) by.y += y->by;
        if (x && !staysUpright) result.guides.push_back(x->guide);
        if (y && !staysLevel) result.guides.push_back(y->guide);
    }
    for (auto const& thing : dragged_) result.things.push_back(movedBy(thing, by));
    return result;
}

FilmDragged FilmDrag::reshaped(UnitPoint2 by, FilmPointer const& pointer) const {
    FilmDragged result{dragged_, {}};
    auto& thing = result.things.front();
    auto const before = thing.rect;
    auto how = pointer;
    how.keepsShape = pointer.keepsShape || hasOneShape(thing.kind);
    thing.rect = tavaro::reshaped(before, grip_, by, how);
    if (pointer.isFree) return result;
    auto const sides = sidesOf(grip_);
    double const edgeX = sides.x < 0 ? thing.rect.x : thing.rect.maxX();
    double const edgeY = sides.y < 0 ? thing.rect.y : thing.rect.maxY();
    auto x = sides.x == 0 ? std::nullopt
                          : magnets_.pull(FilmGuide::Way::vertical, {&edgeX, 1}, catchReach * pointer.point.x);
    auto y = sides.y == 0 ? std::nullopt
                          : magnets_.pull(FilmGuide::Way::horizontal, {&edgeY, 1}, catchReach * pointer.point.y);
    if (how.keepsShape && x && y) { // one edge alone decides
        bool const isAcross = std::abs(x->by) / pointer.point.x <= std::abs(y->by) / pointer.point.y;
        (isAcross ? y : x).reset();
    }
    if (!x && !y) return result;
    // From the edge as it is drawn, which a kept shape may have taken away from the pointer.
    double const start = sides.x < 0 ? before.x : before.maxX(), top = sides.y < 0 ? before.y : before.maxY();
    UnitPoint2 pulled{edgeX - start + (x ? x->by : 0), edgeY - top + (y ? y->by : 0)};
    if (how.keepsShape && sides.x != 0 && sides.y != 0) {
        // Of a kept shape the side that is caught leads, the other follows.
        double const k = (x ? before.width + sides.x * pulled.x * (how.fromCenter ? 2 : 1) : 0) / before.width +
                         (y ? before.height + sides.y * pulled.y * (how.fromCenter ? 2 : 1) : 0) / before.height;
        double const share = (k - 1) / (how.fromCenter ? 2 : 1);
        pulled = {sides.x * before.width * share, sides.y * before.height * share};
    }
    thing.rect = tavaro::reshaped(before, grip_, pulled, how);
    if (x) result.guides.push_back(x->guide);
    if (y) result.guides.push_back(y->guide);
    return result;
}

FilmDragged FilmDrag::aimed(UnitPoint2 by, FilmPointer const& pointer) const {
    FilmDragged result{dragged_, {}};
    auto& thing = result.things.front();
    auto& end = grip_ == FilmGrip::from ? thing.from : thing.to;
    auto const& other = grip_ == FilmGrip::from ? thing.to : thing.from;
    end = {end.x + by.x, end.y + by.y};
    if (pointer.keepsShape) {
        auto const level = alongAxis({end.x - other.x, end.y - other.y}, pointer.point);
        end = {other.x + level.x, other.y + level.y};
    } else if (!pointer.isFree) {
        auto const x = magnets_.pull(FilmGuide::Way::vertical, {&end.x, 1}, catchReach * pointer.point.x);
        auto const y = magnets_.pull(FilmGuide::Way::horizontal, {&end.y, 1}, catchReach * pointer.point.y);
        if (x) result.guides.push_back(x->guide);
        if (y) result.guides.push_back(y->guide);
        end = {end.x + (x ? x->by : 0), end.y + (y ? y->by : 0)};
    }
    thing.rect = {std::min(thing.from.x, thing.to.x), std::min(thing.from.y, thing.to.y),
                  std::abs(thing.from.x - thing.to.x), std::abs(thing.from.y - thing.to.y)};
    return result;
}

}
