#include <TavaroRender/Layers/Private/LayerCache.h>

namespace tavaro {

namespace {

std::size_t bytesOf(std::string const& key, DrawnLayer const& layer) {
    auto const pixels = layer.texture ? static_cast<std::size_t>(layer.texture->stride()) *
                                            static_cast<std::size_t>(layer.texture->height())
                                      : 0;
    return pixels + 2 * key.size() + sizeof(DrawnLayer); // the key is held twice
}

}

DrawnLayer const* LayerCache::find(std::string const& key) {
    auto const place = places_.find(key);
    if (place == places_.end()) return nullptr;
    entries_.splice(entries_.begin(), entries_, place->second);
    return &entries_.front().layer;
}

void LayerCache::insert(std::string key, DrawnLayer layer) {
    auto const bytes = bytesOf(key, layer);
    while (!entries_.empty() && bytes_ + bytes > limit_) {
        bytes_ -= entries_.back().bytes;
        places_.erase(entries_.back().key);
        entries_.pop_back();
    }
    // One that is too large to keep is drawn again each time: still better than memory without bounds.
    if (bytes > limit_) return;
    entries_.push_front({key, std::move(layer), bytes});
    places_[std::move(key)] = entries_.begin();
    bytes_ += bytes;
}

}
