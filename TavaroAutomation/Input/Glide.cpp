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

double distanceBetween(UIPoint const& a, UIPoint const& b) { return std::hypot(b.x - a.x, b.y - a.y); }

UIPoint between(UIPoint const& a, UIPoint const& b, double share) {
    return {a.x + (b.x - a.x) * share, a.y + (b.y - a.y) * share};
}

/// On the way over `by`, which may be where it begins or ends.
UIPoint alongBoth(UIPoint const& from, UIPoint const& by, UIPoint const& to, double share) {
    double const first = distanceBetween(from, by), second = distanceBetween(by, to);
    double const gone = share * (first + second);
    if (gone < first) return between(from, by, gone / first);
    return second > 0 ? between(by, to, (gone - first) / second) : to;
}

}

Glide::Glide(UIPoint const& from, UIPoint const& to, std::optional<UIPoint> const& by) : from_(from), to_(to), by_(by) {
    double const dx = to.x - from.x, dy = to.y - from.y;
    double const distance = std::hypot(dx, dy);
    if (distance == 0 || by) return;
    // A right hand that turns about its elbow passes above the straight line, to whichever side it goes.
    double const side = dx >= 0 ? 1 : -1;
    double const bow = side * std::min(distance * bowShare, mostBow) / distance;
    bow_ = {dy * bow, -dx * bow};
}

UIPoint Glide::at(double share) const {
    double const way = eased(std::clamp(share, 0.0, 1.0));
    if (by_) return alongBoth(from_, *by_, to_, way);
    double const beside = std::sin(way * std::numbers::pi);
    return {from_.x + (to_.x - from_.x) * way + bow_.x * beside, from_.y + (to_.y - from_.y) * way + bow_.y * beside};
}

}
