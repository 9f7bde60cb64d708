#include <TavaroAutomation/Input/Private/Glide.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavaro {

namespace {

constexpr double bowShare = 0.04; // of the distance
constexpr double mostBow = 30;    // points

/// The path of least jerk between two rests (Flash and Hogan, 1985): speed and acceleration are 0 at both ends.
double eased(double share) { return share * share * share * (share * (share * 6 - 15) + 10); }

}

Glide::Glide(UIPoint const& from, UIPoint const& to) : from_(from), to_(to) {
    double const dx = to.x - from.x, dy = to.y - from.y;
    double const distance = std::hypot(dx, dy);
    if (distance == 0) return;
    // A right hand that turns about its elbow passes above the straight line, to whichever side it goes.
    double const side = dx >= 0 ? 1 : -1;
    double const bow = side * std::min(distance * bowShare, mostBow) / distance;
    bow_ = {dy * bow, -dx * bow};
}

UIPoint Glide::at(double share) const {
    double const way = eased(std::clamp(share, 0.0, 1.0));
    double const beside = std::sin(way * std::numbers::pi);
    return {from_.x + (to_.x - from_.x) * way + bow_.x * beside, from_.y + (to_.y - from_.y) * way + bow_.y * beside};
}

}
