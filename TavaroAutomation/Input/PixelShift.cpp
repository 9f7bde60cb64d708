#include <TavaroAutomation/Input/Private/PixelShift.h>

#include <algorithm>
#include <map>

namespace tavaro {

namespace {

constexpr int bandWidth = 40;      // pixels: a word of text
constexpr int fewestVotes = 6;     // of cells, for one shift
constexpr double leastShare = 0.6; // of all votes
constexpr int nearby = 120;        // lines
constexpr int fewestCells = 30;    // of content: a word has about 12 in each of its bands

constexpr std::uint32_t colors = 0xffffff;

}

PictureLines::PictureLines(ScreenPixels const& picture, LineDirection direction) {
    bool const areRows = direction == LineDirection::rows;
    across_ = areRows ? picture.width : picture.height;
    auto const pixel = [&](int line, int place) {
        auto const x = areRows ? place : line, y = areRows ? line : place;
        return picture.pixels[static_cast<std::size_t>(y) * picture.width + x] & colors;
    };
    lines_ = areRows ? picture.height : picture.width;
    bands_ = std::max(1, across_ / bandWidth);
    cells_.resize(static_cast<std::size_t>(bands_) * lines_);
    for (int band = 0; band < bands_; ++band) {
        int const begin = across_ * band / bands_, end = across_ * (band + 1) / bands_;
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

bool PictureLines::isAsBefore(PictureLines const& before, std::size_t cell) const {
    return cells_[cell] == before.cells_[cell];
}

/// What is in exactly one line of the band, in order: text repeats itself, and what does so tells nothing.
std::vector<PictureLines::Cell> PictureLines::uniqueCells(int band) const {
    std::vector<Cell> cells;
    auto const first = static_cast<std::size_t>(band) * lines_;
    for (int line = 0; line < lines_; ++line) {
        if (cells_[first + line] != 0) cells.push_back({cells_[first + line], line});
    }
    std::ranges::sort(cells, {}, &Cell::hash);
    std::vector<Cell> result;
    for (auto cell = cells.begin(); cell != cells.end();) {
        auto const next = std::find_if(cell, cells.end(), [&](Cell const& other) { return other.hash != cell->hash; });
        if (next - cell == 1) result.push_back(*cell);
        cell = next;
    }
    return result;
}

std::optional<int> PictureLines::movedSince(PictureLines const& before, int sign) const {
    if (bands_ != before.bands_ || lines_ != before.lines_) return std::nullopt;
    std::map<int, int> votes; // for each shift, by the cells that were there
    int all = 0;
    for (int band = 0; band < bands_; ++band) {
        auto const known = before.uniqueCells(band);
        for (auto const& cell : uniqueCells(band)) {
            if (isAsBefore(before, static_cast<std::size_t>(band) * lines_ + cell.line)) continue;
            auto const was = std::ranges::lower_bound(known, cell.hash, {}, &Cell::hash);
            if (was == known.end() || was->hash != cell.hash) continue;
            ++votes[sign * (was->line - cell.line)];
            ++all;
        }
    }
    auto const best = std::ranges::max_element(votes, {}, [](auto const& vote) { return vote.second; });
    bool const isClear = best != votes.end() && best->second >= fewestVotes && best->second >= leastShare * all;
    return isClear && best->first > 0 ? std::optional(best->first) : std::nullopt;
}

std::pair<int, int> PictureLines::bandsAt(int across) const {
    constexpr int around = 2;
    int const middle = std::clamp(across, 0, across_ - 1) * bands_ / across_;
    return {std::max(0, middle - around), std::min(bands_, middle + around + 1)};
}

bool PictureLines::hasContentAt(int across, int line) const {
    if (across_ == 0) return false;
    auto const bands = bandsAt(across);
    int const begin = std::max(0, line - nearby), end = std::min(lines_, line + nearby);
    int content = 0;
    for (int band = bands.first; band < bands.second; ++band) {
        auto const first = cells_.begin() + static_cast<std::ptrdiff_t>(band) * lines_;
        content += static_cast<int>(std::count_if(first + begin, first + end, [](auto cell) { return cell != 0; }));
    }
    return content >= fewestCells;
}

double PictureLines::changedShare(PictureLines const& before, int across) const {
    if (cells_.size() != before.cells_.size() || across_ == 0) return 1;
    auto const bands = bandsAt(across);
    auto const begin = static_cast<std::size_t>(bands.first) * lines_;
    auto const end = static_cast<std::size_t>(bands.second) * lines_;
    int all = 0, changed = 0;
    for (auto cell = begin; cell < end; ++cell) {
        if (cells_[cell] == 0 && before.cells_[cell] == 0) continue;
        ++all;
        changed += isAsBefore(before, cell) ? 0 : 1;
    }
    return all > 0 ? static_cast<double>(changed) / all : 0;
}

}
