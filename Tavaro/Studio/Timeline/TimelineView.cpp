#include <Tavaro/Studio/Timeline/TimelineView.h>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

// Room beside the film when all of it is in view, as a share of the width.
constexpr double margin = 0.03;
// Of an empty film there is this much, so that the ruler has something to show.
constexpr double emptySeconds = 10;

}

double TimelineView::span() const { return std::max(width_ - headerWidth, 1.0); }

double TimelineView::coarsestScale() const {
    double const seconds = content_.duration > 0 ? content_.duration : emptySeconds;
    return std::max(seconds * (1 + 2 * margin) / span(), finestScale);
}

TimeRange TimelineView::visible() const { return {start_, span() * scale_}; }

void TimelineView::resize(double width, double height) {
    width_ = width;
    height_ = height;
    if (fits_) fit();
    confine();
}

void TimelineView::setContent(TimeRange const& content) {
    content_ = content;
    if (fits_) fit();
    confine();
}

void TimelineView::setLanesHeight(double height) {
    lanesHeight_ = height;
    confine();
}

void TimelineView::zoom(double factor, double aboutX) {
    if (!(factor > 0) || !std::isfinite(factor)) return;
    double const kept = time(aboutX);
    double const scale = std::clamp(scale_ / factor, finestScale, coarsestScale());
    setScale(scale, kept - (aboutX - headerWidth) * scale);
}

void TimelineView::setScale(double secondsPerPoint, double start) {
    scale_ = secondsPerPoint;
    start_ = start;
    fits_ = false;
    confine();
    fits_ = scale_ >= coarsestScale();
}

void TimelineView::scroll(double points, double down) {
    start_ += points * scale_;
    scrollY_ += down;
    confine();
}

void TimelineView::fit() {
    scale_ = coarsestScale();
    start_ = content_.start - margin * span() * scale_ / (1 + 2 * margin);
    fits_ = true;
}

void TimelineView::show(TimeRange const& range) {
    double const scale = std::clamp(std::max(range.duration, 0.1) * 1.2 / span(), finestScale, coarsestScale());
    setScale(scale, range.start + range.duration / 2 - span() * scale / 2);
}

void TimelineView::reveal(double time) {
    auto const shown = visible();
    double const room = shown.duration * 0.1;
    if (time < shown.start)
        start_ = time - room;
    else if (time > shown.end())
        start_ = time + room - shown.duration;
    confine();
}

void TimelineView::follow(double playhead) {
    auto const shown = visible();
    if (playhead >= shown.start && playhead <= shown.end()) return;
    start_ = playhead - shown.duration * 0.05;
    confine();
}

void TimelineView::confine() {
    scale_ = std::isfinite(scale_) ? std::clamp(scale_, finestScale, coarsestScale()) : coarsestScale();
    double const shown = span() * scale_;
    // A quarter of a window of room behind the end lets the last item be dragged longer.
    double const room = scale_ >= coarsestScale() ? 0 : shown * 0.25;
    double const side = margin * coarsestScale() * span() / (1 + 2 * margin);
    double const first = content_.start - std::min(side, shown * margin);
    double const last = std::max(first, content_.end() + room - shown);
    start_ = std::isfinite(start_) ? std::clamp(start_, first, last) : first;
    scrollY_ = std::clamp(scrollY_, 0.0, std::max(0.0, lanesHeight_ - (height_ - rulerHeight)));
}

}
