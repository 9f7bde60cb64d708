#include <TavaroCore/Direction/Private/ScreenActivity.h>

#include <TavaroCore/Recording/RecordingMetadata.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr double clickWeight = 0.5; // in widths of the frame that the pointer travels
constexpr double keyWeight = 0.05;

// The part of the frame, from a corner, that a camera bubble there covers with some room around it.
constexpr double reachX = 0.32;
constexpr double reachY = 0.42;

bool isNear(CameraPlacement corner, UnitPoint2 const& point) {
    bool const isLeft = corner == CameraPlacement::bottomLeft || corner == CameraPlacement::topLeft;
    bool const isTop = corner == CameraPlacement::topLeft || corner == CameraPlacement::topRight;
    return (isLeft ? point.x : 1 - point.x) < reachX && (isTop ? point.y : 1 - point.y) < reachY;
}

}

ScreenActivity::ScreenActivity(RecordingMetadata const& recording) {
    auto const& samples = recording.cursorSamples;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        auto const& from = samples[i - 1].position;
        auto const& to = samples[i].position;
        double const travel = std::hypot(to.x - from.x, to.y - from.y);
        if (travel > 0) moments_.push_back({samples[i].t, to, travel});
    }
    for (auto const& click : recording.clicks) moments_.push_back({click.t, click.position, clickWeight});
    // What is typed appears where was clicked last.
    auto lastClick = recording.clicks.begin();
    for (auto const& stroke : recording.keystrokes) {
        while (lastClick != recording.clicks.end() && lastClick->t <= stroke.t) ++lastClick;
        if (lastClick == recording.clicks.begin()) continue;
        moments_.push_back({stroke.t, std::prev(lastClick)->position, keyWeight});
    }
    std::stable_sort(moments_.begin(), moments_.end(), [](auto const& a, auto const& b) { return a.t < b.t; });
}

std::array<double, 4> ScreenActivity::nearCorners(TimeRange const& range) const {
    std::array<double, 4> amounts{};
    auto moment = std::lower_bound(moments_.begin(), moments_.end(), range.start,
                                   [](Moment const& m, double t) { return m.t < t; });
    for (; moment != moments_.end() && moment->t < range.end(); ++moment) {
        for (std::size_t i = 0; i < corners.size(); ++i) {
            if (isNear(corners[i], moment->position)) amounts[i] += moment->weight;
        }
    }
    return amounts;
}

CameraPlacement ScreenActivity::quietestCorner(TimeRange const& range) const {
    auto const amounts = nearCorners(range);
    return corners[static_cast<std::size_t>(std::min_element(amounts.begin(), amounts.end()) - amounts.begin())];
}

}
