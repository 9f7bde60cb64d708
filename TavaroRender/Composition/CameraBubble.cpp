#include <TavaroRender/Composition/Private/CameraBubble.h>

#include <TavaroCore/Values/CanvasUnit.h>

namespace tavaro {

namespace {

constexpr double wideAspect = 16.0 / 9;
constexpr double widest = 0.9; // of the canvas

/// Where a placement lies: 0 at the left or top, ½ in the middle, 1 at the right or bottom.
UnitPoint2 anchor(CameraPlacement placement) {
    switch (placement) {
    case CameraPlacement::bottomLeft: return {0, 1};
    case CameraPlacement::bottomRight: return {1, 1};
    case CameraPlacement::topLeft: return {0, 0};
    case CameraPlacement::topRight: return {1, 0};
    case CameraPlacement::left: return {0, 0.5};
    case CameraPlacement::right: return {1, 0.5};
    case CameraPlacement::top: return {0.5, 0};
    case CameraPlacement::bottom: return {0.5, 1};
    }
    return {1, 1};
}

}

CanvasPoint bubbleSize(CameraSettings const& settings, Size2 canvas) {
    double const shape = settings.shape == CameraShape::wide ? wideAspect : 1;
    double const wanted = std::max(settings.size, 0.0) * smallerSide(canvas);
    double const height =
        std::min({wanted, static_cast<double>(canvas.height), widest * static_cast<double>(canvas.width) / shape});
    return {height * shape, height};
}

CanvasRect positionedBubbleRect(CanvasPoint size, UnitPoint2 const& center, Size2 canvas) {
    auto const origin = [](double middle, double length, std::int64_t canvasLength) {
        double const room = std::max(static_cast<double>(canvasLength) - length, 0.0);
        return std::clamp(middle * static_cast<double>(canvasLength) - length / 2, 0.0, room);
    };
    return {origin(center.x, size.x, canvas.width), origin(center.y, size.y, canvas.height), size.x, size.y};
}

CanvasRect placedBubbleRect(CameraSettings const& settings, CanvasPoint size, CameraPlacement placement, Size2 canvas) {
    double const padding = std::max(settings.padding, 0.0) * smallerSide(canvas);
    auto const at = anchor(placement);
    auto const centre = [&](double share, double length, std::int64_t canvasLength) {
        auto const whole = static_cast<double>(canvasLength);
        double const gap = std::min(padding, std::max(whole - length, 0.0) / 2);
        return (gap + length / 2 + (whole - length - 2 * gap) * share) / std::max(whole, 1.0);
    };
    return positionedBubbleRect(size, {centre(at.x, size.x, canvas.width), centre(at.y, size.y, canvas.height)},
                                canvas);
}

double bubbleRadius(CameraShape shape, CanvasPoint size) {
    double const side = std::min(size.x, size.y);
    switch (shape) {
    case CameraShape::circle: return side / 2;
    case CameraShape::roundedSquare: return side * 0.24;
    case CameraShape::square: return side * 0.05;
    case CameraShape::full: return side * 0.06;
    case CameraShape::wide: return side * 0.12;
    }
    return 0;
}

}
