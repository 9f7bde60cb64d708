#include <Tavaro/Studio/Timeline/LaneIndex.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
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

/// Lays a stretch of the rows out anew: from where an item was or will be, whichever comes first, to where the rows are
/// taken as they were before, so that everything behind stays.
///
///     before   -- --- X---- --- ------      X goes away, Y comes
///                  -----  -- ----
///     after    -- ---|-----Y------|------
///                  --|  -- ----   |         the stretch
///
class LaneIndex::Relay {
public:
    Relay(LaneIndex const& index, LaneItem const& gone, LaneItem const& come) : gone_(gone), come_(come) {
        auto const first = std::min(orderOf(gone), orderOf(come));
        for (std::size_t row = 0; row < index.rowCount(); ++row) {
            auto const items = index.row(row);
            auto const begin =
                static_cast<std::size_t>(std::ranges::lower_bound(items, first, {}, orderOf) - items.begin());
            double const until = begin > 0 ? items[begin - 1].end : never;
            rows_.push_back({items, begin, begin, until, until, {}});
        }
        while (step()) {
        }
    }

    /// The items row by row, and where each row begins.
    void write(std::vector<LaneItem>& items, std::vector<std::size_t>& begins) const {
        if (std::ranges::all_of(rows_, [](Row const& row) { return row.now.size() == row.next - row.begin; }))
            return writeInPlace(items, begins);
        std::vector<LaneItem> all;
        all.reserve(items.size());
        begins = {0};
        for (auto const& row : rows_) {
            auto const old = row.items;
            all.insert(all.end(), old.begin(), old.begin() + static_cast<std::ptrdiff_t>(row.begin));
            all.insert(all.end(), row.now.begin(), row.now.end());
            all.insert(all.end(), old.begin() + static_cast<std::ptrdiff_t>(row.next), old.end());
            if (all.size() > begins.back()) begins.push_back(all.size());
        }
        items = std::move(all);
    }

private:
    static constexpr double never = -std::numeric_limits<double>::infinity();

    struct Row {
        std::span<LaneItem const> items; // as they were
        std::size_t begin = 0;           // of the stretch
        std::size_t next = 0;            // its end, so far
        double wasUntil = never;         // when the row is free again, there: as it was and as it is
        double until = never;
        std::vector<LaneItem> now; // in the stretch
    };

    Row* earliest() {
        Row* found = nullptr;
        for (auto& row : rows_) {
            if (row.next == row.items.size()) continue;
            if (!found || orderOf(row.items[row.next]) < orderOf(found->items[found->next])) found = &row;
        }
        return found;
    }

    /// False when the rest is as it was.
    bool step() {
        auto* const row = earliest();
        bool const comesNow = !hasCome_ && (!row || orderOf(come_) < orderOf(row->items[row->next]));
        if (comesNow) {
            hasCome_ = true;
            lay(come_);
            return true;
        }
        if (!row) return false;
        auto const& item = row->items[row->next];
        if (hasCome_ && hasGone_ && isAsBefore(item.start)) return false;
        ++row->next;
        row->wasUntil = item.end;
        if (item.index == gone_.index && item.id == gone_.id)
            hasGone_ = true;
        else
            lay(item);
        return true;
    }

    bool isAsBefore(double start) const {
        return std::ranges::all_of(rows_, [&](Row const& row) {
            return row.until == row.wasUntil || std::max(row.until, row.wasUntil) <= start + touching;
        });
    }

    void lay(LaneItem const& item) {
        auto free = std::ranges::find_if(rows_, [&](Row const& row) { return row.until <= item.start + touching; });
        if (free == rows_.end()) free = rows_.insert(rows_.end(), Row{});
        free->until = item.end;
        free->now.push_back(item);
    }

    void writeInPlace(std::vector<LaneItem>& items, std::vector<std::size_t> const& begins) const {
        for (std::size_t row = 0; row < rows_.size(); ++row)
            std::ranges::copy(rows_[row].now,
                              items.begin() + static_cast<std::ptrdiff_t>(begins[row] + rows_[row].begin));
    }

    LaneItem gone_, come_;
    std::vector<Row> rows_;
    bool hasGone_ = false, hasCome_ = false;
};

bool LaneIndex::replace(LaneItem item) {
    auto const gone = std::ranges::find(items_, item.index, &LaneItem::index);
    if (gone == items_.end() || !isFinite(item)) return false;
    item.end = std::max(item.start, item.end);
    Relay(*this, *gone, item).write(items_, rows_);
    return true;
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
