#pragma once

#include <TavaroCore/Values/TimeRange.h>

namespace tavaro {

/// What part of the film the timeline shows, and how large: the way from output seconds to points of the window and
/// back. Heads of lanes take `headerWidth` points at the left; what is shown of time is right of them.
class TimelineView {
public:
    static constexpr double headerWidth = 128;
    static constexpr double rulerHeight = 30;
    /// A frame of 60 a second is then 33 points wide.
    static constexpr double finestScale = 1.0 / 2000;

    /// Points of the whole timeline, heads and ruler included. A view that showed the whole film still does.
    void resize(double width, double height);
    /// The film with its cards, and how high all lanes are together.
    void setContent(TimeRange const& content);
    void setLanesHeight(double height);

    double secondsPerPoint() const { return scale_; }
    double width() const { return width_; }
    double height() const { return height_; }
    /// How far lanes are scrolled up.
    double scrollY() const { return scrollY_; }
    double start() const { return start_; }
    TimeRange visible() const;
    TimeRange content() const { return content_; }

    double x(double time) const { return headerWidth + (time - start_) / scale_; }
    double time(double x) const { return start_ + (x - headerWidth) * scale_; }

    /// A factor above 1 shows more of less. The time at `x` stays there, as far as the film's ends allow.
    void zoom(double factor, double aboutX);
    void setScale(double secondsPerPoint, double start);
    void scroll(double points, double down);
    /// The whole film.
    void fit();
    bool fits() const { return fits_; }
    /// A span of it, with a little room beside.
    void show(TimeRange const& range);
    /// Scrolls as little as brings the time into view.
    void reveal(double time);
    /// Turns the page when a playing film leaves it.
    void follow(double playhead);

    bool operator==(TimelineView const&) const = default;

private:
    double span() const;
    double coarsestScale() const;
    void confine();

    double width_ = 0;
    double height_ = 0;
    double lanesHeight_ = 0;
    TimeRange content_;
    double start_ = 0;    // output seconds at the left edge of what is shown
    double scale_ = 0.05; // output seconds a point
    double scrollY_ = 0;
    bool fits_ = true; // follows the film's length
};

}
