#include <TavaroCapture/Recorder/Private/ScreenPictures.h>

#include <algorithm>
#include <iterator>

namespace tavaro {

ScreenPictures::ScreenPictures(int width, int height) : all_(width, height) { all_.addAll(); }

void ScreenPictures::note(ScreenSource const& screen, ScreenSource::Outcome outcome) {
    auto const* changes = screen.changes();
    if (!changes && outcome != ScreenSource::Outcome::changed) return;
    for (auto& kept : kept_) kept.stale.add(changes ? *changes : all_);
}

EncoderPicture ScreenPictures::current(ImageView pixels, FunctionRef<EncoderPicture()> fresh) {
    if (!newest_ || !kept_[*newest_].stale.isEmpty()) {
        newest_ = writable(fresh);
        auto& [picture, stale] = kept_[*newest_];
        fillPicture(picture, pixels, PixelOrder::bgra, stale);
        stale.clear();
    }
    return kept_[*newest_].picture.shared();
}

/// The newest one that the encoder has done with: the least of it has to be converted.
std::size_t ScreenPictures::writable(FunctionRef<EncoderPicture()> fresh) {
    auto const isFree = [](Kept const& kept) { return !kept.picture.isShared(); };
    if (newest_ && isFree(kept_[*newest_])) return *newest_;
    auto const found = std::ranges::find_if(kept_, isFree);
    if (found != kept_.end()) return static_cast<std::size_t>(std::distance(kept_.begin(), found));
    kept_.push_back({fresh(), all_});
    return kept_.size() - 1;
}

}
