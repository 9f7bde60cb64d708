#include <TavaroMedia/GIF/Private/ColorCounts.h>

#include <utility>

namespace tavaro {

namespace {

constexpr std::size_t tableSize = std::size_t{1} << 16;
constexpr std::size_t mostColors = tableSize / 2;

constexpr std::uint32_t present = 0x1000000; // no key is 0

}

ColorCounts::ColorCounts() : table_(tableSize) {}

void ColorCounts::add(std::uint32_t const* argb, std::size_t count) {
    for (std::size_t i = 0; i < count;) {
        auto const color = argb[i];
        auto const start = i;
        while (i < count && argb[i] == color) ++i;
        if (color >> 24 >= 128) add(color, i - start); // the others are clear in the GIF
    }
}

void ColorCounts::add(std::uint32_t argb, std::uint64_t count) {
    add(Sum{argb & 0xFFFFFF, count, (argb >> 16 & 255) * count, (argb >> 8 & 255) * count, (argb & 255) * count});
}

void ColorCounts::add(Sum const& sum) {
    auto& to = sumAt((sum.key & mask_) | present);
    to.count += sum.count;
    to.red += sum.red;
    to.green += sum.green;
    to.blue += sum.blue;
    if (used_ > mostColors) coarsen();
}

ColorCounts::Sum& ColorCounts::sumAt(std::uint32_t key) {
    auto at = static_cast<std::size_t>(key * 2654435761u >> 16) % tableSize;
    while (table_[at].key != key && table_[at].key != 0) at = (at + 1) % tableSize;
    if (table_[at].key == 0) ++used_;
    table_[at].key = key;
    return table_[at];
}

void ColorCounts::coarsen() {
    mask_ = (mask_ << 1) & mask_ & 0xFEFEFE;
    auto const before = std::exchange(table_, std::vector<Sum>(tableSize));
    used_ = 0;
    for (auto const& sum : before)
        if (sum.key != 0) add(sum);
}

std::vector<CountedColor> ColorCounts::colors() const {
    std::vector<CountedColor> colors;
    for (auto const& sum : table_) {
        if (sum.key == 0) continue;
        auto const count = static_cast<double>(sum.count);
        colors.push_back({static_cast<double>(sum.red) / count, static_cast<double>(sum.green) / count,
                          static_cast<double>(sum.blue) / count, count});
    }
    return colors;
}

}
