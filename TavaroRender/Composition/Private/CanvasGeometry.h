#pragma once

#include <algorithm>
#include <cmath>

namespace tavaro {

/// A point, or a vector, in canvas pixels: origin top-left, y downward.
struct CanvasPoint {
    double x = 0;
    double y = 0;

    friend CanvasPoint operator+(CanvasPoint a, CanvasPoint b) { return {a.x + b.x, a.y + b.y}; }
    friend CanvasPoint operator-(CanvasPoint a, CanvasPoint b) { return {a.x - b.x, a.y - b.y}; }
    friend CanvasPoint operator*(CanvasPoint a, double k) { return {a.x * k, a.y * k}; }
    double length() const { return std::hypot(x, y); }
    bool operator==(CanvasPoint const&) const = default;
};

/// A rectangle in canvas pixels; may reach past the canvas.
struct CanvasRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double maxX() const { return x + width; }
    double maxY() const { return y + height; }
    CanvasPoint center() const { return {x + width / 2, y + height / 2}; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    /// How far the point lies outside; 0 inside and on the edges.
    double distance(CanvasPoint point) const {
        double const dx = std::max({x - point.x, 0.0, point.x - maxX()});
        double const dy = std::max({y - point.y, 0.0, point.y - maxY()});
        return std::hypot(dx, dy);
    }
    bool operator==(CanvasRect const&) const = default;
};

/// Canvas pixels on each side of a rectangle.
struct CanvasInsets {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;

    bool operator==(CanvasInsets const&) const = default;
};

}
