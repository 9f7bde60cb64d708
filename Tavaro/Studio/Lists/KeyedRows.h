#pragma once

#include <Tavaro/Studio/Lists/LongestRise.h>
#include <Tavaro/Studio/Lists/RowsModel.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace tavaro {

/// Rows that are known by a key, over something that changes elsewhere. The model keeps a key and a hash for each row
/// and none of what is shown; `showRows` compares both with what is there now, and tells views of the least that is
/// different: rows removed, moved, inserted, changed. Linear in the rows, without any cost for each where the keys are
/// the same as before.
///
/// While views are being told, a row may stand elsewhere than what it shows, or show what is gone: `data` of a derived
/// class finds it by its key.
template<class Key, class Hash = std::hash<Key>> class KeyedRows : public RowsModel {
public:
    struct Row {
        Key key;
        std::size_t content = 0; // a hash of what the row shows
    };

    int rowCount(QModelIndex const& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(rows_.size());
    }
    Key const& key(int row) const { return rows_[static_cast<std::size_t>(row)].key; }
    /// None when no row has that key.
    std::optional<int> rowOf(Key const& key) const {
        auto const found = std::ranges::find(rows_, key, &Row::key);
        if (found == rows_.end()) return std::nullopt;
        return static_cast<int>(found - rows_.begin());
    }

protected:
    void showRows(std::vector<Row> const& now) {
        auto const before = rows_.size();
        if (!std::ranges::equal(rows_, now, {}, &Row::key, &Row::key)) arrange(now);
        tellOfChanges(now);
        if (rows_.size() != before) Q_EMIT countChanged();
    }
    /// The same where one row shows something else, and nothing else is different.
    void showRow(int row, std::size_t content) {
        auto& shown = rows_.at(static_cast<std::size_t>(row));
        if (std::exchange(shown.content, content) != content) Q_EMIT dataChanged(index(row), index(row));
    }

private:
    /// More rows than that are not moved one by one: views then look at the whole order anew.
    static constexpr std::size_t mostMoves = 32;
    static constexpr auto nowhere = static_cast<std::size_t>(-1);

    /// The rows between those that both lists begin and end with: only there is anything to arrange.
    struct Middle {
        std::vector<Row> const& now;
        std::size_t begin = 0;
        std::size_t end = 0; // in `now`
        std::unordered_map<Key, std::size_t, Hash> places;

        std::size_t place(Key const& key) const {
            auto const found = places.find(key);
            return found == places.end() ? nowhere : found->second;
        }
    };

    Middle middleOf(std::vector<Row> const& now) const {
        auto const shorter = std::min(rows_.size(), now.size());
        std::size_t begin = 0, behind = 0;
        while (begin < shorter && rows_[begin].key == now[begin].key) ++begin;
        while (behind < shorter - begin && rows_[rows_.size() - 1 - behind].key == now[now.size() - 1 - behind].key)
            ++behind;
        Middle middle{now, begin, now.size() - behind, {}};
        middle.places.reserve(middle.end - begin);
        for (auto i = begin; i < middle.end; ++i) middle.places.emplace(now[i].key, i);
        return middle;
    }

    void arrange(std::vector<Row> const& now) {
        auto const middle = middleOf(now);
        auto const oldEnd = rows_.size() - (now.size() - middle.end);
        if (middle.places.size() != middle.end - middle.begin || hasTwins(middle, oldEnd)) return startAnew(now);
        order(middle, remove(middle, oldEnd));
        insert(middle);
    }

    /// A document from elsewhere may have two items of one identity; there is no telling which is which.
    bool hasTwins(Middle const& middle, std::size_t oldEnd) const {
        std::unordered_set<Key, Hash> seen;
        seen.reserve(oldEnd - middle.begin);
        for (auto i = middle.begin; i < oldEnd; ++i) {
            if (!seen.insert(rows_[i].key).second) return true;
        }
        return false;
    }

    void startAnew(std::vector<Row> const& now) {
        beginResetModel();
        rows_ = now;
        endResetModel();
    }

    auto at(std::size_t row) { return rows_.begin() + static_cast<std::ptrdiff_t>(row); }

    /// Where the middle then ends.
    std::size_t remove(Middle const& middle, std::size_t end) {
        auto const isGone = [&](std::size_t row) { return middle.place(rows_[row].key) == nowhere; };
        for (auto last = end; last > middle.begin;) {
            auto first = last;
            while (first > middle.begin && isGone(first - 1)) --first;
            if (first == last) {
                --last;
                continue;
            }
            beginRemoveRows({}, static_cast<int>(first), static_cast<int>(last - 1));
            rows_.erase(at(first), at(last));
            endRemoveRows();
            end -= last - first;
            last = first;
        }
        return end;
    }

    /// The rows that stay, in their new order: all but a longest ascending subsequence move.
    void order(Middle const& middle, std::size_t end) {
        std::vector<std::size_t> places;
        for (auto i = middle.begin; i < end; ++i) places.push_back(middle.place(rows_[i].key));
        if (std::ranges::is_sorted(places)) return;
        auto const stays = longestRise(places);
        std::vector<std::size_t> movers;
        for (std::size_t i = 0; i < places.size(); ++i) {
            if (!stays[i]) movers.push_back(places[i]);
        }
        if (movers.size() > mostMoves) return sortAll(middle, end);
        std::ranges::sort(movers);
        auto ordered = places;
        std::ranges::sort(ordered);
        for (auto const mover : movers) move(middle, ordered, mover);
    }

    /// Puts a row right behind the one that comes before it in the new order, which is in its place by now.
    void move(Middle const& middle, std::vector<std::size_t> const& ordered, std::size_t mover) {
        auto const rowShowing = [&](std::size_t place) {
            return static_cast<std::size_t>(
                std::ranges::find(at(middle.begin), rows_.end(), middle.now[place].key, &Row::key) - rows_.begin());
        };
        auto const rank = std::ranges::lower_bound(ordered, mover);
        auto const from = rowShowing(mover);
        auto const to = rank == ordered.begin() ? middle.begin : rowShowing(*std::prev(rank)) + 1;
        if (!beginMoveRows({}, static_cast<int>(from), static_cast<int>(from), {}, static_cast<int>(to))) return;
        if (from < to)
            std::rotate(at(from), at(from + 1), at(to));
        else
            std::rotate(at(to), at(from), at(from + 1));
        endMoveRows();
    }

    void sortAll(Middle const& middle, std::size_t end) {
        Q_EMIT layoutAboutToBeChanged();
        auto const kept = persistentIndexList();
        std::vector<Key> keys;
        for (auto const& index : kept) keys.push_back(key(index.row()));
        std::ranges::sort(at(middle.begin), at(end), {}, [&](Row const& row) { return middle.place(row.key); });
        std::unordered_map<Key, int, Hash> rows;
        for (std::size_t i = 0; i < rows_.size(); ++i) rows.emplace(rows_[i].key, static_cast<int>(i));
        for (std::size_t i = 0; i < keys.size(); ++i) {
            auto const& old = kept[static_cast<qsizetype>(i)];
            changePersistentIndex(old, index(rows.at(keys[i]), old.column()));
        }
        Q_EMIT layoutChanged();
    }

    void insert(Middle const& middle) {
        for (auto first = middle.begin; first < middle.end;) {
            auto const isNew = [&](std::size_t place) {
                return place < middle.end && (first == rows_.size() || !(middle.now[place].key == rows_[first].key));
            };
            auto last = first;
            while (isNew(last)) ++last;
            if (first == last) {
                ++first;
                continue;
            }
            beginInsertRows({}, static_cast<int>(first), static_cast<int>(last - 1));
            rows_.insert(at(first), middle.now.begin() + static_cast<std::ptrdiff_t>(first),
                         middle.now.begin() + static_cast<std::ptrdiff_t>(last));
            endInsertRows();
            first = last;
        }
    }

    void tellOfChanges(std::vector<Row> const& now) {
        for (std::size_t first = 0; first < rows_.size(); ++first) {
            auto last = first;
            while (last < rows_.size() && rows_[last].content != now[last].content) {
                rows_[last].content = now[last].content;
                ++last;
            }
            if (first == last) continue;
            Q_EMIT dataChanged(index(static_cast<int>(first)), index(static_cast<int>(last - 1)));
            first = last;
        }
    }

    std::vector<Row> rows_;
};

}
