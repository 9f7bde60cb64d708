#include <TavaroRender/Composition/Private/CameraDodge.h>

#include <algorithm>
#include <array>
#include <limits>

namespace tavaro {

namespace {

constexpr double tick = 0.25;               // seconds between two looks
constexpr std::size_t ahead = 4;            // ticks: what makes the bubble leave lies in them
constexpr std::size_t disturbed = 2;        // of those ticks
constexpr std::size_t horizon = 16;         // ticks: a place is judged by what will happen there
constexpr std::size_t homeFree = 12;        // ticks that home must be free before the bubble returns
constexpr double shortestStay = 3;          // seconds
constexpr double margin = 0.18;             // around the bubble, a share of its height: nearly under it is under it
constexpr double mostTicks = 4 * 3600 * 24; // of a day; nothing dodges later

struct Dodger {
    DodgeScene const& scene;
    std::vector<std::vector<CanvasPoint>> busy; // by tick

    explicit Dodger(DodgeScene const& scene) : scene(scene) {
        auto const ticks = static_cast<std::size_t>(std::clamp(scene.duration / tick, 0.0, mostTicks)) + 1;
        busy.resize(ticks);
        for (std::size_t i = 0; i < ticks; ++i) scene.busyPoints(static_cast<double>(i) * tick, busy[i]);
    }

    /// Ticks of the `count` from `first` on in which work lies under the pose's bubble.
    std::size_t disturbance(CameraPose const& pose, std::size_t first, std::size_t count) const {
        auto const bubble = scene.bubble(pose);
        double const reach = bubble.height * margin;
        std::size_t disturbed = 0;
        for (auto i = first; i < std::min(first + count, busy.size()); ++i) {
            disturbed += std::ranges::any_of(busy[i], [&](CanvasPoint p) { return bubble.distance(p) <= reach; });
        }
        return disturbed;
    }

    double distance(CameraPose const& a, CameraPose const& b) const {
        return (scene.bubble(a).center() - scene.bubble(b).center()).length();
    }

    /// The quietest place for the coming seconds, of equally quiet ones the nearest; `place` itself where no other is
    /// so much quieter that a move pays.
    CameraPose quietest(CameraPose const& place, CameraPose const& home, std::size_t first) const {
        auto best = place;
        auto least = disturbance(place, first, horizon) / 3;
        double nearest = std::numeric_limits<double>::infinity();
        auto const consider = [&](CameraPose const& pose) {
            auto const there = disturbance(pose, first, horizon);
            double const way = distance(place, pose);
            if (pose == place || there > least || (there == least && way >= nearest)) return;
            best = pose;
            least = there;
            nearest = way;
        };
        consider(home);
        for (auto const corner : {CameraPlacement::bottomRight, CameraPlacement::bottomLeft, CameraPlacement::topRight,
                                  CameraPlacement::topLeft}) {
            consider({.scene = home.scene, .placement = corner, .position = {}});
        }
        return best;
    }
};

CameraMove moveTo(CameraPose const& pose, double time) {
    return {.id = {}, .time = time, .placement = pose.placement, .position = pose.position, .isAutomatic = true};
}

}

std::vector<CameraMove> dodgingMoves(DodgeScene const& scene, CameraPose const& first,
                                     std::vector<CameraMove> const& moves) {
    auto homes = moves;
    std::ranges::stable_sort(homes, {}, &CameraMove::time);
    Dodger const dodger(scene);
    std::vector<CameraMove> result;
    auto home = first;
    auto place = first;
    double since = -std::numeric_limits<double>::infinity();
    auto next = homes.begin();
    for (std::size_t i = 0; i < dodger.busy.size(); ++i) {
        double const at = static_cast<double>(i) * tick;
        for (; next != homes.end() && next->time <= at; ++next) {
            home.placement = next->placement;
            home.position = next->position;
            place = home;
            since = next->time;
            result.push_back(*next);
        }
        if (at - since < shortestStay) continue;
        auto wanted = place;
        if (dodger.disturbance(place, i, ahead) >= disturbed)
            wanted = dodger.quietest(place, home, i);
        else if (place != home && dodger.disturbance(home, i, homeFree) == 0)
            wanted = home;
        if (wanted == place) continue;
        place = wanted;
        since = at;
        result.push_back(moveTo(place, at));
    }
    result.insert(result.end(), next, homes.end());
    return result;
}

}
