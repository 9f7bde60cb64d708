#include <TavaroAutomation/Values/UIRect.h>

#include <algorithm>

namespace tavaro {

bool UIRect::contains(UIPoint const& point) const {
    return point.x >= x && point.y >= y && point.x < x + width && point.y < y + height;
}

UIRect UIRect::intersection(UIRect const& other) const {
    double const left = std::max(x, other.x), top = std::max(y, other.y);
    double const right = std::min(x + width, other.x + other.width);
    double const bottom = std::min(y + height, other.y + other.height);
    return {left, top, std::max(right - left, 0.0), std::max(bottom - top, 0.0)};
}

}
