#include <Tavaro/Studio/Recorder/AreaEdit.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

double ratioOf(AreaShape shape) {
    switch (shape) {
    case AreaShape::free: return 0;
    case AreaShape::wide: return 16.0 / 9;
    case AreaShape::tall: return 9.0 / 16;
    case AreaShape::square: return 1;
    case AreaShape::portrait: return 4.0 / 5;
    case AreaShape::standard: return 4.0 / 3;
    }
    return 0;
}

/// Which way a grip pulls: -1 to the left or up, 1 to the right or down, 0 neither.
PixelPoint pullOf(AreaGrip grip) {
    using enum AreaGrip;
    switch (grip) {
    case inside: return {0, 0};
    case left: return {-1, 0};
    case right: return {1, 0};
    case top: return {0, -1};
    case bottom: return {0, 1};
    case topLeft: return {-1, -1};
    case topRight: return {1, -1};
    case bottomLeft: return {-1, 1};
    case bottomRight: return {1, 1};
    }
    return {0, 0};
}

int rounded(double value) { return static_cast<int>(std::lround(value)); }

/// Room on one side of an anchor; where a side goes both ways, it is moved into the display afterwards.
double room(int anchor, int away, int whole) {
    if (away == 0) return whole;
    return away > 0 ? whole - anchor : anchor;
}

/// Where a side begins that goes away from its anchor, or both ways from it.
int beginning(int anchor, int away, int length, int whole) {
    int const wanted = away == 0 ? anchor - length / 2 : away > 0 ? anchor : anchor - length;
    return std::clamp(wanted, 0, std::max(whole - length, 0));
}

}

AreaEdit::AreaEdit(PixelRect const& display, AreaShape shape)
    : width_(display.width)
    , height_(display.height)
    , ratio_(ratioOf(shape)) {}

/// The larger of the two sides counts where the shape is held.
AreaEdit::Sides AreaEdit::held(Sides wanted, Sides room) const {
    double const least = shortestAreaSide;
    if (ratio_ == 0)
        return {std::clamp(wanted.width, least, std::max(room.width, least)),
                std::clamp(wanted.height, least, std::max(room.height, least))};
    double const narrowest = least * std::max(ratio_, 1.0), widest = std::min(room.width, room.height * ratio_);
    double const width = std::max(wanted.width, wanted.height * ratio_);
    double const chosen = std::clamp(width, narrowest, std::max(widest, narrowest));
    return {chosen, chosen / ratio_};
}

PixelRect AreaEdit::grown(PixelPoint anchor, PixelPoint away, Sides wanted) const {
    auto const sides = held(wanted, {room(anchor.x, away.x, width_), room(anchor.y, away.y, height_)});
    int const width = std::min(rounded(sides.width), width_), height = std::min(rounded(sides.height), height_);
    return {beginning(anchor.x, away.x, width, width_), beginning(anchor.y, away.y, height, height_), width, height};
}

PixelRect AreaEdit::fitted(PixelRect const& wanted) const { return withWidth(wanted, wanted.width); }

PixelRect AreaEdit::withWidth(PixelRect const& area, int width) const {
    PixelPoint const corner{std::clamp(area.x, 0, std::max(width_ - shortestAreaSide, 0)),
                            std::clamp(area.y, 0, std::max(height_ - shortestAreaSide, 0))};
    double const height = ratio_ == 0 ? area.height : width / ratio_;
    return grown(corner, {1, 1}, {static_cast<double>(width), height});
}

PixelRect AreaEdit::withHeight(PixelRect const& area, int height) const {
    int const width = ratio_ == 0 ? area.width : rounded(height * ratio_);
    return withWidth({area.x, area.y, area.width, height}, width);
}

PixelRect AreaEdit::dragged(PixelRect const& start, AreaGrip grip, PixelPoint by) const {
    if (grip == AreaGrip::inside)
        return {std::clamp(start.x + by.x, 0, std::max(width_ - start.width, 0)),
                std::clamp(start.y + by.y, 0, std::max(height_ - start.height, 0)), start.width, start.height};
    auto const pull = pullOf(grip);
    PixelPoint const anchor{pull.x == 0  ? start.x + start.width / 2
                            : pull.x > 0 ? start.x
                                         : start.x + start.width,
                            pull.y == 0  ? start.y + start.height / 2
                            : pull.y > 0 ? start.y
                                         : start.y + start.height};
    Sides wanted{static_cast<double>(start.width + pull.x * by.x), static_cast<double>(start.height + pull.y * by.y)};
    if (ratio_ > 0 && pull.y == 0) wanted.height = 0; // the side that is not dragged follows
    if (ratio_ > 0 && pull.x == 0) wanted.width = 0;
    return grown(anchor, pull, wanted);
}

PixelRect AreaEdit::drawn(PixelPoint from, PixelPoint to) const {
    PixelPoint const anchor{std::clamp(from.x, 0, width_), std::clamp(from.y, 0, height_)};
    PixelPoint const away{to.x < anchor.x ? -1 : 1, to.y < anchor.y ? -1 : 1};
    return grown(anchor, away,
                 {std::abs(static_cast<double>(to.x) - anchor.x), std::abs(static_cast<double>(to.y) - anchor.y)});
}

PixelRect AreaEdit::suggested() const {
    return grown({width_ / 2, height_ / 2}, {0, 0}, {width_ / 2.0, ratio_ == 0 ? height_ / 2.0 : 0});
}

}
