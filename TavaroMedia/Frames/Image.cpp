#include <TavaroMedia/Frames/Image.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace tavaro {

namespace {

constexpr std::size_t rowAlignment = 64;

}

Image::Image(int width, int height) : width_(width), height_(height) {
    if (isEmpty()) {
        width_ = height_ = 0;
        return;
    }
    auto const rowBytes = (static_cast<std::size_t>(width) * 4 + rowAlignment - 1) / rowAlignment * rowAlignment;
    stride_ = static_cast<std::ptrdiff_t>(rowBytes);
    auto const bytes = rowBytes * static_cast<std::size_t>(height);
    auto* memory = static_cast<std::uint8_t*>(std::aligned_alloc(rowAlignment, bytes));
    if (!memory) throw std::bad_alloc();
    std::memset(memory, 0, bytes);
    pixels_.reset(memory);
}

Image Image::copy() const {
    Image result(width_, height_);
    if (!isEmpty())
        std::memcpy(result.row(0), row(0), static_cast<std::size_t>(stride_) * static_cast<std::size_t>(height_));
    return result;
}

void Image::AlignedFree::operator()(std::uint8_t* pixels) const { std::free(pixels); }

}
