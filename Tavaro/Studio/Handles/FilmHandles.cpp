#include <Tavaro/Studio/Handles/FilmHandles.h>

#include <Tavaro/Studio/Lists/FieldVariant.h>

#include <QCursor>
#include <QHoverEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QVariantMap>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavaro {

namespace {

Qt::CursorShape cursorOf(FilmHit const& hit) {
    if (hit.thing.kind == ThingKind::divider) return hit.thing.isUpright() ? Qt::SplitHCursor : Qt::SplitVCursor;
    auto const sides = sidesOf(hit.grip);
    if (hit.grip == FilmGrip::from || hit.grip == FilmGrip::to) return Qt::CrossCursor;
    if (sides.x == 0 && sides.y == 0) return Qt::SizeAllCursor;
    if (sides.x == 0) return Qt::SizeVerCursor;
    if (sides.y == 0) return Qt::SizeHorCursor;
    return sides.x == sides.y ? Qt::SizeFDiagCursor : Qt::SizeBDiagCursor;
}

FilmHands::Select howOf(Qt::KeyboardModifiers modifiers) {
    return modifiers.testFlag(Qt::ShiftModifier) ? FilmHands::Select::also : FilmHands::Select::only;
}

/// Which way an arrow key goes; none for other keys.
std::optional<QPointF> wayOf(int key) {
    switch (key) {
    case Qt::Key_Left: return QPointF(-1, 0);
    case Qt::Key_Right: return QPointF(1, 0);
    case Qt::Key_Up: return QPointF(0, -1);
    case Qt::Key_Down: return QPointF(0, 1);
    default: return std::nullopt;
    }
}

constexpr double farStep = 10;  // pixels of the film, with Shift
constexpr double growth = 1.05; // by a key

}

FilmHandles::FilmHandles(QQuickItem* parent) : QQuickItem(parent) {
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptHoverEvents(true);
    setFlag(ItemIsFocusScope, false);
}

FilmHandles::~FilmHandles() {
    if (window_) window_->removeEventFilter(this);
    if (preview_) preview_->lookAt({});
}

void FilmHandles::setSession(EditorSession* session) {
    if (session_ == session) return;
    leaveText();
    if (session_) session_->disconnect(this);
    hands_.reset();
    session_ = session;
    if (session) {
        hands_.emplace(*session);
        connect(session, &EditorSession::selectionChanged, this, &FilmHandles::refresh);
        connect(session, &EditorSession::playheadChanged, this, &FilmHandles::look);
        connect(session, &EditorSession::documentChanged, this, &FilmHandles::refresh);
        connect(session, &QObject::destroyed, this, [this] { hands_.reset(); });
    }
    see();
    Q_EMIT sessionChanged();
}

void FilmHandles::setPreview(FilmPreview* preview) {
    if (preview_ == preview) return;
    if (preview_) {
        preview_->disconnect(this);
        preview_->playback()->disconnect(this);
        preview_->lookAt({});
    }
    preview_ = preview;
    if (preview) {
        connect(preview, &FilmPreview::pictureChanged, this, &FilmHandles::see);
        connect(preview->playback(), &FilmPlayback::playingChanged, this, &FilmHandles::see);
    }
    see();
    Q_EMIT previewChanged();
}

void FilmHandles::setFilm(QRectF const& film) {
    if (film_ == film) return;
    film_ = film;
    Q_EMIT filmChanged();
    Q_EMIT thingsChanged();
}

QString FilmHandles::tool() const { return toQString(nameOf(hands_ ? hands_->tool() : FilmTool::select)); }

void FilmHandles::setTool(QString const& name) {
    auto const tool = enumNamed<FilmTool>(name.toStdString());
    if (!hands_ || !tool || hands_->tool() == *tool) return;
    hands_->take(*tool);
    Q_EMIT toolChanged();
    refresh();
}

void FilmHandles::setComparing(bool isComparing) {
    if (isComparing_ == isComparing) return;
    isComparing_ = isComparing;
    Q_EMIT comparingChanged();
    see();
}

bool FilmHandles::isCropped() const { return session_ && session_->document().sourceCrop.has_value(); }

/// Nothing can be taken hold of while the film plays, nor of what it was before the edit.
void FilmHandles::see() {
    if (hands_) {
        bool const isWorked = preview_ && !preview_->playback()->isPlaying() && !isComparing_;
        if (!isWorked && hands_->things().empty()) return look();
        // A picture of before the latest edit would take things back to where they were.
        if (!isWorked || preview_->isCurrent()) hands_->see(isWorked ? preview_->picture().places : nullptr);
    }
    refresh();
}

void FilmHandles::refresh() {
    if (hands_) hands_->refresh();
    look();
    Q_EMIT thingsChanged();
    if (!hovered_) return;
    auto const& things = hands_ ? hands_->things() : std::vector<FilmThing>();
    auto const isIt = [this](FilmThing const& thing) { return thing.isSame(*hovered_); };
    auto const there = std::ranges::find_if(things, isIt);
    hovered_ = there == things.end() ? std::nullopt : std::optional(*there);
    Q_EMIT hoveredChanged(); // also when it was selected
}

void FilmHandles::look() {
    if (!preview_) return;
    if (isComparing_)
        preview_->lookAt({.shows = FilmView::Shows::rawTake, .zooms = ZoomUse::zoomed, .resting = {}});
    else
        preview_->lookAt(hands_ ? hands_->view() : FilmView{});
}

// Places

QPointF FilmHandles::onItem(UnitPoint2 const& point) const {
    return {film_.x() + point.x * film_.width(), film_.y() + point.y * film_.height()};
}

QRectF FilmHandles::onItem(NormalizedRect const& rect) const {
    return {onItem(UnitPoint2{rect.x, rect.y}), onItem(UnitPoint2{rect.maxX(), rect.maxY()})};
}

FilmPointer FilmHandles::pointerAt(QPointF const& at, Qt::KeyboardModifiers modifiers) const {
    auto const width = std::max(film_.width(), 1.0), height = std::max(film_.height(), 1.0);
    return {.at = {(at.x() - film_.x()) / width, (at.y() - film_.y()) / height},
            .point = {1 / width, 1 / height},
            .keepsShape = modifiers.testFlag(Qt::ShiftModifier),
            .fromCenter = modifiers.testFlag(Qt::AltModifier),
            .isFree = modifiers.testFlag(Qt::ControlModifier)};
}

bool FilmHandles::isSelected(FilmThing const& thing) const {
    auto const isSame = [&](FilmThing const& each) { return each.isSame(thing); };
    return hands_ && std::ranges::any_of(hands_->selected(), isSame);
}

QVariantList FilmHandles::things() const {
    QVariantList list;
    if (!hands_) return list;
    for (auto const& thing : hands_->things()) {
        list.push_back(QVariantMap{
            {QStringLiteral("name"), toQString(describe(session_->document(), thing))},
            {QStringLiteral("place"), onItem(thing.rect)},
            {QStringLiteral("isSelected"), isSelected(thing)},
            {QStringLiteral("isRound"), thing.kind == ThingKind::loupe},
            {QStringLiteral("isLine"), thing.kind == ThingKind::arrow},
            {QStringLiteral("isRejected"), thing.isRejected},
        });
    }
    return list;
}

QVariantList FilmHandles::grips() const {
    QVariantList points;
    if (!hands_ || hands_->selected().size() != 1) return points;
    for (auto const& grip : gripsOf(hands_->selected().front())) points.push_back(onItem(grip.at));
    return points;
}

QVariantList FilmHandles::guides() const {
    QVariantList lines;
    if (!hands_) return lines;
    for (auto const& guide : hands_->guides()) {
        auto const at = onItem(UnitPoint2{guide.at, guide.at});
        if (guide.way == FilmGuide::Way::vertical)
            lines.push_back(QRectF(std::round(at.x()), film_.y(), 1, film_.height()));
        else
            lines.push_back(QRectF(film_.x(), std::round(at.y()), film_.width(), 1));
    }
    return lines;
}

QRectF FilmHandles::hovered() const {
    if (!hovered_ || !hands_ || isSelected(*hovered_)) return {};
    return onItem(hovered_->rect);
}

QRectF FilmHandles::drawn() const { return hands_ && hands_->drawn() ? onItem(*hands_->drawn()) : QRectF(); }

// What is done

void FilmHandles::choose(int thing) {
    if (!hands_ || thing < 0 || thing >= std::ssize(hands_->things())) return;
    hands_->select(FilmThing(hands_->things()[static_cast<std::size_t>(thing)]));
    refresh();
}

void FilmHandles::nudge(double across, double down) {
    if (hands_ && hands_->nudge(across, down)) refresh();
}

void FilmHandles::grow(double factor) {
    if (hands_ && hands_->grow(factor)) refresh();
}

void FilmHandles::rest() {
    if (hands_) hands_->rest();
}

void FilmHandles::clearCrop() {
    if (hands_) hands_->clearCrop();
}

bool FilmHandles::editText() {
    if (!hands_ || hands_->selected().size() != 1) return false;
    auto const& thing = hands_->selected().front();
    if (!textOf(session_->document(), thing)) return false;
    edited_ = thing;
    Q_EMIT editedTextChanged();
    return true;
}

QRectF FilmHandles::editedPlace() const { return edited_ ? onItem(edited_->rect) : QRectF(); }

QString FilmHandles::editedText() const {
    return edited_ && session_ ? toQString(textOf(session_->document(), *edited_).value_or("")) : QString();
}

void FilmHandles::setText(QString const& text) {
    if (edited_ && session_ && text != editedText())
        session_->edit("Edit Text",
                       [&](DemoProject& project) { tavaro::setText(project, *edited_, text.toStdString()); });
    leaveText();
}

void FilmHandles::leaveText() {
    if (!std::exchange(edited_, std::nullopt)) return;
    Q_EMIT editedTextChanged();
}

// The hand

void FilmHandles::mousePressEvent(QMouseEvent* event) {
    forceActiveFocus(Qt::MouseFocusReason);
    setKeepMouseGrab(true); // or what scrolls the picture would take the drag
    if (!hands_) return;
    hands_->press(pointerAt(event->position(), event->modifiers()), howOf(event->modifiers()));
    if (preview_) preview_->setDragged(true);
    refresh();
}

void FilmHandles::mouseMoveEvent(QMouseEvent* event) {
    if (!hands_ || !hands_->isPressed()) return;
    hands_->move(pointerAt(event->position(), event->modifiers()));
    Q_EMIT thingsChanged();
}

void FilmHandles::mouseReleaseEvent(QMouseEvent* event) {
    if (!hands_) return;
    auto const before = hands_->tool();
    hands_->release(pointerAt(event->position(), event->modifiers()));
    if (preview_) preview_->setDragged(false);
    if (hands_->tool() != before) Q_EMIT toolChanged();
    refresh();
}

void FilmHandles::mouseDoubleClickEvent(QMouseEvent* event) {
    mousePressEvent(event);
    if (hands_) hands_->cancel();
    if (editText()) Q_EMIT textAsked();
}

void FilmHandles::mouseUngrabEvent() {
    if (!hands_ || !hands_->isPressed()) return;
    hands_->cancel();
    if (preview_) preview_->setDragged(false);
    refresh();
}

void FilmHandles::hover(std::optional<FilmHit> const& hit) {
    auto const thing = hit ? std::optional(hit->thing) : std::nullopt;
    if (thing == hovered_) return;
    hovered_ = thing;
    Q_EMIT hoveredChanged();
}

void FilmHandles::hoverMoveEvent(QHoverEvent* event) {
    if (!hands_) return;
    auto const hit = hands_->hit(pointerAt(event->position(), event->modifiers()));
    bool const draws = hands_->tool() == FilmTool::hide;
    setCursor(draws ? Qt::CrossCursor : hit ? cursorOf(*hit) : Qt::ArrowCursor);
    hover(draws ? std::nullopt : hit);
}

void FilmHandles::hoverLeaveEvent(QHoverEvent* event) {
    (void)event;
    hover(std::nullopt);
}

// The keys

/// The arrow keys move what is selected while the picture has the keyboard, and else the playhead.
bool FilmHandles::takesKey(QKeyEvent const& event) const {
    if (!hands_ || (event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier))) return false;
    int const key = event.key();
    if (key == Qt::Key_Escape)
        return hands_->isPressed() || hands_->tool() != FilmTool::select || !hands_->selected().empty();
    bool const isForSelected = wayOf(key) || key == Qt::Key_Plus || key == Qt::Key_Equal || key == Qt::Key_Minus ||
                               key == Qt::Key_Return || key == Qt::Key_Enter;
    return isForSelected && !hands_->selected().empty();
}

bool FilmHandles::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride && takesKey(*static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return QQuickItem::event(event);
}

/// From the picture, which is no stop of its own, Tab leads to the first thing on it and not to the window's beginning.
void FilmHandles::leaveByTab(bool forward) {
    auto* const next = nextItemInFocusChain(forward);
    if (next && next != this) next->forceActiveFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
}

void FilmHandles::keyPressEvent(QKeyEvent* event) {
    bool const isTab = event->key() == Qt::Key_Tab, isBacktab = event->key() == Qt::Key_Backtab;
    if (window_ && window_->activeFocusItem() == this && (isTab || isBacktab)) return leaveByTab(isTab);
    if (!takesKey(*event)) return QQuickItem::keyPressEvent(event);
    if (auto const way = wayOf(event->key())) {
        double const step = event->modifiers().testFlag(Qt::ShiftModifier) ? farStep : 1;
        return nudge(way->x() * step, way->y() * step);
    }
    switch (event->key()) {
    case Qt::Key_Plus: [[fallthrough]];
    case Qt::Key_Equal: return grow(growth);
    case Qt::Key_Minus: return grow(1 / growth);
    case Qt::Key_Return: [[fallthrough]];
    case Qt::Key_Enter:
        if (editText()) Q_EMIT textAsked();
        return;
    default: break;
    }
    // Escape: out of a drag, then out of a tool, then out of the selection.
    if (hands_->isPressed()) return mouseUngrabEvent();
    if (hands_->tool() != FilmTool::select) return setTool(QStringLiteral("select"));
    session_->clearSelection();
    refresh();
}

void FilmHandles::keyReleaseEvent(QKeyEvent* event) {
    bool const holds = hands_ && hands_->isPressed(); // a key that is let go in a drag changes how it goes on
    if (!event->isAutoRepeat() && !holds) rest();
    QQuickItem::keyReleaseEvent(event);
}

void FilmHandles::itemChange(ItemChange change, ItemChangeData const& data) {
    QQuickItem::itemChange(change, data);
    if (change != ItemSceneChange) return;
    if (window_) window_->removeEventFilter(this);
    window_ = data.window;
    if (window_) window_->installEventFilter(this);
}

/// The take as it was recorded is seen for as long as the backslash is held, whatever has the keyboard but a text.
bool FilmHandles::eventFilter(QObject* watched, QEvent* event) {
    bool const isDown = event->type() == QEvent::KeyPress;
    if (!isDown && event->type() != QEvent::KeyRelease) return false;
    auto const& key = *static_cast<QKeyEvent*>(event);
    if (watched != window_ || key.key() != Qt::Key_Backslash || !isVisible()) return false;
    auto* const writer = window_->activeFocusItem();
    if (isDown && writer && writer->flags().testFlag(ItemAcceptsInputMethod)) return false;
    if (!key.isAutoRepeat()) setComparing(isDown);
    return true;
}

}
