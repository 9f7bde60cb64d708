#include <Tavaro/Studio/Timeline/TimelineHit.h>

#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

/// Points.
struct Reach {
    double edge = 7;     // inside of an item, at most a third of it
    double beside = 3;   // of an item, where nothing else is
    double playhead = 5; // of its head on the ruler
    double handle = 6;
};

constexpr Reach reachOf(TimelineHand hand) {
    return hand == TimelineHand::mouse ? Reach{} : Reach{.edge = 18, .beside = 14, .playhead = 18, .handle = 16};
}

constexpr double leastWidthWithEdges = 3;
// Narrower items are held by their edges and middle alone.
constexpr double leastWidthWithRamps = 72;
constexpr double leastHandle = 14; // of a handle from the edge, so that it can be told from that

struct Ramps {
    double in = 0;
    double out = 0;
};

std::optional<Ramps> rampsOf(TimelineScene const& scene, LaneItem const& item) {
    if (item.kind == LaneItemKind::zoom) {
        auto const& zoom = scene.project.zoomEvents[item.index];
        return Ramps{zoom.rampIn, zoom.rampOut};
    }
    return std::nullopt;
}

/// The box that is nearest, of those of the row around a time.
std::optional<LaneItem> nearest(LaneIndex const& index, std::size_t row, double time, double slack) {
    std::optional<LaneItem> best;
    double least = slack;
    for (auto const& item : index.row(row, {time - slack, 2 * slack})) {
        double const away = std::max({item.start - time, time - item.end, 0.0});
        // Where two meet, the second begins.
        if (away > least || (away == least && best && away > 0)) continue;
        best = item;
        least = away;
    }
    return best;
}

TimelinePart partOf(TimelineScene const& scene, LaneItem const& item, LaneBox const& box, double x, double y,
                    Reach const& reach) {
    bool const hasEdges = item.hold == LaneItemHold::free || item.hold == LaneItemHold::trimmable;
    if (!hasEdges || box.width < leastWidthWithEdges) return TimelinePart::body;
    if (auto const ramps = rampHandles(scene, item, box.width); ramps && y < box.y + box.height / 2) {
        if (std::abs(x - box.x - ramps->in) <= reach.handle) return TimelinePart::rampIn;
        if (std::abs(box.right() - ramps->out - x) <= reach.handle) return TimelinePart::rampOut;
    }
    double const edge = std::min(reach.edge, box.width / 3);
    bool const isLeading = x < box.x + edge, isTrailing = x >= box.right() - edge;
    // A card's other edge is where the film begins or ends.
    if (isLeading && item.id != outroCardID) return TimelinePart::leadingEdge;
    if (isTrailing && item.id != introCardID) return TimelinePart::trailingEdge;
    return TimelinePart::body;
}

std::optional<std::size_t> rowAt(TimelineScene const& scene, Lane const& lane, double y) {
    if (lane.index.isEmpty()) return std::nullopt;
    auto const first = scene.layout.box(scene.view, lane, 0, {});
    if (lane.rowPitch <= 0) return 0;
    double const row =
        std::clamp(std::floor((y - first.y) / lane.rowPitch), 0.0, static_cast<double>(lane.index.rowCount() - 1));
    return static_cast<std::size_t>(row);
}

void hitItem(TimelineScene const& scene, TimelineHit& hit, double x, double y, Reach const& reach) {
    auto const& lane = scene.layout.lanes()[hit.lane];
    auto const row = rowAt(scene, lane, y);
    if (!row) return;
    auto const item = nearest(lane.index, *row, hit.time, reach.beside * scene.view.secondsPerPoint());
    if (!item) return;
    hit.place = {hit.lane, *row, *item};
    hit.part = partOf(scene, *item, scene.layout.box(scene.view, hit.place), x, y, reach);
}

}

std::optional<RampHandles> rampHandles(TimelineScene const& scene, LaneItem const& item, double width) {
    auto const ramps = rampsOf(scene, item);
    if (!ramps || width < leastWidthWithRamps) return std::nullopt;
    auto const place = [&](double seconds) {
        return std::clamp(seconds / scene.view.secondsPerPoint(), leastHandle, width / 2 - leastHandle / 2);
    };
    return RampHandles{place(ramps->in), place(ramps->out)};
}

TimelineHit hitTest(TimelineScene const& scene, double x, double y, TimelineHand hand) {
    auto const reach = reachOf(hand);
    TimelineHit hit{.time = scene.view.time(x)};
    auto const lane = scene.layout.laneAt(scene.view, y);
    if (x < TimelineView::headerWidth) {
        if (lane) hit = {.part = TimelinePart::head, .time = hit.time, .lane = *lane};
        return hit;
    }
    if (y < TimelineView::rulerHeight) {
        bool const isPlayhead = std::abs(scene.view.x(scene.playhead) - x) <= reach.playhead;
        hit.part = isPlayhead ? TimelinePart::playhead : TimelinePart::ruler;
        return hit;
    }
    if (!lane) return hit;
    hit.part = TimelinePart::lane;
    hit.lane = *lane;
    hitItem(scene, hit, x, y, reach);
    return hit;
}

}
