#include <TavaroRender/Kernels/ScreenTexture.h>

#include <algorithm>
#include <bit>
#include <utility>

#include <TavaroRender/Kernels/Private/HalveRow.h>

namespace tavaro {

namespace {

/// The texels of one axis that one texel of the next level averages, with their weights (they add up to `total`).
struct Share {
    int first = 0;
    int count = 0;
    std::uint32_t weights[3]{};
    std::uint32_t total = 0;
};

Share share(int size, int index) {
    if (size == 1) return {.first = 0, .count = 1, .weights = {1}, .total = 1};
    auto const half = static_cast<std::uint32_t>(size / 2);
    if (size % 2 == 0) return {.first = 2 * index, .count = 2, .weights = {1, 1}, .total = 2};
    auto const i = static_cast<std::uint32_t>(index);
    return {.first = 2 * index, .count = 3, .weights = {half - i, half, i + 1}, .total = 2 * half + 1};
}

void halveRow(ImageView from, Share const& rows, std::uint8_t* out, int outWidth) {
    for (int x = 0; x < outWidth; ++x) {
        auto const columns = share(from.width, x);
        auto const total = std::uint64_t{rows.total} * columns.total;
        for (int c = 0; c < 4; ++c) {
            std::uint64_t sum = 0;
            for (int j = 0; j < rows.count; ++j)
                for (int i = 0; i < columns.count; ++i)
                    sum += std::uint64_t{rows.weights[j]} * columns.weights[i] *
                           from.row(rows.first + j)[4 * (columns.first + i) + c];
            out[4 * x + c] = static_cast<std::uint8_t>((sum + total / 2) / total);
        }
    }
}

void halve(ImageView from, MutableImageView to) {
    for (int y = 0; y < to.height; ++y) {
        auto const rows = share(from.height, y);
        if (rows.count == 2 && from.width % 2 == 0)
            halveEvenRow(from.row(rows.first), from.row(rows.first + 1), to.row(y), to.width);
        else
            halveRow(from, rows, to.row(y), to.width);
    }
}

}

void ScreenTexture::setFrame(ImageView frame) {
    std::lock_guard const lock(mutex_);
    if (frame.width != frame_.width || frame.height != frame_.height) levels_.clear();
    frame_ = frame;
    built_ = 0;
}

int ScreenTexture::levelCount() const {
    return isEmpty() ? 0 : std::bit_width(static_cast<unsigned>(std::max(frame_.width, frame_.height)));
}

ImageView ScreenTexture::ensureLevel(int index) const {
    std::lock_guard const lock(mutex_);
    index = std::clamp(index, 0, std::max(levelCount() - 1, 0));
    while (built_ < index) {
        auto const from = built_ == 0 ? frame_ : std::as_const(levels_[static_cast<std::size_t>(built_) - 1]).view();
        if (static_cast<int>(levels_.size()) == built_)
            levels_.emplace_back(std::max(from.width / 2, 1), std::max(from.height / 2, 1));
        halve(from, levels_[static_cast<std::size_t>(built_)].view());
        ++built_;
    }
    return index == 0 ? frame_ : std::as_const(levels_[static_cast<std::size_t>(index) - 1]).view();
}

}
