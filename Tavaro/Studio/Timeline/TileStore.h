#pragma once

#include <TavaroPlatform/Queues/SerialQueue.h>

#include <QImage>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tavaro {

/// Pictures that are drawn beside the main thread, found by what they show. Each time that something is painted, what
/// it asked for is what is wanted: of what was wanted before and is not there yet, nothing is drawn any more. Those
/// used for longest are dropped where all together take more than so many bytes. One thread asks.
template<class Key> class TileStore {
public:
    /// On the queue. No picture: it cannot be drawn yet. An empty one: it never can.
    using Draw = std::function<std::optional<QImage>(Key const&)>;

    /// `onReady` is called on the queue, once for all that has become ready since the last paint.
    TileStore(std::string label, std::size_t mostBytes, Draw draw, std::function<void()> onReady)
        : state_(std::make_shared<State>(mostBytes, std::move(draw), std::move(onReady)))
        , queue_(std::make_unique<SerialQueue>(std::move(label))) {}
    ~TileStore() {
        std::lock_guard const lock(state_->mutex);
        state_->wanted.clear();
    }

    /// An empty picture where there is none yet; it is then wanted.
    QImage picture(Key const& key) {
        std::lock_guard const lock(state_->mutex);
        auto const found = state_->tiles.find(key);
        if (found == state_->tiles.end()) {
            asked_.insert(key);
            return {};
        }
        found->second.used = state_->paint;
        return found->second.picture;
    }
    /// The one nearest before or at a key that is there, without wanting it.
    std::optional<std::pair<Key, QImage>> nearestBefore(Key const& key) {
        std::lock_guard const lock(state_->mutex);
        auto found = state_->tiles.upper_bound(key);
        if (found == state_->tiles.begin()) return std::nullopt;
        --found;
        found->second.used = state_->paint;
        return std::pair(found->first, found->second.picture);
    }
    /// All that is painted now has been asked for.
    void paintEnds() {
        bool isNew = false;
        {
            std::lock_guard const lock(state_->mutex);
            ++state_->paint;
            state_->isAnnounced = false;
            state_->want(std::exchange(asked_, {}));
            isNew = !state_->wanted.empty() && !std::exchange(state_->isDrawing, true);
        }
        if (isNew) queue_->async([state = state_] { state->drawWanted(); });
    }
    /// Asks again for what could not be drawn.
    void forgetFailures() {
        std::lock_guard const lock(state_->mutex);
        std::erase_if(state_->tiles, [](auto const& tile) { return tile.second.picture.isNull(); });
    }

    std::size_t bytes() const {
        std::lock_guard const lock(state_->mutex);
        return state_->bytes;
    }

private:
    struct Tile {
        QImage picture;
        std::uint64_t used = 0;
    };
    struct State {
        State(std::size_t most, Draw with, std::function<void()> ready)
            : mostBytes(most)
            , draw(std::move(with))
            , onReady(std::move(ready)) {}

        void drawWanted() {
            while (auto const key = next()) {
                if (keep(*key, draw(*key))) onReady();
            }
        }
        /// What is being drawn just now is not drawn once more, unless it turns out that it could not be; nor what has
        /// become ready since it was asked for.
        void want(std::set<Key> keys) {
            wanted = std::move(keys);
            std::erase_if(wanted, [&](Key const& key) { return tiles.contains(key); });
            isAtWorkWanted = atWork && wanted.erase(*atWork) > 0;
        }
        std::optional<Key> next() {
            std::lock_guard const lock(mutex);
            atWork.reset();
            if (wanted.empty()) {
                isDrawing = false;
                return std::nullopt;
            }
            isAtWorkWanted = false;
            atWork = wanted.extract(wanted.begin()).value();
            return atWork;
        }
        /// True where there is something new, and nobody has been told since the last paint.
        bool keep(Key const& key, std::optional<QImage> picture) {
            std::lock_guard const lock(mutex);
            if (!picture) {
                if (isAtWorkWanted) wanted.insert(key);
                return false;
            }
            bytes += static_cast<std::size_t>(picture->sizeInBytes());
            tiles[key] = {std::move(*picture), paint};
            if (bytes > mostBytes) shrink();
            return !std::exchange(isAnnounced, true);
        }
        /// To three quarters, so that not each new one costs a search.
        void shrink() {
            std::vector<std::pair<std::uint64_t, Key>> byAge;
            for (auto const& [key, tile] : tiles) byAge.emplace_back(tile.used, key);
            std::ranges::sort(byAge, {}, [](auto const& each) { return each.first; });
            for (auto const& [used, key] : byAge) {
                if (bytes <= mostBytes / 4 * 3 || used + 1 >= paint) return;
                auto const tile = tiles.find(key);
                bytes -= static_cast<std::size_t>(tile->second.picture.sizeInBytes());
                tiles.erase(tile);
            }
        }

        std::size_t const mostBytes;
        Draw const draw;
        std::function<void()> const onReady;
        mutable std::mutex mutex;
        std::map<Key, Tile> tiles;
        std::set<Key> wanted;
        std::optional<Key> atWork;
        bool isAtWorkWanted = false; // again, since it was begun
        std::size_t bytes = 0;
        std::uint64_t paint = 1;
        bool isDrawing = false;
        bool isAnnounced = false;
    };

    std::shared_ptr<State> state_;
    std::set<Key> asked_; // since the last paint
    std::unique_ptr<SerialQueue> queue_;
};

}
