#include <Tavaro/Studio/Timeline/TimelineItem.h>

#include <Tavaro/Studio/Timeline/TimelineNode.h>

#include <TavaroCore/History/ItemEdit.h>
#include <TavaroCore/Project/DemoProject.h>

#include <QCursor>
#include <QHoverEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QQuickWindow>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavaro {

namespace {

constexpr double keyZoom = 1.5;
constexpr double wheelStep = 60;   // points a notch
constexpr double edgeReach = 32;   // points from the side at which a drag scrolls
constexpr int edgeInterval = 16;   // milliseconds
constexpr double fastestEdge = 18; // points each of them

TimelinePointer pointerOf(QMouseEvent const& event) {
    bool const isFinger =
        event.pointingDevice() && event.pointingDevice()->type() == QInputDevice::DeviceType::TouchScreen;
    return {.x = event.position().x(),
            .y = event.position().y(),
            .isShiftHeld = event.modifiers().testFlag(Qt::ShiftModifier),
            .isControlHeld = event.modifiers().testFlag(Qt::ControlModifier),
            .isAltHeld = event.modifiers().testFlag(Qt::AltModifier),
            .hand = isFinger ? TimelineHand::finger : TimelineHand::mouse};
}

Qt::CursorShape cursorOf(TimelineHit const& hit) {
    switch (hit.part) {
    case TimelinePart::leadingEdge: [[fallthrough]];
    case TimelinePart::trailingEdge: return Qt::SizeHorCursor;
    case TimelinePart::rampIn: [[fallthrough]];
    case TimelinePart::rampOut: return Qt::SplitHCursor;
    case TimelinePart::head: return Qt::PointingHandCursor;
    default: return Qt::ArrowCursor;
    }
}

}

TimelineItem::TimelineItem(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
    setClip(true);
    setAcceptedMouseButtons(Qt::LeftButton | Qt::RightButton);
    setAcceptHoverEvents(true);
    setActiveFocusOnTab(true);
    edgeScroll_.setInterval(edgeInterval);
    connect(&edgeScroll_, &QTimer::timeout, this, &TimelineItem::scrollAtEdges);
}

TimelineItem::~TimelineItem() = default;

void TimelineItem::show(DemoProject const& project) {
    project_ = &project;
    layout_.show(project);
    shown();
}

void TimelineItem::show(DemoProject const& project, ChangedFields const& changed, std::span<ItemPlace const> items) {
    project_ = &project;
    layout_.show(project, changed, items);
    shown();
}

void TimelineItem::showNothing() {
    perform(gestures_.cancel());
    project_ = nullptr;
    layout_ = {};
    dirty();
}

void TimelineItem::shown() {
    view_.setContent(layout_.content());
    view_.setLanesHeight(layout_.height());
    changedView();
}

std::function<void()> TimelineItem::repaint() {
    // Called on the tiles' threads, which end before the item does.
    return [this] { QMetaObject::invokeMethod(this, &TimelineItem::dirty, Qt::QueuedConnection); };
}

void TimelineItem::setMedia(FilmStills::Place place, PeakFolder folder) {
    stills_ = std::make_unique<FilmStills>(place, repaint());
    waves_ = std::make_unique<SoundWaves>(std::move(folder), std::move(place), repaint());
    dirty();
}

void TimelineItem::setSelection(std::set<UUID> selection) {
    if (selection == selection_) return;
    selection_ = std::move(selection);
    dirty();
}

void TimelineItem::setPlayhead(double time) {
    if (time == playhead_) return;
    playhead_ = time;
    if (isPlaying_ && gestures_.isIdle()) {
        auto const start = view_.start();
        view_.follow(time);
        if (view_.start() != start) Q_EMIT viewChanged();
    }
    dirty();
}

void TimelineItem::setPalette(TimelinePalette palette) {
    if (palette == palette_) return;
    palette_ = std::move(palette);
    dirty();
}

void TimelineItem::setFrameRate(double framesPerSecond) {
    if (framesPerSecond == frameRate_) return;
    frameRate_ = framesPerSecond;
    dirty();
}

void TimelineItem::setCollapsed(std::set<std::string> keys) {
    layout_.collapse(std::move(keys));
    shown();
}

void TimelineItem::setView(double start, double secondsPerPoint) {
    if (secondsPerPoint > 0)
        view_.setScale(secondsPerPoint, start);
    else
        view_.fit();
    changedView();
}

void TimelineItem::setSnaps(bool snaps) {
    if (snaps == snaps_) return;
    snaps_ = snaps;
    Q_EMIT snapsChanged();
}

double TimelineItem::contentX() const { return (view_.start() - view_.content().start) / view_.secondsPerPoint(); }
double TimelineItem::contentWidth() const { return view_.content().duration / view_.secondsPerPoint(); }

void TimelineItem::setContentX(double x) {
    view_.scroll(x - contentX(), 0);
    changedView();
}

void TimelineItem::setContentY(double y) {
    view_.scroll(0, y - view_.scrollY());
    changedView();
}

void TimelineItem::zoomIn() {
    view_.zoom(keyZoom, std::clamp(view_.x(playhead_), TimelineView::headerWidth, width()));
    changedView();
}

void TimelineItem::zoomOut() {
    view_.zoom(1 / keyZoom, std::clamp(view_.x(playhead_), TimelineView::headerWidth, width()));
    changedView();
}

void TimelineItem::fit() {
    view_.fit();
    changedView();
}

void TimelineItem::showSelection() {
    std::optional<TimeRange> all;
    for (auto const& id : selection_) {
        auto const place = layout_.find(id);
        if (!place) continue;
        TimeRange const range{place->item.start, place->item.duration()};
        all = all ? all->unionWith(range) : range;
    }
    if (!all) return;
    view_.show(*all);
    changedView();
}

void TimelineItem::selectNeighbour(bool next) {
    auto const from =
        selection_.empty() ? std::nullopt : layout_.find(next ? *selection_.rbegin() : *selection_.begin());
    LaneItem const* best = nullptr;
    auto const& lanes = layout_.lanes();
    if (lanes.empty()) return;
    for (auto const& item : lanes[from ? from->lane : 0].index.items()) {
        if (from && item.id == from->item.id) continue;
        bool const isBeyond = !from || (next ? item.start >= from->item.start : item.start <= from->item.start);
        bool const isNearer = !best || (next ? item.start < best->start : item.start > best->start);
        if (isBeyond && isNearer) best = &item;
    }
    if (!best) return;
    auto const chosen = *best;
    ask(timelineIntents::Select{{chosen.id}});
    view_.reveal(chosen.start);
    changedView();
}

void TimelineItem::setRange(TimeRange const& range) {
    if (std::exchange(range_, range) == range) return;
    dirty();
}

void TimelineItem::changedView() {
    dirty();
    Q_EMIT viewChanged();
}

void TimelineItem::dirty() {
    isDrawn_ = false;
    polish();
    update();
}

void TimelineItem::ask(TimelineIntent const& intent) {
    if (auto const* lane = std::get_if<timelineIntents::ToggleLane>(&intent)) {
        auto keys = layout_.collapsed();
        if (!keys.erase(lane->key)) keys.insert(lane->key);
        setCollapsed(std::move(keys));
    }
    if (handler_) handler_(intent);
}

void TimelineItem::perform(TimelineGestures::Intents const& intents) {
    for (auto const& intent : intents) ask(intent);
    dirty();
}

GestureScene TimelineItem::gestureScene() const { return {{layout_, view_, *project_, playhead_}, selection_, snaps_}; }

TimelineDrawing const& TimelineItem::drawing() {
    if (isDrawn_) return drawing_;
    isDrawn_ = true;
    drawing_ = {};
    if (!project_) {
        drawing_.layers[TimelineDrawing::ground].rects = {{QRectF(0, 0, width(), height()), palette_.ground}};
        return drawing_;
    }
    if (window()) looks_.setPixelRatio(window()->effectiveDevicePixelRatio());
    TimelineSubject const subject{.scene = {layout_, view_, *project_, playhead_},
                                  .selection = selection_,
                                  .palette = palette_,
                                  .framesPerSecond = frameRate_,
                                  .hovered = hovered_,
                                  .marquee = gestures_.marquee(),
                                  .caught = gestures_.caught(),
                                  .gap = gestures_.gap(),
                                  .range = range_,
                                  .waves = waves_.get(),
                                  .stills = stills_.get()};
    drawing_ = drawTimeline(subject, looks_);
    return drawing_;
}

void TimelineItem::updatePolish() { drawing(); }

QSGNode* TimelineItem::updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) {
    (void)data;
    auto* timeline = static_cast<TimelineNode*>(node);
    if (!timeline) timeline = new TimelineNode(*window());
    timeline->show(drawing_);
    return timeline;
}

void TimelineItem::geometryChange(QRectF const& now, QRectF const& before) {
    QQuickItem::geometryChange(now, before);
    view_.resize(now.width(), now.height());
    changedView();
}

void TimelineItem::itemChange(ItemChange change, ItemChangeData const& value) {
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) dirty();
    QQuickItem::itemChange(change, value);
}

void TimelineItem::mousePressEvent(QMouseEvent* event) {
    forceActiveFocus(Qt::MouseFocusReason);
    if (!project_) return;
    if (event->button() == Qt::RightButton) return openMenu(event->position().x(), event->position().y());
    pointer_ = pointerOf(*event);
    perform(gestures_.press(gestureScene(), pointer_));
    edgeScroll_.start();
}

void TimelineItem::mouseMoveEvent(QMouseEvent* event) {
    if (!project_ || !event->buttons().testFlag(Qt::LeftButton)) return;
    pointer_ = pointerOf(*event);
    perform(gestures_.move(gestureScene(), pointer_));
}

void TimelineItem::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    edgeScroll_.stop();
    if (project_) perform(gestures_.release(gestureScene(), pointerOf(*event)));
}

void TimelineItem::mouseDoubleClickEvent(QMouseEvent* event) {
    if (project_ && event->button() == Qt::LeftButton)
        perform(gestures_.doubleClick(gestureScene(), pointerOf(*event)));
}

void TimelineItem::mouseUngrabEvent() {
    edgeScroll_.stop();
    if (!gestures_.isIdle()) perform(gestures_.cancel());
}

/// What the menu does is done where it was asked for: the playhead goes there, and what is there is selected.
void TimelineItem::openMenu(double x, double y) {
    perform(gestures_.cancel());
    auto const hit = hitTest({layout_, view_, *project_, playhead_}, x, y);
    if (hit.part != TimelinePart::head) {
        ask(timelineIntents::Scrub{hit.time});
        ask(timelineIntents::ScrubEnded{});
    }
    bool const isItem = isOnItem(hit.part) && hit.place.item.kind != LaneItemKind::card;
    if (isItem && !selection_.contains(hit.place.item.id)) ask(timelineIntents::Select{{hit.place.item.id}});
    wantMenu({x, y}, isItem ? &hit.place.item : nullptr);
}

void TimelineItem::openMenuByKey() {
    if (!project_) return;
    auto const place = selection_.empty() ? std::nullopt : layout_.find(*selection_.begin());
    if (!place) return wantMenu({view_.x(playhead_), TimelineView::rulerHeight}, nullptr);
    auto const box = layout_.box(view_, *place);
    wantMenu({box.x, box.bottom()}, &place->item);
}

void TimelineItem::wantMenu(QPointF at, LaneItem const* item) {
    auto const x = std::clamp(at.x(), TimelineView::headerWidth, std::max(width(), TimelineView::headerWidth));
    auto const y = std::clamp(at.y(), 0.0, height());
    auto const* place = !item ? "timeline" : item->kind == LaneItemKind::clip ? "clip" : "item";
    Q_EMIT menuWanted(x, y, QString::fromUtf8(place));
}

void TimelineItem::scrollAtEdges() {
    if (gestures_.isIdle() || !project_) return edgeScroll_.stop();
    double const left = TimelineView::headerWidth + edgeReach - pointer_.x, right = pointer_.x - (width() - edgeReach);
    double const by = left > 0 ? -std::min(left / 2, fastestEdge) : right > 0 ? std::min(right / 2, fastestEdge) : 0;
    if (by == 0 || gestures_.isPressed()) return;
    auto const start = view_.start();
    view_.scroll(by, 0);
    if (view_.start() == start) return;
    perform(gestures_.move(gestureScene(), pointer_));
    changedView();
}

void TimelineItem::hoverMoveEvent(QHoverEvent* event) { updateHover(event->position().x(), event->position().y()); }

void TimelineItem::hoverLeaveEvent(QHoverEvent* event) {
    (void)event;
    if (!std::exchange(hovered_, std::nullopt)) return;
    dirty();
}

void TimelineItem::updateHover(double x, double y) {
    if (!project_) return;
    auto const hit = hitTest({layout_, view_, *project_, playhead_}, x, y);
    setCursor(cursorOf(hit));
    auto const hovered = isOnItem(hit.part) ? std::optional(hit.place.item.id) : std::nullopt;
    if (hovered == hovered_) return;
    hovered_ = hovered;
    dirty();
}

void TimelineItem::wheelEvent(QWheelEvent* event) {
    auto const pixels = event->pixelDelta();
    QPointF const delta = pixels.isNull() ? QPointF(event->angleDelta()) * wheelStep / 120 : QPointF(pixels);
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        view_.zoom(std::exp2(delta.y() / 120), event->position().x());
    } else if (event->modifiers().testFlag(Qt::ShiftModifier)) {
        view_.scroll(-(delta.x() + delta.y()), 0);
    } else if (layout_.height() > height() - TimelineView::rulerHeight) {
        view_.scroll(-delta.x(), -delta.y());
    } else {
        view_.scroll(-(delta.x() + delta.y()), 0); // there is nothing to scroll down to
    }
    event->accept();
    changedView();
}

bool TimelineItem::event(QEvent* event) {
    if (event->type() != QEvent::NativeGesture) return QQuickItem::event(event);
    auto const* gesture = static_cast<QNativeGestureEvent*>(event);
    if (gesture->gestureType() != Qt::ZoomNativeGesture) return QQuickItem::event(event);
    view_.zoom(1 + gesture->value(), gesture->position().x());
    changedView();
    return true;
}

void TimelineItem::keyPressEvent(QKeyEvent* event) {
    bool const hasControl = event->modifiers().testFlag(Qt::ControlModifier);
    switch (event->key()) {
    case Qt::Key_Escape:
        if (gestures_.isIdle()) return QQuickItem::keyPressEvent(event);
        edgeScroll_.stop();
        return perform(gestures_.cancel());
    case Qt::Key_Plus: [[fallthrough]];
    case Qt::Key_Equal: return zoomIn();
    case Qt::Key_Minus: return zoomOut();
    case Qt::Key_0: return hasControl ? fit() : QQuickItem::keyPressEvent(event);
    case Qt::Key_Z: return event->modifiers() == Qt::ShiftModifier ? fit() : QQuickItem::keyPressEvent(event);
    case Qt::Key_Menu: return openMenuByKey();
    case Qt::Key_F10:
        return event->modifiers() == Qt::ShiftModifier ? openMenuByKey() : QQuickItem::keyPressEvent(event);
    case Qt::Key_BracketLeft: return selectNeighbour(false);
    case Qt::Key_BracketRight: return selectNeighbour(true);
    default: QQuickItem::keyPressEvent(event);
    }
}

}
