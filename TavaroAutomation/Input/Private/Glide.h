#pragma once

#include <TavaroAutomation/Values/UIRect.h>

#include <optional>

namespace tavaro {

/// The way of a hand from one point to another: it speeds up and slows down smoothly, bows a little to one side, and
/// never goes past its end. By way of another point it goes straight to each.
class Glide {
public:
    Glide(UIPoint const& from, UIPoint const& to, std::optional<UIPoint> const& by = {});

    /// At a share of its time, 0…1.
    UIPoint at(double share) const;

private:
    UIPoint from_;
    UIPoint to_;
    UIPoint bow_; // how far its middle is beside the straight line
    std::optional<UIPoint> by_;
};

}
