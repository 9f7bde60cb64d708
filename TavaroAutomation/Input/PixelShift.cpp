#include <TavaroAutomation/Input/Private/PixelShift.h>

#include <algorithm>

namespace tavaro {

namespace {

constexpr int bandWidth = 40;      // pixels: a word of text
constexpr int fewestCells = 6;     // of a band, found again at a shift
constexpr double leastShare = 0.6; // of its cells that changed and are not plain

constexpr std::uint32_t colors = 0xffffff;

}

PictureLines::PictureLines(ScreenPixels const& picture, LineDirection direction) {
    bool const areRows = direction == LineDirection::rows;
    int const across = areRows ? picture.width : picture.height;
    auto const pixel = [&](int line, int place) {
        auto const x = areRows ? place : line, y = areRows ? line : place;
        return picture.pixels[static_cast<std::size_t>(y) * picture.width + x] & colors;
    };
    lines_ = areRows ? picture.height : picture.width;
    bands_ = std::max(1, across / bandWidth);
    cells_.resize(static_cast<std::size_t>(bands_) * lines_);
    for (int band = 0; band < bands_; ++band) {
        int const begin = across * band / bands_, end = across * (band + 1) / bands_;
        for (int line = 0; line < lines_; ++line) {
            auto const first = pixel(line, begin);
            bool isPlain = true;
            std::uint64_t hash = 0xcbf29ce484222325; // FNV-1a, by pixels instead of bytes
            for (int place = begin; place < end; ++place) {
                auto const value = pixel(line, place);
                isPlain = isPlain && value == first;
                hash = (hash ^ value) * 0x100000001b3;
            }
            cells_[static_cast<std::size_t>(band) * lines_ + line] = isPlain ? 0 : hash;
        }
    }
}

bool PictureLines::isAsBefore(PictureLines const& before, std::size_t cell, int shift) const {
    return cells_[cell] == before.cells_[cell + shift];
}

/// The cells of the band that are where that shift takes them; 0 where too many are not.
int PictureLines::foundAt(PictureLines const& before, int band, int shift) const {
    int changed = 0, found = 0;
    for (int line = std::max(0, -shift); line < std::min(lines_, lines_ - shift); ++line) {
        auto const cell = static_cast<std::size_t>(band) * lines_ + line;
        if (cells_[cell] == 0 || isAsBefore(before, cell, 0)) continue;
        ++changed;
        found += isAsBefore(before, cell, shift) ? 1 : 0;
    }
    return found >= fewestCells && found >= leastShare * changed ? found : 0;
}

std::optional<int> PictureLines::movedSince(PictureLines const& before, int sign) const {
    if (bands_ != before.bands_ || lines_ != before.lines_) return std::nullopt;
    std::optional<int> best;
    int most = 0;
    for (int distance = 1; distance <= lines_ * 3 / 4; ++distance) {
        int found = 0;
        for (int band = 0; band < bands_; ++band) found += foundAt(before, band, sign * distance);
        if (found <= most) continue;
        best = distance;
        most = found;
    }
    return best;
}

double PictureLines::changedShare(PictureLines const& before) const {
    if (cells_.size() != before.cells_.size()) return 1;
    int all = 0, changed = 0;
    for (std::size_t cell = 0; cell < cells_.size(); ++cell) {
        if (cells_[cell] == 0 && before.cells_[cell] == 0) continue;
        ++all;
        changed += isAsBefore(before, cell, 0) ? 0 : 1;
    }
    return all > 0 ? static_cast<double>(changed) / all : 0;
}

}
