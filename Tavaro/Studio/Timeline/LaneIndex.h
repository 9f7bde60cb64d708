#pragma once

#include <Tavaro/Studio/Timeline/LaneItem.h>

#include <TavaroCore/Values/TimeRange.h>

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace tavaro {

/// Neighbours of a row that are too narrow to tell apart, or one item.
struct LaneBlock {
    std::size_t first = 0; // in the row
    std::size_t count = 0;
    double start = 0; // output seconds
    double end = 0;
};

/// The items of a lane in rows, so that none of a row overlaps another: each takes the lowest row that is free where it
/// begins. The same items are in the same rows, however they were listed. What is in view is found in logarithmic time.
class LaneIndex {
public:
    LaneIndex() = default;
    /// Items without finite times are left out. O(n log n).
    explicit LaneIndex(std::vector<LaneItem> items);

    /// The item of that place in its list is another one, or at another time; false, with nothing changed, where it is
    /// not here or has no finite times. The rows are as if all were laid out anew, at the cost of the items that the
    /// change can reach.
    bool replace(LaneItem item);

    std::size_t size() const { return items_.size(); }
    bool isEmpty() const { return items_.empty(); }
    std::size_t rowCount() const { return rows_.empty() ? 0 : rows_.size() - 1; }

    /// A row's items, ascending.
    std::span<LaneItem const> row(std::size_t row) const;
    /// Those that a span of time touches.
    std::span<LaneItem const> row(std::size_t row, TimeRange const& within) const;
    std::span<LaneItem const> items() const { return items_; }

    /// What a row shows of a span of time: items narrower than `least` seconds that are no more than `gap` apart are
    /// one block. Costs by what can be told apart, not by how many items there are.
    std::vector<LaneBlock> blocks(std::size_t row, TimeRange const& within, double least, double gap) const;

    /// The items' span of time; none without items.
    std::optional<TimeRange> extent() const;

private:
    class Relay;

    std::vector<LaneItem> items_;   // row by row
    std::vector<std::size_t> rows_; // where each row begins in it, and the end
};

}
