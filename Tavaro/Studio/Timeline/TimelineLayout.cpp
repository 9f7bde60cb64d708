#include <Tavaro/Studio/Timeline/TimelineLayout.h>

#include <Tavaro/Studio/Timeline/LaneContents.h>

#include <TavaroCore/History/ItemEdit.h>
#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include <fmt/format.h>

namespace tavaro {

namespace {

constexpr double laneGap = 6;     // points between lanes
constexpr double rowGap = 3;      // between rows of a lane
constexpr double lanePadding = 3; // above and below a lane's rows
constexpr double collapsedHeight = 10;
// Many rows are drawn lower, so that the lane stays one that can be looked over.
constexpr std::size_t rowsAtFullHeight = 3;
constexpr double lowestRow = 14;
// More items than that are not laid out one by one.
constexpr std::size_t fewItems = 32;

double rowHeightOf(LaneKind kind) {
    switch (kind) {
    case LaneKind::film: return 60;
    case LaneKind::sound: return 46;
    case LaneKind::silences: return 18;
    case LaneKind::redactions: return 20;
    default: return 26;
    }
}

bool isAlwaysShown(LaneKind kind) { return kind == LaneKind::film || kind == LaneKind::zooms; }

bool isTouched(LaneKind kind, ChangedFields const* changed) {
    return !changed || std::ranges::any_of(fieldsOf(kind), [&](auto field) { return changed->contains(field); });
}

Lane soundLane(AudioTrack const& track, std::uint32_t index) {
    return {.kind = LaneKind::sound,
            .track = track.id,
            .trackIndex = index,
            .key = fmt::format("sound {}", index + 1),
            .name = laneName(track),
            .isMuted = track.isMuted,
            .index = LaneIndex(soundItems(track))};
}

void appendLanes(std::vector<Lane>& lanes, DemoProject const& project, LaneKind kind) {
    if (kind == LaneKind::sound) {
        for (std::uint32_t index = 0; auto const& track : project.audioTracks) {
            if (!track.clips.empty()) lanes.push_back(soundLane(track, index));
            ++index;
        }
        return;
    }
    Lane lane{.kind = kind,
              .key = std::string(nameOf(kind)),
              .name = laneName(kind),
              .index = LaneIndex(laneItems(project, kind))};
    if (!lane.index.isEmpty() || isAlwaysShown(kind)) lanes.push_back(std::move(lane));
}

void measure(Lane& lane) {
    auto const rows = std::max<std::size_t>(lane.index.rowCount(), 1);
    if (lane.isCollapsed) {
        lane.rowHeight = collapsedHeight - 4;
        lane.rowPitch = 0;
        lane.height = collapsedHeight;
        return;
    }
    double const full = rowHeightOf(lane.kind);
    lane.rowHeight = rows <= rowsAtFullHeight ? full : std::min(full, lowestRow);
    lane.rowPitch = lane.rowHeight + rowGap;
    lane.height = 2 * lanePadding + lane.rowHeight + lane.rowPitch * static_cast<double>(rows - 1);
}

}

void TimelineLayout::show(DemoProject const& project, ChangedFields const& changed) { rebuild(project, &changed); }

void TimelineLayout::show(DemoProject const& project) { rebuild(project, nullptr); }

void TimelineLayout::show(DemoProject const& project, ChangedFields const& changed, std::span<ItemPlace const> items) {
    bool const isFew = !items.empty() && items.size() <= fewItems;
    if (!isFew || !std::ranges::all_of(items, [&](auto const& each) { return replace(project, each); }))
        return rebuild(project, &changed);
    place();
}

/// False where its lane is to be made anew.
bool TimelineLayout::replace(DemoProject const& project, ItemPlace const& place) {
    auto const box = laneItem(project, place);
    auto const lane = std::ranges::find(lanes_, box.lane, &Lane::kind);
    return lane != lanes_.end() && lane->index.replace(box.item);
}

void TimelineLayout::rebuild(DemoProject const& project, ChangedFields const* changed) {
    if (lanes_.empty()) changed = nullptr;
    std::vector<Lane> lanes;
    for (std::size_t kind = 0; kind < namesOf(LaneKind{}).size(); ++kind) {
        auto const each = static_cast<LaneKind>(kind);
        if (isTouched(each, changed)) {
            appendLanes(lanes, project, each);
            continue;
        }
        for (auto& lane : lanes_) {
            if (lane.kind == each) lanes.push_back(std::move(lane));
        }
    }
    lanes_ = std::move(lanes);
    content_ = presentationRange(project);
    place();
}

void TimelineLayout::collapse(std::set<std::string> keys) {
    collapsed_ = std::move(keys);
    place();
}

void TimelineLayout::place() {
    double top = laneGap;
    for (auto& lane : lanes_) {
        lane.isCollapsed = collapsed_.contains(lane.key);
        measure(lane);
        lane.top = top;
        top += lane.height + laneGap;
    }
    height_ = top;
}

LaneBox TimelineLayout::box(TimelineView const& view, Lane const& lane, std::size_t row, TimeRange const& range) const {
    double const padding = lane.isCollapsed ? (lane.height - lane.rowHeight) / 2 : lanePadding;
    double const y =
        TimelineView::rulerHeight - view.scrollY() + lane.top + padding + lane.rowPitch * static_cast<double>(row);
    double const x = view.x(range.start);
    return {x, y, view.x(range.end()) - x, lane.rowHeight};
}

LaneBox TimelineLayout::box(TimelineView const& view, LanePlace const& place) const {
    return box(view, lanes_[place.lane], place.row, {place.item.start, place.item.duration()});
}

std::optional<std::size_t> TimelineLayout::laneAt(TimelineView const& view, double y) const {
    double const down = y - TimelineView::rulerHeight + view.scrollY();
    if (y < TimelineView::rulerHeight) return std::nullopt;
    auto const after = std::ranges::upper_bound(lanes_, down, {}, &Lane::top);
    if (after == lanes_.begin() || down >= (after - 1)->top + (after - 1)->height) return std::nullopt;
    return static_cast<std::size_t>(after - 1 - lanes_.begin());
}

std::pair<std::size_t, std::size_t> TimelineLayout::lanesInView(TimelineView const& view) const {
    double const top = view.scrollY(), bottom = top + view.height() - TimelineView::rulerHeight;
    auto const first =
        std::ranges::partition_point(lanes_, [&](Lane const& lane) { return lane.top + lane.height <= top; });
    auto const last = std::ranges::partition_point(lanes_, [&](Lane const& lane) { return lane.top < bottom; });
    return {first - lanes_.begin(), std::max(first, last) - lanes_.begin()};
}

std::pair<std::size_t, std::size_t> TimelineLayout::rowsInView(TimelineView const& view, Lane const& lane) const {
    auto const rows = lane.index.rowCount();
    if (lane.rowPitch <= 0 || rows == 0) return {0, rows};
    double const top = view.scrollY() - lane.top - lanePadding;
    double const bottom = top + view.height() - TimelineView::rulerHeight;
    auto const rowAt = [&](double y) {
        return static_cast<std::size_t>(std::clamp(std::floor(y / lane.rowPitch), 0.0, static_cast<double>(rows)));
    };
    return {rowAt(top), std::min(rows, rowAt(bottom) + 1)};
}

std::optional<LanePlace> TimelineLayout::find(UUID const& id) const {
    for (std::size_t lane = 0; lane < lanes_.size(); ++lane) {
        auto const& index = lanes_[lane].index;
        for (std::size_t row = 0; row < index.rowCount(); ++row) {
            auto const items = index.row(row);
            auto const item = std::ranges::find(items, id, &LaneItem::id);
            if (item != items.end()) return LanePlace{lane, row, *item};
        }
    }
    return std::nullopt;
}

std::set<UUID> TimelineLayout::within(TimelineView const& view, LaneBox const& area) const {
    std::set<UUID> ids;
    TimeRange const range{view.time(area.x), area.width * view.secondsPerPoint()};
    for (auto const& lane : lanes_) {
        for (std::size_t row = 0; row < lane.index.rowCount(); ++row) {
            auto const band = box(view, lane, row, range);
            if (band.y >= area.bottom() || area.y >= band.bottom()) continue;
            for (auto const& item : lane.index.row(row, range)) ids.insert(item.id);
        }
    }
    return ids;
}

}
