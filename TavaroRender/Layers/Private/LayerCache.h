#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <unordered_map>

#include <TavaroRender/Layers/Private/LayerRasterizer.h>

namespace tavaro {

/// Drawn layers by the key of their look. Holds about `limit` bytes of bitmaps; the least recently asked for go first.
class LayerCache {
public:
    explicit LayerCache(std::size_t limit) : limit_(limit) {}

    /// Null when it is not here. Good until the next `insert`.
    DrawnLayer const* find(std::string const& key);
    void insert(std::string key, DrawnLayer layer);
    std::size_t bytes() const { return bytes_; }

private:
    struct Entry {
        std::string key;
        DrawnLayer layer;
        std::size_t bytes = 0;
    };

    std::size_t limit_;
    std::size_t bytes_ = 0;
    std::list<Entry> entries_; // most recent first
    std::unordered_map<std::string, std::list<Entry>::iterator> places_;
};

}
