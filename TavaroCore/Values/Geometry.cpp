#include <TavaroCore/Values/Geometry.h>

namespace tavaro {

bool NormalizedRect::contains(UnitPoint2 const& point) const {
    return x <= point.x && point.x <= maxX() && y <= point.y && point.y <= maxY();
}

NormalizedRect NormalizedRect::unionWith(NormalizedRect const& other) const {
    double const left = std::min(x, other.x);
    double const top = std::min(y, other.y);
    return {left, top, std::max(maxX(), other.maxX()) - left, std::max(maxY(), other.maxY()) - top};
}

double NormalizedRect::intersectionOverUnion(NormalizedRect const& other) const {
    double const across = std::max(std::min(maxX(), other.maxX()) - std::max(x, other.x), 0.0);
    double const down = std::max(std::min(maxY(), other.maxY()) - std::max(y, other.y), 0.0);
    double const overlap = across * down;
    double const whole = area() + other.area() - overlap;
    return whole > 0 ? overlap / whole : 0;
}

NormalizedRect NormalizedRect::inset(double dx, double dy) const {
    double const left = std::max(x - dx, 0.0);
    double const top = std::max(y - dy, 0.0);
    double const right = std::min(x + width + dx, 1.0);
    double const bottom = std::min(y + height + dy, 1.0);
    return {left, top, std::max(right - left, 0.0), std::max(bottom - top, 0.0)};
}

bool NormalizedRect::touches(NormalizedRect const& other, double slack) const {
    return other.x - slack <= maxX() && x - slack <= other.maxX() && other.y - slack <= maxY() &&
           y - slack <= other.maxY();
}

}
