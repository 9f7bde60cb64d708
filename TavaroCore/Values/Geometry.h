#pragma once

#include <TavaroCore/Records/Fields.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace tavaro {

/// A point in unit coordinates of a frame: 0…1 across and down from the top-left.
struct UnitPoint2 {
    double x = 0;
    double y = 0;

    static const UnitPoint2 center;

    /// From a to b; t may leave 0…1.
    static UnitPoint2 lerp(UnitPoint2 const& a, UnitPoint2 const& b, double t) {
        return {a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t};
    }
    double distance(UnitPoint2 const& to) const { return std::hypot(to.x - x, to.y - y); }
    UnitPoint2 clamped() const { return {std::clamp(x, 0.0, 1.0), std::clamp(y, 0.0, 1.0)}; }

    static constexpr auto fields = std::tuple{field("x", &UnitPoint2::x), field("y", &UnitPoint2::y)};
    bool operator==(UnitPoint2 const&) const = default;
};
static_assert(listsEveryField<UnitPoint2>);

inline constexpr UnitPoint2 UnitPoint2::center{0.5, 0.5};

/// A rectangle in unit coordinates of a frame.
struct NormalizedRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double maxX() const { return x + width; }
    double maxY() const { return y + height; }
    UnitPoint2 center() const { return {x + width / 2, y + height / 2}; }
    /// Negative sides count as 0.
    double area() const { return std::max(width, 0.0) * std::max(height, 0.0); }

    /// Both edges count as inside.
    bool contains(UnitPoint2 const& point) const;
    NormalizedRect unionWith(NormalizedRect const& other) const;
    /// 0 when neither has an area.
    double intersectionOverUnion(NormalizedRect const& other) const;
    /// Grows the rectangle by dx and dy on every side (negative values shrink it), inside the unit square.
    NormalizedRect inset(double dx, double dy) const;
    /// Whether the rectangles overlap or come within `slack` of each other on both axes.
    bool touches(NormalizedRect const& other, double slack) const;

    static constexpr auto fields =
        std::tuple{field("x", &NormalizedRect::x), field("y", &NormalizedRect::y),
                   field("width", &NormalizedRect::width), field("height", &NormalizedRect::height)};
    bool operator==(NormalizedRect const&) const = default;
};
static_assert(listsEveryField<NormalizedRect>);

/// A size in pixels.
struct Size2 {
    std::int64_t width = 0;
    std::int64_t height = 0;

    double aspect() const { return static_cast<double>(width) / static_cast<double>(height); }
    /// Each side without its lowest bit, toward zero.
    Size2 evened() const { return {width - width % 2, height - height % 2}; }

    static constexpr auto fields = std::tuple{field("width", &Size2::width), field("height", &Size2::height)};
    bool operator==(Size2 const&) const = default;
};
static_assert(listsEveryField<Size2>);

}
