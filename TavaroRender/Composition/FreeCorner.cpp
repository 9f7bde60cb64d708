#include <TavaroRender/Composition/Private/FreeCorner.h>

#include <array>

#include <TavaroCore/Values/CanvasUnit.h>

namespace tavaro {

namespace {

// Of a mark, from the canvas's edges on: pixels at a canvas whose smaller side is 1080.
constexpr double markWidth = 240;
constexpr double markHeight = 84;

CanvasRect markIn(CanvasCorner corner, Size2 canvas) {
    double const width = markWidth * canvasUnit(canvas);
    double const height = markHeight * canvasUnit(canvas);
    bool const isRight = corner == CanvasCorner::bottomRight || corner == CanvasCorner::topRight;
    bool const isBottom = corner == CanvasCorner::bottomRight || corner == CanvasCorner::bottomLeft;
    return {isRight ? static_cast<double>(canvas.width) - width : 0,
            isBottom ? static_cast<double>(canvas.height) - height : 0, width, height};
}

bool meet(CanvasRect const& a, CanvasRect const& b) {
    return a.x < b.maxX() && b.x < a.maxX() && a.y < b.maxY() && b.y < a.maxY();
}

}

CanvasCorner freeCorner(Size2 canvas, std::span<Covered const> covered) {
    constexpr std::array corners{CanvasCorner::bottomRight, CanvasCorner::bottomLeft, CanvasCorner::topRight,
                                 CanvasCorner::topLeft};
    std::array<double, corners.size()> seconds{};
    for (std::size_t i = 0; i < corners.size(); ++i) {
        auto const mark = markIn(corners[i], canvas);
        for (auto const& part : covered) seconds[i] += meet(part.rect, mark) ? part.seconds : 0;
    }
    return corners[static_cast<std::size_t>(std::ranges::min_element(seconds) - seconds.begin())];
}

}
