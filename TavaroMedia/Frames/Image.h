#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tavaro {

/// Somebody else's 8-bit RGBA pixels: straight alpha, origin top-left, four bytes a pixel, `stride` bytes a row.
/// A view owns nothing; whoever hands it out says how long it stays good.
struct ImageView {
    std::uint8_t const* pixels = nullptr;
    int width = 0;
    int height = 0;
    std::ptrdiff_t stride = 0;

    std::uint8_t const* row(int y) const { return pixels + y * stride; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
};

/// The same, open for writing.
struct MutableImageView {
    std::uint8_t* pixels = nullptr;
    int width = 0;
    int height = 0;
    std::ptrdiff_t stride = 0;

    std::uint8_t* row(int y) const { return pixels + y * stride; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    operator ImageView() const { return {pixels, width, height, stride}; }
};

/// An owned RGBA picture. Every row starts on a 64-byte border; pixels start as transparent black. Move-only: a copy of
/// a frame is megabytes, so it is spelled out as `copy()`.
class Image {
public:
    Image() = default;
    Image(int width, int height);

    int width() const { return width_; }
    int height() const { return height_; }
    std::ptrdiff_t stride() const { return stride_; }
    bool isEmpty() const { return width_ <= 0 || height_ <= 0; }

    std::uint8_t* row(int y) { return pixels_.get() + y * stride_; }
    std::uint8_t const* row(int y) const { return pixels_.get() + y * stride_; }
    MutableImageView view() { return {pixels_.get(), width_, height_, stride_}; }
    ImageView view() const { return {pixels_.get(), width_, height_, stride_}; }

    Image copy() const;

private:
    struct AlignedFree {
        void operator()(std::uint8_t* pixels) const;
    };
    std::unique_ptr<std::uint8_t[], AlignedFree> pixels_;
    int width_ = 0;
    int height_ = 0;
    std::ptrdiff_t stride_ = 0;
};

}
