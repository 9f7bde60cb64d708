#pragma once

#include <TavaroCore/Records/Fields.h>

namespace tavaro {

/// A place on the desktop in screen points, from the top-left of its displays. A point of an X11 desktop is a pixel.
struct UIPoint {
    double x = 0;
    double y = 0;

    static constexpr auto fields = std::tuple{field("x", &UIPoint::x), field("y", &UIPoint::y)};
    bool operator==(UIPoint const&) const = default;
};
static_assert(listsEveryField<UIPoint>);

/// A rectangle of the desktop in screen points.
struct UIRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool isEmpty() const { return !(width > 0 && height > 0); }
    UIPoint center() const { return {x + width / 2, y + height / 2}; }
    /// The right and bottom edges are outside.
    bool contains(UIPoint const& point) const;
    UIRect intersection(UIRect const& other) const;

    static constexpr auto fields = std::tuple{field("x", &UIRect::x), field("y", &UIRect::y),
                                              field("width", &UIRect::width), field("height", &UIRect::height)};
    bool operator==(UIRect const&) const = default;
};
static_assert(listsEveryField<UIRect>);

}
