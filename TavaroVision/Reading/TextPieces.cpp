#include <TavaroVision/Reading/Private/TextPieces.h>

#include <TavaroVision/Reading/Private/BitRows.h>

#include <algorithm>
#include <bit>
#include <cstring>

namespace tavaro {

namespace {

constexpr int faintest = 20;   // difference of two pixels beside another; less is noise of a codec, or a shadow
constexpr int letterGap = 8;   // pixels; edges so near belong together
constexpr int lowestLine = 5;  // pixels
constexpr double valley = 0.3; // of the lower peak beside it

/// 8 bytes of 0 or 255 as 8 bits, the first byte's lowest.
std::uint64_t packed(std::uint8_t const* marks) {
    static_assert(std::endian::native == std::endian::little);
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, marks, sizeof bytes);
    return (bytes & 0x0101010101010101U) * 0x0102040810204080U >> 56U;
}

void markEdges(std::uint8_t const* pixels, int count, std::uint8_t* marks) {
    for (int x = 0; x < count; ++x) {
        int const difference = pixels[x + 1] - pixels[x - 1];
        marks[x] = difference > faintest || difference < -faintest ? 255 : 0;
    }
}

/// Runs of a picture's rows that touch each other. The runs are in the order of rows, and in it from the left.
struct Run {
    int y = 0;
    int left = 0;
    int right = 0;
    int parent = 0; // of the same component; the first run of one is its own
};

class Components {
public:
    explicit Components(BitRows const& bits) {
        std::size_t above = 0; // the first run of the row above
        for (int y = 0; y < bits.height(); ++y) {
            auto const begin = runs_.size();
            for (auto run = nextRun(bits.row(y), 0); run.left < run.right; run = nextRun(bits.row(y), run.right))
                runs_.push_back({y, run.left, run.right, static_cast<int>(runs_.size())});
            touch(above, begin);
            above = begin;
        }
    }

    /// The runs of each component, in order.
    std::vector<std::vector<Run>> take() {
        std::vector<std::vector<Run>> components;
        std::vector<int> numbers(runs_.size(), -1);
        for (std::size_t i = 0; i < runs_.size(); ++i) {
            auto& number = numbers[static_cast<std::size_t>(root(static_cast<int>(i)))];
            if (number < 0) {
                number = static_cast<int>(components.size());
                components.emplace_back();
            }
            components[static_cast<std::size_t>(number)].push_back(runs_[i]);
        }
        return components;
    }

private:
    Run& at(int index) { return runs_[static_cast<std::size_t>(index)]; }

    int root(int index) {
        while (at(index).parent != index) index = at(index).parent = at(at(index).parent).parent;
        return index;
    }

    void unite(int a, int b) {
        int const first = root(a), second = root(b);
        at(std::max(first, second)).parent = std::min(first, second);
    }

    /// Joins the runs from `above` to before `begin` and those from `begin` on that have a column in common.
    void touch(std::size_t above, std::size_t begin) {
        auto upper = above;
        for (auto lower = begin; lower < runs_.size();) {
            if (upper == begin) return;
            auto const &a = runs_[upper], &b = runs_[lower];
            if (a.left < b.right && b.left < a.right) unite(static_cast<int>(upper), static_cast<int>(lower));
            if (a.right < b.right)
                ++upper;
            else
                ++lower;
        }
    }

    std::vector<Run> runs_;
};

/// How much of each row, from the first run's on, a component has.
std::vector<int> profileOf(std::vector<Run> const& runs) {
    std::vector<int> profile(static_cast<std::size_t>(runs.back().y - runs.front().y) + 1);
    for (auto const& run : runs) profile[static_cast<std::size_t>(run.y - runs.front().y)] += run.right - run.left;
    return profile;
}

/// Rows before which a component is cut, since it is of several lines there: the lowest of each valley of its profile
/// between two peaks.
std::vector<int> cutsOf(std::vector<int> const& profile) {
    std::vector<int> cuts;
    int const count = static_cast<int>(profile.size());
    int peak = 0, lowest = 0, last = 0;
    for (int y = 0; y < count; ++y) {
        int const amount = profile[static_cast<std::size_t>(y)];
        if (amount <= profile[static_cast<std::size_t>(lowest)]) lowest = y;
        bool const isDeep = profile[static_cast<std::size_t>(lowest)] < valley * std::min(peak, amount);
        if (isDeep && lowest - last >= lowestLine) {
            cuts.push_back(last = lowest);
            peak = 0;
        }
        if (amount > peak) {
            peak = amount;
            lowest = y;
        }
    }
    return cuts;
}

PixelBox boxOf(std::vector<Run>::const_iterator begin, std::vector<Run>::const_iterator end) {
    int left = begin->left, right = begin->right;
    for (auto run = begin; run != end; ++run) {
        left = std::min(left, run->left);
        right = std::max(right, run->right);
    }
    int const bottom = std::prev(end)->y + 1;
    return {left, begin->y, right - letterGap - left, bottom - begin->y}; // the smear to the right is no ink
}

void addPieces(std::vector<Run> const& runs, std::vector<PixelBox>& pieces) {
    auto begin = runs.begin();
    if (runs.back().y - runs.front().y >= 2 * lowestLine)
        for (int const cut : cutsOf(profileOf(runs))) {
            auto const end = std::ranges::lower_bound(begin, runs.end(), runs.front().y + cut, {}, &Run::y);
            if (begin != end) pieces.push_back(boxOf(begin, end));
            begin = end;
        }
    if (begin != runs.end()) pieces.push_back(boxOf(begin, runs.end()));
}

}

BitRows edgesOf(GrayView const& picture, PixelBox const& within) {
    BitRows edges(within.width + letterGap, within.height);
    // The first and the last column of the picture have nothing beside them.
    int const first = std::max(within.x, 1), end = std::min(within.right(), picture.width - 1);
    if (end <= first) return edges;
    std::vector<std::uint8_t> marks(64 * edges.row(0).size());
    for (int y = 0; y < within.height; ++y) {
        auto const* const pixels = picture.pixels + (within.y + y) * picture.stride + first;
        markEdges(pixels, end - first, marks.data() + (first - within.x));
        auto const row = edges.row(y);
        for (std::size_t i = 0; i < row.size(); ++i)
            for (unsigned part = 0; part < 8; ++part)
                row[i] |= packed(marks.data() + 64 * i + std::size_t{8} * part) << (8 * part);
    }
    return edges;
}

std::vector<PixelBox> textPieces(BitRows const& edges) {
    auto smeared = edges;
    for (int y = 0; y < smeared.height(); ++y) smeared.smearRight(y, letterGap);
    std::vector<PixelBox> pieces;
    for (auto const& component : Components(smeared).take()) addPieces(component, pieces);
    return pieces;
}

}
