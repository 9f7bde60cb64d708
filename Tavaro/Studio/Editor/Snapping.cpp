#include <Tavaro/Studio/Editor/Snapping.h>

#include <Tavaro/Studio/Lists/DocumentItems.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

SnapKind edgesOf(ItemKind kind) {
    if (kind == ItemKind::clip) return SnapKind::clipEdge;
    return kind == ItemKind::caption ? SnapKind::captionEdge : SnapKind::itemEdge;
}

double toFrame(double time, double framesASecond) {
    return framesASecond > 0 ? std::round(time * framesASecond) / framesASecond : time;
}

}

SnapTargets::SnapTargets(DemoProject const& project, double playhead, std::span<UUID const> dragged)
    : targets_{{playhead, SnapKind::playhead}, {0, SnapKind::filmEdge}, {project.duration(), SnapKind::filmEdge}} {
    std::vector<UUID> moving(dragged.begin(), dragged.end());
    std::ranges::sort(moving);
    forEachItem(project, [&](auto const& item) {
        auto const place = placeOf(item);
        if (!place || std::ranges::binary_search(moving, item.id)) return;
        auto const kind = edgesOf(kindOf(item));
        targets_.push_back({place->start, kind});
        if (place->duration > 0) targets_.push_back({place->end(), kind});
    });
    std::ranges::sort(targets_, [](SnapTarget const& a, SnapTarget const& b) {
        return a.time != b.time ? a.time < b.time : a.kind < b.kind;
    });
}

SnapTarget const* SnapTargets::nearest(double time, double radius) const {
    auto const after = std::ranges::lower_bound(targets_, time, {}, &SnapTarget::time);
    auto best = after;
    if (after != targets_.begin()) {
        // The first of those at that time, which is the one that counts.
        auto const before = std::ranges::lower_bound(targets_, std::prev(after)->time, {}, &SnapTarget::time);
        auto const isNearer = after == targets_.end() || time - before->time < after->time - time;
        auto const isAsNear = after != targets_.end() && time - before->time == after->time - time;
        if (isNearer || (isAsNear && before->kind < after->kind)) best = before;
    }
    if (best == targets_.end() || std::abs(best->time - time) > radius) return nullptr;
    return &*best;
}

Snap SnapTargets::snap(std::span<double const> edges, double radius, double framesASecond) const {
    std::optional<Snap> best;
    for (auto const edge : edges) {
        auto const* target = nearest(edge, radius);
        if (!target) continue;
        auto const by = target->time - edge;
        bool const isBetter = !best || std::abs(by) < std::abs(best->by) ||
                              (std::abs(by) == std::abs(best->by) && target->kind < best->target.kind);
        if (isBetter) best = Snap{by, *target};
    }
    if (best) return *best;
    if (edges.empty()) return {};
    auto const frame = toFrame(edges.front(), framesASecond);
    return {frame - edges.front(), {frame, SnapKind::frame}};
}

}
