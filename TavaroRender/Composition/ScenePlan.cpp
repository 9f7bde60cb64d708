#include <TavaroRender/Composition/Private/ScenePlan.h>

#include <algorithm>
#include <limits>

namespace tavaro {

namespace {

constexpr double sceneSeconds = 0.5;
constexpr double moveSeconds = 0.6;
constexpr double beginning = 0.001; // seconds; a change that close to the start is how the edit starts

template<class Item> std::vector<Item const*> byTime(std::vector<Item> const& items) {
    std::vector<Item const*> sorted;
    for (auto const& item : items) {
        if (item.time == item.time) sorted.push_back(&item); // no time at all is no change
    }
    std::ranges::stable_sort(sorted, {}, [](Item const* item) { return item->time; });
    return sorted;
}

}

ScenePlan::ScenePlan(CameraPose const& base, std::vector<LayoutCue> const& cues, std::vector<CameraMove> const& moves) {
    constexpr double always = -std::numeric_limits<double>::infinity();
    steps_.push_back({always, 0, base});
    auto const add = [&](double time, double seconds, CameraPose const& pose) {
        if (pose == steps_.back().pose) return;
        if (time <= beginning)
            steps_.back().pose = pose;
        else
            steps_.push_back({time, seconds, pose});
    };
    auto const scenes = byTime(cues);
    auto const places = byTime(moves);
    auto scene = scenes.begin();
    auto place = places.begin();
    while (scene != scenes.end() || place != places.end()) {
        auto pose = steps_.back().pose;
        if (place == places.end() || (scene != scenes.end() && (*scene)->time <= (*place)->time)) {
            pose.scene = (*scene)->scene;
            add((*scene++)->time, sceneSeconds, pose);
        } else {
            pose.placement = (*place)->placement;
            pose.position = (*place)->position;
            add((*place++)->time, moveSeconds, pose);
        }
    }
}

std::span<ScenePlan::Step const> ScenePlan::underWay(double at) const {
    auto const end = std::ranges::upper_bound(steps_, at, {}, &Step::time);
    auto begin = end == steps_.begin() ? end : end - 1;
    while (begin != steps_.begin() && progress(*begin, at) < 1) --begin;
    return {begin, std::max(end, begin + 1)};
}

double ScenePlan::progress(Step const& step, double at) {
    if (!(step.seconds > 0)) return 1;
    double const t = std::clamp((at - step.time) / step.seconds, 0.0, 1.0);
    return t * t * t * (t * (6 * t - 15) + 10);
}

}
