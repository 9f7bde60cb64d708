#pragma once

#include <Tavaro/Studio/Timeline/LaneIndex.h>
#include <Tavaro/Studio/Timeline/TimelineView.h>

#include <TavaroCore/History/ChangedFields.h>

#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

struct ItemPlace;

/// A place in points of the timeline, whose top-left corner is 0, 0.
struct LaneBox {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double right() const { return x + width; }
    double bottom() const { return y + height; }
    bool contains(double px, double py) const { return x <= px && px < right() && y <= py && py < bottom(); }
    bool meets(LaneBox const& other) const {
        return x < other.right() && other.x < right() && y < other.bottom() && other.y < bottom();
    }
    bool operator==(LaneBox const&) const = default;
};

/// One lane: its items in rows, and where it is below the ruler when nothing is scrolled.
struct Lane {
    LaneKind kind = LaneKind::film;
    std::optional<UUID> track; // of sound
    std::uint32_t trackIndex = 0;
    std::string key;  // the same lane in the next revision and the next window: "zooms", "sound 1"
    std::string name; // for its head
    bool isMuted = false;
    bool isCollapsed = false;
    LaneIndex index;
    double top = 0;
    double height = 0;
    double rowHeight = 0;
    double rowPitch = 0; // from row to row; 0 where all are drawn into one
};

/// Where an item is among the lanes.
struct LanePlace {
    std::size_t lane = 0;
    std::size_t row = 0;
    LaneItem item;
};

/// The lanes of a document, one below the other. A value of times and rows alone: where that is in points follows from
/// a `TimelineView`. Lanes without anything in them are left out, but for the film and the zooms.
class TimelineLayout {
public:
    /// Makes anew the lanes of what changed; all of them the first time. Costs by the lists that changed.
    void show(DemoProject const& project, ChangedFields const& changed);
    void show(DemoProject const& project);
    /// After a change of nothing but the inside of these items; costs by those.
    void show(DemoProject const& project, ChangedFields const& changed, std::span<ItemPlace const> items);
    /// Lanes by their keys.
    void collapse(std::set<std::string> keys);
    std::set<std::string> const& collapsed() const { return collapsed_; }

    std::vector<Lane> const& lanes() const { return lanes_; }
    /// Of all lanes together.
    double height() const { return height_; }
    /// The film with its cards.
    TimeRange content() const { return content_; }

    LaneBox box(TimelineView const& view, Lane const& lane, std::size_t row, TimeRange const& range) const;
    LaneBox box(TimelineView const& view, LanePlace const& place) const;
    /// The lane there, scrolled as the view is; none above the first, between two and below the last.
    std::optional<std::size_t> laneAt(TimelineView const& view, double y) const;
    /// The lanes in view, as a range of their numbers.
    std::pair<std::size_t, std::size_t> lanesInView(TimelineView const& view) const;
    /// A lane's rows in view.
    std::pair<std::size_t, std::size_t> rowsInView(TimelineView const& view, Lane const& lane) const;

    /// The first box of that thing.
    std::optional<LanePlace> find(UUID const& id) const;
    /// The things that a box of points touches, each once.
    std::set<UUID> within(TimelineView const& view, LaneBox const& box) const;

private:
    bool replace(DemoProject const& project, ItemPlace const& place);
    void rebuild(DemoProject const& project, ChangedFields const* changed);
    void place();

    std::vector<Lane> lanes_;
    std::set<std::string> collapsed_;
    TimeRange content_;
    double height_ = 0;
};

}
