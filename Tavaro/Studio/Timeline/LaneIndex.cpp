#include <Tavaro/Studio/Timeline/LaneIndex.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <queue>
#include <tuple>
#include <utility>

namespace tavaro {

namespace {

// Items that meet are laid out beside each other, whatever rounding has made of their ends.
constexpr double touching = 1e-6;

/// Which rows are taken until when. Both heaps give the lowest first.
class Rows {
public:
    std::size_t take(LaneItem const& item) {
        while (!busy_.empty() && busy_.top().first <= item.start + touching) {
            free_.push(busy_.top().second);
            busy_.pop();
        }
        if (free_.empty()) free_.push(count_++);
        auto const row = free_.top();
        free_.pop();
        busy_.emplace(item.end, row);
        return row;
    }
    std::size_t count() const { return count_; }

private:
    template<class T> using LowestFirst = std::priority_queue<T, std::vector<T>, std::greater<>>;
    LowestFirst<std::pair<double, std::size_t>> busy_; // until when, and the row
    LowestFirst<std::size_t> free_;
    std::size_t count_ = 0;
};

bool isFinite(LaneItem const& item) { return std::isfinite(item.start) && std::isfinite(item.end); }

auto orderOf(LaneItem const& item) { return std::tuple(item.start, -item.end, item.id); }

}

LaneIndex::LaneIndex(std::vector<LaneItem> items) {
    std::erase_if(items, std::not_fn(isFinite));
    for (auto& item : items) item.end = std::max(item.start, item.end);
    std::ranges::sort(items, {}, orderOf);
    Rows rows;
    std::vector<std::size_t> rowOf;
    rowOf.reserve(items.size());
    for (auto const& item : items) rowOf.push_back(rows.take(item));
    rows_.assign(rows.count() + 1, 0);
    for (auto const row : rowOf) ++rows_[row + 1];
    for (std::size_t row = 1; row < rows_.size(); ++row) rows_[row] += rows_[row - 1];
    items_.resize(items.size());
    auto next = rows_;
    for (std::size_t i = 0; i < items.size(); ++i) items_[next[rowOf[i]]++] = items[i];
}

std::span<LaneItem const> LaneIndex::row(std::size_t row) const {
    return std::span(items_).subspan(rows_[row], rows_[row + 1] - rows_[row]);
}

std::span<LaneItem const> LaneIndex::row(std::size_t row, TimeRange const& within) const {
    auto const all = this->row(row);
    auto const first = std::ranges::lower_bound(all, within.start, {}, &LaneItem::end);
    auto const last = std::ranges::upper_bound(first, all.end(), within.end(), {}, &LaneItem::start);
    return {first, last};
}

std::vector<LaneBlock> LaneIndex::blocks(std::size_t row, TimeRange const& within, double least, double gap) const {
    auto const all = this->row(row);
    auto const shown = this->row(row, within);
    std::vector<LaneBlock> blocks;
    auto const end = shown.end();
    for (auto item = shown.begin(); item != end;) {
        auto const first = item++;
        double until = first->end;
        bool const isNarrow = first->duration() < least;
        while (isNarrow && item != end && item->start <= until + gap && item->duration() < least) {
            // All that begin before the gap are over: but for the last, each ends where the next one begins.
            auto const next = std::ranges::upper_bound(item, end, until + gap, {}, &LaneItem::start);
            item = (next - 1)->duration() < least ? next : next - 1;
            until = std::max(until, (item - 1)->end);
        }
        blocks.push_back({static_cast<std::size_t>(&*first - all.data()), static_cast<std::size_t>(item - first),
                          first->start, until});
    }
    return blocks;
}

std::optional<TimeRange> LaneIndex::extent() const {
    if (isEmpty()) return std::nullopt;
    double start = items_.front().start, end = items_.front().end;
    for (std::size_t row = 0; row < rowCount(); ++row) {
        start = std::min(start, this->row(row).front().start);
        end = std::max(end, this->row(row).back().end);
    }
    return TimeRange{start, end - start};
}

}
