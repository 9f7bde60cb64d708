#include <TavaroCore/Editing/Private/TranscriptDiff.h>

#include <algorithm>

namespace tavaro {

namespace {

using Index = std::ptrdiff_t;

/// The symbols of a sequence that take part, and where they stand in it.
struct Sequence {
    std::vector<std::uint32_t> symbols;
    std::vector<std::size_t> positions;
};

/// Without the symbols that the other sequence lacks, which no common subsequence has.
Sequence sharedWith(std::span<std::uint32_t const> other, std::span<std::uint32_t const> all) {
    std::vector<std::uint32_t> known(other.begin(), other.end());
    std::sort(known.begin(), known.end());
    Sequence result;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!std::binary_search(known.begin(), known.end(), all[i])) continue;
        result.symbols.push_back(all[i]);
        result.positions.push_back(i);
    }
    return result;
}

/// A part of both sequences: [a0, a1) and [b0, b1).
struct Box {
    Index a0, a1, b0, b1;

    Index width() const { return a1 - a0; }
    Index height() const { return b1 - b0; }
};

class Myers {
public:
    Myers(Sequence const& a, Sequence const& b) : a_(a), b_(b) {}

    std::vector<Match> solve() {
        solve({0, static_cast<Index>(a_.symbols.size()), 0, static_cast<Index>(b_.symbols.size())});
        return std::move(matches_);
    }

private:
    bool same(Index a, Index b) const {
        return a_.symbols[static_cast<std::size_t>(a)] == b_.symbols[static_cast<std::size_t>(b)];
    }

    void match(Index a, Index b) {
        matches_.emplace_back(a_.positions[static_cast<std::size_t>(a)], b_.positions[static_cast<std::size_t>(b)]);
    }

    void solve(Box box) {
        while (box.width() > 0 && box.height() > 0 && same(box.a0, box.b0)) match(box.a0++, box.b0++);
        Index ending = 0;
        for (; box.width() > 0 && box.height() > 0 && same(box.a1 - 1, box.b1 - 1); ++ending) --box.a1, --box.b1;
        if (box.width() > 0 && box.height() > 0) {
            // Both ends differ, so at least two edits are left and the middle is no corner: each half is smaller.
            auto const [x, y] = middle(box);
            solve({box.a0, x, box.b0, y});
            solve({x, box.a1, y, box.b1});
        }
        for (Index i = 0; i < ending; ++i) match(box.a1 + i, box.b1 + i);
    }

    /// A point on a shortest path through the box with half of its edits on either side. Paths grow from both corners,
    /// one edit a round; `forward_[k]` and `backward_[k]` are how far the best path on diagonal k has come.
    std::pair<Index, Index> middle(Box const& box) {
        Index const n = box.width(), m = box.height(), delta = n - m;
        Index const rounds = (n + m + 1) / 2, zero = rounds + 1;
        forward_.assign(static_cast<std::size_t>(2 * rounds + 3), -1);
        backward_ = forward_;
        at(forward_, zero + 1) = at(backward_, zero + 1) = 0;
        bool const isOdd = delta % 2 != 0;
        Span forward, backward;
        for (Index d = 0; d <= rounds; ++d) {
            for (Index k = -d + forward.skippedLow; k <= d - forward.skippedHigh; k += 2) {
                Index const x =
                    advance(forward_, zero, k, d, n, m, [&](Index i, Index j) { return same(box.a0 + i, box.b0 + j); });
                if (!forward.holds(x, x - k, n, m) || !isOdd) continue;
                Index const opposite = zero + delta - k;
                if (isReached(backward_, opposite) && x >= n - at(backward_, opposite))
                    return {box.a0 + x, box.b0 + x - k};
            }
            for (Index k = -d + backward.skippedLow; k <= d - backward.skippedHigh; k += 2) {
                Index const x = advance(backward_, zero, k, d, n, m,
                                        [&](Index i, Index j) { return same(box.a1 - 1 - i, box.b1 - 1 - j); });
                if (!backward.holds(x, x - k, n, m) || isOdd) continue;
                Index const opposite = zero + delta - k;
                if (!isReached(forward_, opposite)) continue;
                Index const met = at(forward_, opposite);
                if (met >= n - x) return {box.a0 + met, box.b0 + met - (delta - k)};
            }
        }
        return {box.a1, box.b0}; // never: the paths meet in the last round
    }

    /// How many diagonals at either end have left the box.
    struct Span {
        Index skippedLow = 0, skippedHigh = 0;

        bool holds(Index x, Index y, Index n, Index m) {
            if (x > n)
                skippedHigh += 2;
            else if (y > m)
                skippedLow += 2;
            return x <= n && y <= m;
        }
    };

    static Index& at(std::vector<Index>& furthest, Index i) { return furthest[static_cast<std::size_t>(i)]; }

    static bool isReached(std::vector<Index>& furthest, Index i) {
        return i >= 0 && i < static_cast<Index>(furthest.size()) && at(furthest, i) >= 0;
    }

    template<class Same>
    static Index advance(std::vector<Index>& furthest, Index zero, Index k, Index d, Index n, Index m, Same isSame) {
        Index const below = at(furthest, zero + k - 1), above = at(furthest, zero + k + 1);
        Index x = k == -d || (k != d && below < above) ? above : below + 1;
        for (Index y = x - k; x < n && y < m && isSame(x, y); ++y) ++x;
        at(furthest, zero + k) = x;
        return x;
    }

    Sequence const& a_;
    Sequence const& b_;
    std::vector<Index> forward_, backward_;
    std::vector<Match> matches_;
};

}

std::vector<Match> longestCommonSubsequence(std::span<std::uint32_t const> a, std::span<std::uint32_t const> b) {
    auto const first = sharedWith(b, a), second = sharedWith(a, b);
    return Myers(first, second).solve();
}

}
