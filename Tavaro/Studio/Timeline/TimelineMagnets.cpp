#include <Tavaro/Studio/Timeline/TimelineMagnets.h>

#include <cmath>

namespace tavaro {

namespace {

class Nearest {
public:
    Nearest(double time, double radius) : time_(time), away_(radius) {}

    void add(double magnet) {
        double const away = std::abs(magnet - time_);
        if (away > away_ || (found_ && away == away_)) return;
        away_ = away;
        found_ = magnet;
    }
    std::optional<double> found() const { return found_; }

private:
    double time_;
    double away_;
    std::optional<double> found_;
};

}

std::optional<double> TimelineMagnets::nearest(double time) const {
    Nearest nearest(time, radius);
    nearest.add(playhead);
    nearest.add(0);
    nearest.add(layout.content().start);
    nearest.add(layout.content().end());
    TimeRange const around{time - radius, 2 * radius};
    for (auto const& lane : layout.lanes()) {
        for (std::size_t row = 0; row < lane.index.rowCount(); ++row) {
            for (auto const& item : lane.index.row(row, around)) {
                if (isLeftOut && isLeftOut(item)) continue;
                nearest.add(item.start);
                nearest.add(item.end);
            }
        }
    }
    return nearest.found();
}

}
