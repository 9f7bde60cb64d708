#include <TavaroVision/Scanning/Private/FoundTexts.h>

#include <TavaroVision/Tracking/Private/ChangedTiles.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace tavaro {

namespace {

constexpr std::size_t mostTexts = 60, mostPlaces = 3;

bool isSame(TextPatch const& a, TextPatch const& b) {
    bool const isAlike = a.width() == b.width() && a.height() == b.height() && a.letterHeight() == b.letterHeight();
    return isAlike && a.presence(b.view(), 0, 0).isWhole;
}

/// Of each row whether a text of that size has anything new if it begins there.
std::vector<char> newRows(ChangedTiles const& tiles, GrayView const& picture, PixelBox const& box) {
    std::vector<char> rows(static_cast<std::size_t>(picture.height), 0);
    for (int top = 0; top < picture.height; top += tileSide) {
        if (!tiles.isChanged({box.x, top, box.width, tileSide})) continue;
        int const first = std::max(0, top - box.height + 1), last = std::min(picture.height, top + tileSide);
        std::fill(rows.begin() + first, rows.begin() + last, char{1});
    }
    return rows;
}

}

void FoundTexts::keep(FoundText const& text, int x) {
    auto known = std::ranges::find_if(known_, [&](Known const& one) {
        return one.text.textHash == text.textHash && isSame(*one.text.patch, *text.patch);
    });
    if (known == known_.end()) {
        known_.push_front({text, ColumnSearch(*text.patch), {}});
    } else {
        std::rotate(known_.begin(), known, known + 1);
    }
    auto& lefts = known_.front().lefts;
    std::erase(lefts, x);
    lefts.insert(lefts.begin(), x);
    if (lefts.size() > mostPlaces) lefts.pop_back();
    if (known_.size() > mostTexts) known_.pop_back();
}

void FoundTexts::find(GrayView const& picture, ChangedTiles const& tiles,
                      std::function<void(FoundText const&, int x, int y)> const& look) const {
    for (auto const& known : known_) {
        auto const& patch = *known.text.patch;
        for (auto const x : known.lefts) {
            auto const rows = newRows(tiles, picture, {x, 0, patch.width(), patch.height()});
            known.search.find(picture, x, rows, [&](int y) { look(known.text, x, y); });
        }
    }
}

}
