#include <Tavaro/Studio/Preview/PictureSize.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

constexpr std::int64_t widthStep = 16; // pixels of four bytes; rows of pictures start on 64-byte borders
constexpr std::int64_t heightStep = 2;
constexpr std::int64_t smallestSide = 16;

Size2 ofWidth(std::int64_t width, Size2 shape) {
    auto const whole = std::max(width / widthStep * widthStep, widthStep);
    double const height =
        static_cast<double>(whole) * static_cast<double>(shape.height) / static_cast<double>(shape.width);
    return {whole, std::max<std::int64_t>(std::llround(height / heightStep) * heightStep, smallestSide)};
}

}

Size2 pictureSize(Size2 canvas, Size2 room) {
    bool const isSomewhere = canvas.width > 0 && canvas.height > 0;
    if (!isSomewhere || room.width < smallestSide || room.height < smallestSide) return {};
    double const scale = std::min({1.0, static_cast<double>(room.width) / static_cast<double>(canvas.width),
                                   static_cast<double>(room.height) / static_cast<double>(canvas.height)});
    // Half a pixel may be lost to rounding.
    return ofWidth(static_cast<std::int64_t>(static_cast<double>(canvas.width) * scale + 0.5), canvas);
}

Size2 coarserSize(Size2 size, int divisor) { return divisor <= 1 ? size : ofWidth(size.width / divisor, size); }

}
