#include <TavaroVision/Reading/Private/BitRows.h>

#include <algorithm>
#include <bit>

namespace tavaro {

namespace {

constexpr int wordBits = 64;
constexpr std::uint64_t all = ~std::uint64_t{0};

std::size_t wordOf(int x) { return static_cast<std::size_t>(x) / wordBits; }
unsigned bitOf(int x) { return static_cast<unsigned>(x) % wordBits; }

/// The first place from `from` on where a bit, turned over by `flip`, is set; the row's end where none is.
int firstSet(std::span<std::uint64_t const> row, int from, std::uint64_t flip) {
    auto at = wordOf(from);
    if (at >= row.size()) return static_cast<int>(row.size()) * wordBits;
    auto word = (row[at] ^ flip) & (all << bitOf(from));
    while (word == 0 && ++at < row.size()) word = row[at] ^ flip;
    return static_cast<int>(at) * wordBits + (word ? std::countr_zero(word) : 0);
}

/// Each row becomes what is set in it and in the row `distance` below.
void intersect(BitRows& bits, int distance) {
    for (int y = 0; y < bits.height(); ++y) {
        auto const row = bits.row(y);
        if (y + distance >= bits.height()) {
            std::ranges::fill(row, 0);
            continue;
        }
        auto const below = bits.row(y + distance);
        for (std::size_t i = 0; i < row.size(); ++i) row[i] &= below[i];
    }
}

/// Each row becomes what is set in it or in the row `distance` above.
void unite(BitRows& bits, int distance) {
    for (int y = bits.height() - 1; y >= distance; --y) {
        auto const row = bits.row(y);
        auto const above = bits.row(y - distance);
        for (std::size_t i = 0; i < row.size(); ++i) row[i] |= above[i];
    }
}

/// Calls `step(distance)` so that all distances below `length` are covered.
template<class Step> void doubling(int length, Step const& step) {
    int covered = 1;
    for (; 2 * covered <= length; covered *= 2) step(covered);
    if (covered < length) step(length - covered);
}

}

int BitRows::count(int y, int left, int right) const {
    auto const bits = row(y);
    int sum = 0;
    for (int x = std::max(left, 0), end = std::min(right, width_); x < end;) {
        int const next = std::min(end, (x / wordBits + 1) * wordBits);
        auto word = bits[wordOf(x)] & (all << bitOf(x));
        if (next % wordBits != 0) word &= ~(all << bitOf(next));
        sum += std::popcount(word);
        x = next;
    }
    return sum;
}

void BitRows::smearRight(int y, int reach) {
    auto const bits = row(y);
    doubling(reach + 1, [&](int distance) {
        auto const by = static_cast<unsigned>(distance);
        for (std::size_t i = bits.size(); i-- > 0;)
            bits[i] |= bits[i] << by | (i > 0 ? bits[i - 1] >> (wordBits - by) : 0);
    });
    if (bitOf(width_) != 0) bits.back() &= ~(all << bitOf(width_));
}

void BitRows::clearColumns(int length) {
    if (height_ < length) return;
    auto columns = *this;
    doubling(length, [&](int distance) { intersect(columns, distance); });
    doubling(length, [&](int distance) { unite(columns, distance); });
    for (std::size_t i = 0; i < bits_.size(); ++i) bits_[i] &= ~columns.bits_[i];
}

BitRun nextRun(std::span<std::uint64_t const> row, int from) {
    int const left = firstSet(row, from, 0);
    return {left, firstSet(row, left, all)};
}

}
