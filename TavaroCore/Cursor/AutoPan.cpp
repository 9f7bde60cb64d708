#include <TavaroCore/Cursor/AutoPan.h>

#include <TavaroCore/Cursor/CursorSmoother.h>

#include <algorithm>

namespace tavaro {

namespace {

/// The camera's centre along one axis.
class Axis {
public:
    Axis(double visible, double deadZone, double first)
        : half_(visible <= 0.01 ? 0.005 : std::min(visible, 1.0) / 2)
        , deadZone_(deadZone * half_)
        , pans_(half_ < 0.4999)
        , centre_(inside(first)) {}

    /// The nearest centre at which the visible part lies inside the frame.
    double inside(double centre) const { return pans_ ? std::clamp(centre, half_, 1 - half_) : 0.5; }

    double follow(double pointer) {
        if (pointer > centre_ + deadZone_) {
            centre_ = pointer - deadZone_;
        } else if (pointer < centre_ - deadZone_) {
            centre_ = pointer + deadZone_;
        }
        return centre_ = inside(centre_);
    }

private:
    double half_; // half of the visible part
    double deadZone_;
    bool pans_;
    double centre_;
};

}

AutoPan::AutoPan(double deadZone, double smoothing)
    : deadZone_(std::clamp(deadZone, 0.0, 0.95))
    , smoothing_(smoothing) {}

std::vector<CursorSample> AutoPan::path(std::span<CursorSample const> cursor, VisibleFraction visible) const {
    if (cursor.empty()) return {};
    Axis across(visible.width, deadZone_, cursor.front().position.x);
    Axis down(visible.height, deadZone_, cursor.front().position.y);
    std::vector<CursorSample> path(cursor.begin(), cursor.end());
    for (auto& point : path) point.position = {across.follow(point.position.x), down.follow(point.position.y)};
    path = CursorSmoother(smoothing_, 0).smooth(path, {});
    for (auto& point : path) point.position = {across.inside(point.position.x), down.inside(point.position.y)};
    return path;
}

std::optional<UnitPoint2> AutoPan::centre(std::vector<CursorSample> const& path, double at) {
    return CursorSmoother::position(path, at);
}

}
