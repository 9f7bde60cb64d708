#include <TavaroMedia/Frames/Image.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include <sys/mman.h>

namespace tavaro {

namespace {

constexpr std::size_t rowAlignment = 64;
constexpr std::size_t hugePage = 2 << 20;

/// A picture in ordinary pages has more of them than the processor finds without walking through tables, and drawing
/// visits many again for each column of tiles, which costs a fifth of the time. What is behind the last whole huge page
/// stays in ordinary ones, so no more memory is taken than the picture has.
std::uint8_t* allocate(std::size_t bytes) {
    bool const isLarge = bytes >= hugePage;
    void* memory = nullptr;
    if (posix_memalign(&memory, isLarge ? hugePage : rowAlignment, bytes) != 0) throw std::bad_alloc();
    if (isLarge) madvise(memory, bytes / hugePage * hugePage, MADV_HUGEPAGE); // a wish
    return static_cast<std::uint8_t*>(memory);
}

}

Image::Image(int width, int height) : width_(width), height_(height) {
    if (isEmpty()) {
        width_ = height_ = 0;
        return;
    }
    auto const rowBytes = (static_cast<std::size_t>(width) * 4 + rowAlignment - 1) / rowAlignment * rowAlignment;
    stride_ = static_cast<std::ptrdiff_t>(rowBytes);
    auto const bytes = rowBytes * static_cast<std::size_t>(height);
    auto* memory = allocate(bytes);
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
