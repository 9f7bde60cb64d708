#include <TavaroCapture/Events/Private/EventLog.h>

#include <algorithm>
#include <cstdlib>

namespace tavaro {

namespace {

int distance(PixelPoint a, PixelPoint b) { return std::max(std::abs(a.x - b.x), std::abs(a.y - b.y)); }

template<class Events> double notBefore(Events const& events, double t) {
    return std::max(t, events.empty() ? 0.0 : events.back().t);
}

}

UnitPoint2 normalizeTopLeft(PixelPoint point, PixelRect const& area) {
    if (area.isEmpty()) return UnitPoint2::center;
    return UnitPoint2{(static_cast<double>(point.x) - area.x) / area.width,
                      (static_cast<double>(point.y) - area.y) / area.height}
        .clamped();
}

std::optional<NormalizedRect> normalizedFrame(PixelRect const& rect, PixelRect const& area) {
    PixelRect const inside = rect.intersection(area);
    if (inside.isEmpty()) return std::nullopt;
    double const width = area.width;
    double const height = area.height;
    return NormalizedRect{(inside.x - area.x) / width, (inside.y - area.y) / height, inside.width / width,
                          inside.height / height};
}

void EventLog::notePointer(double t, PixelPoint point, UnitPoint2 position, CursorKind kind) {
    log_.cursorSamples.push_back({notBefore(log_.cursorSamples, t), position, kind});
    for (auto const& press : open_) {
        if (press) noteTravel(point, *press);
    }
}

void EventLog::noteTravel(PixelPoint point, OpenPress const& press) {
    if (distance(point, press.point) >= dragDistance) log_.clicks[press.click].isDrag = true;
}

void EventLog::notePress(double t, Press press) {
    ClickEvent click;
    click.t = notBefore(log_.clicks, t);
    click.position = press.position;
    click.button = press.button;
    click.application = std::move(press.application);
    click.windowFrame = press.windowFrame;
    // Menus and other short-lived windows often do not say whose they are; they belong to what is in front.
    if (!click.application && click.windowFrame && frontmost_) click.application = frontmost_->name;
    click.isDoubleClick = last_ && last_->button == press.button && click.t - last_->t <= doubleClickSeconds &&
                          distance(last_->point, press.point) <= doubleClickDistance;
    if (click.isDoubleClick)
        last_.reset();
    else
        last_ = LastPress{click.t, press.button, press.point};
    open_[static_cast<int>(press.button)] = OpenPress{log_.clicks.size(), press.point};
    log_.clicks.push_back(std::move(click));
}

void EventLog::noteRelease(double t, MouseButton button, PixelPoint point) {
    auto& open = open_[static_cast<int>(button)];
    if (!open) return; // pressed before the take, or in a pause
    noteTravel(point, *open);
    ClickEvent& click = log_.clicks[open->click];
    if (click.isDrag) {
        click.dragEnd = std::max(t, click.t);
        last_.reset();
    }
    open.reset();
}

void EventLog::noteKey(double t, Chord const& chord) {
    KeystrokeEvent stroke;
    stroke.t = notBefore(log_.keystrokes, t);
    stroke.keys = chord.names();
    stroke.isShortcut = chord.isShortcut();
    stroke.application = applicationAt(stroke.t);
    log_.keystrokes.push_back(std::move(stroke));
}

std::optional<std::string> EventLog::applicationAt(double t) const {
    if (t >= spanStart_) return frontmost_ ? std::optional(frontmost_->name) : std::nullopt;
    auto const span = std::find_if(log_.appSpans.rbegin(), log_.appSpans.rend(),
                                   [&](AppFocusSpan const& span) { return span.t <= t; });
    bool const isIn = span != log_.appSpans.rend() && t < span->t + span->duration;
    return isIn ? std::optional(span->name) : std::nullopt;
}

void EventLog::noteFrontmostApplication(double t, std::optional<ApplicationIdentity> application) {
    if (application == frontmost_) return;
    closeCurrentAppSpan(t);
    frontmost_ = std::move(application);
    spanStart_ = t;
}

void EventLog::closeCurrentAppSpan(double t) {
    if (frontmost_ && t > spanStart_)
        log_.appSpans.push_back({spanStart_, t - spanStart_, frontmost_->bundleID, frontmost_->name});
    frontmost_.reset();
}

void EventLog::close(double t) {
    for (auto& open : open_) {
        if (open && log_.clicks[open->click].isDrag) log_.clicks[open->click].dragEnd = t;
        open.reset();
    }
    closeCurrentAppSpan(t);
}

RecordingMetadata EventLog::since(EventCounts const& held, double t) const {
    auto result = eventsAfter(log_, held);
    if (frontmost_ && t > spanStart_)
        result.appSpans.push_back({spanStart_, t - spanStart_, frontmost_->bundleID, frontmost_->name});
    return result;
}

EventCounts EventLog::settled() const {
    auto result = eventCounts(log_);
    for (auto const& open : open_) {
        if (open) result.clicks = std::min(result.clicks, open->click);
    }
    return result;
}

}
