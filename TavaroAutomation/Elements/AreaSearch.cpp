#include <TavaroAutomation/Elements/Private/AreaSearch.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace tavaro::atspi {

namespace {

constexpr int smallest = 4;                 // nobody clicks on less
constexpr int mostHalvings = 3;             // of a part in which nothing is found
constexpr std::size_t mostQuestions = 6000; // a screen full of the smallest cells that people can read
constexpr int mostChanges = 8;              // of what is believed of a program's points
constexpr std::size_t mostParts = 1U << 20; // of the grid: thousands of scattered things have no common edges

AreaSearch::Point middle(Extents const& part) { return {part.x + part.width / 2, part.y + part.height / 2}; }

bool holds(Extents const& part, AreaSearch::Point const& point) {
    return point.x >= part.x && point.y >= part.y && point.x - part.x < part.width && point.y - part.y < part.height;
}

}

/// The parts between edges, row by row, and how often each was halved; those that need no question are closed.
class AreaSearch::Grid {
public:
    Grid(std::vector<int> xs, std::vector<int> ys)
        : xs_(std::move(xs))
        , ys_(std::move(ys))
        , halvings_((xs_.size() - 1) * (ys_.size() - 1)) {}

    static constexpr int closed = 127;

    void raise(Extents const& area, int halvings) {
        auto const [left, right] = span(xs_, area.x, area.width);
        auto const [top, bottom] = span(ys_, area.y, area.height);
        for (std::size_t row = top; row < bottom; ++row) {
            for (std::size_t column = left; column < right; ++column) {
                auto& each = halvings_[row * columns() + column];
                each = static_cast<std::int8_t>(std::max<int>(each, halvings));
            }
        }
    }

    std::vector<Part> open() const {
        std::vector<Part> result;
        for (std::size_t i = 0; i < halvings_.size(); ++i) {
            auto const column = i % columns(), row = i / columns();
            Extents const area{xs_[column], ys_[row], xs_[column + 1] - xs_[column], ys_[row + 1] - ys_[row]};
            bool const isLarge = area.width >= smallest && area.height >= smallest;
            if (isLarge && halvings_[i] != closed) result.push_back({.area = area, .halvings = halvings_[i]});
        }
        return result;
    }

private:
    std::size_t columns() const { return xs_.size() - 1; }

    static std::pair<std::size_t, std::size_t> span(std::vector<int> const& edges, int begin, int length) {
        auto const place = [&](int value) {
            auto const found = std::ranges::lower_bound(edges, value);
            return std::min<std::size_t>(found - edges.begin(), edges.size() - 1);
        };
        return {place(begin), place(begin + length)};
    }

    std::vector<int> xs_;
    std::vector<int> ys_;
    std::vector<std::int8_t> halvings_;
};

std::vector<AreaSearch::Point> AreaSearch::next() {
    noteGaps();
    if (area_.isEmpty()) return {};
    auto xs = edges(&Extents::x, &Extents::width), ys = edges(&Extents::y, &Extents::height);
    isCutShort_ = xs.size() * ys.size() > mostParts;
    if (isCutShort_) return {};
    Grid grid(std::move(xs), std::move(ys));
    for (auto const& part : known_) grid.raise(part, Grid::closed);
    for (auto const& gap : gaps_) grid.raise(gap.area, gap.halvings < mostHalvings ? gap.halvings : Grid::closed);
    std::vector<Point> result;
    for (auto const& part : grid.open()) {
        isCutShort_ = questions_ == mostQuestions;
        if (isCutShort_) break;
        ++questions_;
        asked_.push_back(part);
        auto const point = middle(part.area);
        result.push_back({point.x - offset(0), point.y - offset(1)});
    }
    knownBefore_ = known_.size();
    hasChanged_ = false;
    return result;
}

void AreaSearch::add(Extents const& part) {
    if (added_.insert(part).second) known_.push_back(part);
}

void AreaSearch::learn(Point const& asked, Extents const& found) {
    std::array const before{offset(0), offset(1)};
    offsets_[0].narrow(found.x - asked.x, found.x - asked.x + found.width - 1);
    offsets_[1].narrow(found.y - asked.y, found.y - asked.y + found.height - 1);
    bool const isOther = before != std::array{offset(0), offset(1)};
    if (isOther && changes_ < mostChanges) {
        ++changes_;
        hasChanged_ = true;
    }
}

int AreaSearch::offset(std::size_t axis) const { return offsets_.at(axis).value(); }

/// What contradicts all before is believed: programs move while they are asked.
void AreaSearch::Offset::narrow(int first, int last) {
    bool const isNew = least > most || first > most || last < least;
    least = isNew ? first : std::max(least, first);
    most = isNew ? last : std::min(most, last);
}

/// None, if that can be.
int AreaSearch::Offset::value() const {
    return least > most || (least <= 0 && most >= 0) ? 0 : least + (most - least) / 2;
}

/// A part that something new lies in is divided by its edges, and asked for again like what is asked at a wrong point.
void AreaSearch::noteGaps() {
    for (auto const& part : std::exchange(asked_, {})) {
        auto const point = middle(part.area);
        bool const isFound = std::ranges::any_of(known_, [&](Extents const& known) { return holds(known, point); });
        bool const isDivided =
            std::any_of(known_.begin() + static_cast<std::ptrdiff_t>(knownBefore_), known_.end(),
                        [&](Extents const& known) { return !known.intersection(part.area).isEmpty(); });
        if (!isFound && !isDivided && !hasChanged_) gaps_.push_back({.area = part.area, .halvings = part.halvings + 1});
    }
}

/// Of all that is known, and the middles of gaps, which divide them further.
std::vector<int> AreaSearch::edges(int Extents::*begin, int Extents::*length) const {
    int const first = area_.*begin, last = first + area_.*length;
    std::vector<int> result{first, last};
    auto const add = [&](int edge) {
        if (edge > first && edge < last) result.push_back(edge);
    };
    for (auto const& part : known_) {
        add(part.*begin);
        add(part.*begin + part.*length);
    }
    for (auto const& gap : gaps_) {
        if (gap.halvings < mostHalvings) add(gap.area.*begin + gap.area.*length / 2);
    }
    std::ranges::sort(result);
    result.erase(std::unique(result.begin(), result.end()), result.end());
    return result;
}

}
