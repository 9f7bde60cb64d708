#include <Tavaro/Studio/Timeline/TimelineGestures.h>

#include <Tavaro/Studio/Timeline/TimelineMagnets.h>

#include <TavaroCore/Project/DemoProject.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include <fmt/format.h>

namespace tavaro {

namespace {

using namespace timelineIntents;

constexpr double magnetRadius = 8; // points

/// How far a hand moves before it drags.
double threshold(TimelineHand hand) { return hand == TimelineHand::mouse ? 4 : 12; }

bool hasMoved(TimelinePointer const& from, TimelinePointer const& to) {
    return std::hypot(to.x - from.x, to.y - from.y) >= threshold(from.hand);
}

/// All between two of a lane, by time.
std::set<UUID> between(Lane const& lane, LaneItem const& a, LaneItem const& b) {
    std::set<UUID> ids;
    double const first = std::min(a.start, b.start), last = std::max(a.start, b.start);
    for (auto const& item : lane.index.items()) {
        if (item.start >= first && item.start <= last) ids.insert(item.id);
    }
    return ids;
}

double middleOf(LaneItem const& item) { return (item.start + item.end) / 2; }

bool isMovable(LaneItem const& item) {
    bool const canMove = item.hold == LaneItemHold::free || item.hold == LaneItemHold::placed;
    return canMove && item.kind != LaneItemKind::clip; // clips are placed between others
}

/// What of the selection moves, and the span of it. Of the one that is held, which the film may show elsewhere too, the
/// box under the hand counts.
std::pair<std::set<UUID>, TimeRange> movable(GestureScene const& at, LaneItem const& held) {
    std::set<UUID> ids;
    std::optional<TimeRange> extent;
    for (auto const& lane : at.scene.layout.lanes()) {
        for (auto const& item : lane.index.items()) {
            if (!isMovable(item) || !at.selection.contains(item.id) || (item.id == held.id && item != held)) continue;
            TimeRange const range{item.start, item.duration()};
            ids.insert(item.id);
            extent = extent ? extent->unionWith(range) : range;
        }
    }
    return {std::move(ids), extent.value_or(TimeRange{})};
}

ClipEdge edgeOf(TimelinePart part) {
    return part == TimelinePart::leadingEdge || part == TimelinePart::rampIn ? ClipEdge::leading : ClipEdge::trailing;
}

double magnetSeconds(GestureScene const& at) { return at.snaps ? magnetRadius * at.scene.view.secondsPerPoint() : 0; }

/// The document's end: nothing is moved or trimmed beyond it.
double filmEnd(GestureScene const& at) { return at.scene.project.duration(); }

std::string nounFor(std::set<UUID> const& ids, LaneItem const& item) {
    return ids.size() > 1 ? fmt::format("{} Items", ids.size()) : std::string(nounOf(item.kind));
}

}

TimelineGestures::Intents TimelineGestures::press(GestureScene const& at, TimelinePointer const& pointer) {
    auto const hit = hitTest(at.scene, pointer.x, pointer.y, pointer.hand);
    switch (hit.part) {
    case TimelinePart::nothing: [[fallthrough]];
    case TimelinePart::lane: [[fallthrough]];
    case TimelinePart::head: state_ = Pressed{hit, pointer}; return {};
    case TimelinePart::ruler: [[fallthrough]];
    case TimelinePart::playhead: state_ = Scrubbing{}; return scrub(at, pointer);
    default: return pressItem(at, hit, pointer);
    }
}

TimelineGestures::Intents TimelineGestures::pressItem(GestureScene const& at, TimelineHit const& hit,
                                                      TimelinePointer const& pointer) {
    state_ = Pressed{hit, pointer};
    auto const& item = hit.place.item;
    auto ids = at.selection;
    auto const from = pointer.isShiftHeld && anchor_ ? at.scene.layout.find(*anchor_) : std::nullopt;
    if (from && from->lane == hit.lane) {
        ids.merge(between(at.scene.layout.lanes()[hit.lane], from->item, item));
        return {Select{ids}};
    }
    anchor_ = item.id;
    if (pointer.isControlHeld) {
        if (!ids.erase(item.id)) ids.insert(item.id);
        return {Select{ids}};
    }
    if (pointer.isShiftHeld) {
        ids.insert(item.id);
        return {Select{ids}};
    }
    if (ids.contains(item.id)) return {};
    return {Select{{item.id}}};
}

TimelineGestures::Intents TimelineGestures::move(GestureScene const& at, TimelinePointer const& pointer) {
    if (std::holds_alternative<Scrubbing>(state_)) return scrub(at, pointer);
    if (auto* marquee = std::get_if<Marquee>(&state_)) return sweep(at, *marquee, pointer);
    if (auto* dragging = std::get_if<Dragging>(&state_)) return drag(at, *dragging, pointer);
    auto const* pressed = std::get_if<Pressed>(&state_);
    if (!pressed || !hasMoved(pressed->at, pointer)) return {};
    auto intents = beginDrag(at, Pressed(*pressed));
    auto more = isIdle() || std::holds_alternative<Pressed>(state_) ? Intents{} : move(at, pointer);
    std::ranges::move(more, std::back_inserter(intents));
    return intents;
}

TimelineGestures::Intents TimelineGestures::beginDrag(GestureScene const& at, Pressed const& pressed) {
    auto const& hit = pressed.hit;
    if (hit.part == TimelinePart::head) return {};
    if (!isOnItem(hit.part)) {
        bool const adds = pressed.at.isShiftHeld || pressed.at.isControlHeld;
        double const down = pressed.at.y + at.scene.view.scrollY();
        state_ = Marquee{pressed.at, hit.time, down, {}, at.selection, adds};
        return {};
    }
    auto const& item = hit.place.item;
    Dragging dragging{.hit = hit, .pressTime = hit.time};
    std::string name;
    if (hit.part == TimelinePart::rampIn || hit.part == TimelinePart::rampOut) {
        // Somebody else may have edited since the button went down.
        auto const zoom = std::ranges::find(at.scene.project.zoomEvents, item.id, &ZoomEvent::id);
        if (zoom == at.scene.project.zoomEvents.end()) return {};
        dragging.drag = Drag::ramp;
        dragging.value = hit.part == TimelinePart::rampIn ? zoom->rampIn : zoom->rampOut;
        name = "Change Zoom Ramp";
    } else if (hit.part != TimelinePart::body) {
        dragging.drag = Drag::trim;
        name = "Trim " + std::string(nounOf(item.kind));
    } else if (item.kind == LaneItemKind::clip) {
        dragging.drag = pressed.at.isAltHeld ? Drag::slip : Drag::place;
        name = (pressed.at.isAltHeld ? "Slip " : "Move ") + std::string(nounOf(item.kind));
    } else if (isMovable(item)) {
        std::tie(dragging.ids, dragging.extent) = movable(at, item);
        name = "Move " + nounFor(dragging.ids, item);
    } else {
        return {};
    }
    state_ = std::move(dragging);
    return {EditBegan{std::move(name)}};
}

TimelineGestures::Intents TimelineGestures::drag(GestureScene const& at, Dragging& dragging,
                                                 TimelinePointer const& pointer) {
    double const time = at.scene.view.time(pointer.x);
    auto const& item = dragging.hit.place.item;
    caught_.reset();
    switch (dragging.drag) {
    case Drag::move: return dragMove(at, dragging, time);
    case Drag::trim: return dragTrim(at, dragging, time);
    case Drag::slip: {
        auto const clip = std::ranges::find(at.scene.project.timeline.clips, item.id, &VideoClip::id);
        double const speed = clip == at.scene.project.timeline.clips.end() ? 1 : clip->speed;
        return {SlipClip{item.id, (dragging.pressTime - time) * speed}};
    }
    case Drag::ramp: {
        auto const edge = edgeOf(dragging.hit.part);
        double const by = edge == ClipEdge::leading ? time - dragging.pressTime : dragging.pressTime - time;
        return {SetRamp{item.id, edge, std::max(0.0, dragging.value + by)}};
    }
    case Drag::place: dragPlace(at, dragging, time); return {};
    }
    return {};
}

TimelineGestures::Intents TimelineGestures::dragMove(GestureScene const& at, Dragging const& dragging, double time) {
    auto const& item = dragging.hit.place.item;
    double const latest = std::max(filmEnd(at) - dragging.extent.end(), 0.0);
    double by = std::clamp(time - dragging.pressTime, -dragging.extent.start, latest);
    auto const isMoved = [&](LaneItem const& other) { return dragging.ids.contains(other.id); };
    TimelineMagnets const magnets{at.scene.layout, at.scene.playhead, magnetSeconds(at), isMoved};
    double least = magnets.radius;
    double const wanted = by;
    for (double const side : {item.start, item.end}) {
        auto const magnet = magnets.nearest(side + wanted);
        if (!magnet || magnets.radius <= 0 || std::abs(*magnet - side - wanted) > least) continue;
        double const caught = std::clamp(*magnet - side, -dragging.extent.start, latest);
        if (caught != *magnet - side) continue;
        least = std::abs(caught - wanted);
        by = caught;
        caught_ = *magnet;
    }
    return {MoveItems{dragging.ids, by, middleOf(item)}};
}

TimelineGestures::Intents TimelineGestures::dragTrim(GestureScene const& at, Dragging const& dragging, double time) {
    auto const& item = dragging.hit.place.item;
    auto const edge = edgeOf(dragging.hit.part);
    double const from = edge == ClipEdge::leading ? item.start : item.end;
    double to = from + time - dragging.pressTime;
    // What follows a clip moves with its edge, so it is no mark for that.
    auto const isLeftOut = [&](LaneItem const& other) {
        return other.id == item.id || (item.kind == LaneItemKind::clip && other.end >= item.start);
    };
    TimelineMagnets const magnets{at.scene.layout, at.scene.playhead, magnetSeconds(at), isLeftOut};
    if (auto const magnet = magnets.radius > 0 ? magnets.nearest(to) : std::nullopt) {
        to = *magnet;
        caught_ = to;
    }
    return {TrimItem{item.id, edge, to, middleOf(item)}};
}

void TimelineGestures::dragPlace(GestureScene const& at, Dragging& dragging, double time) {
    auto const& clips = at.scene.project.timeline.clips;
    auto const next =
        std::ranges::find_if(clips, [&](VideoClip const& clip) { return time < clip.start + clip.duration / 2; });
    dragging.before = next == clips.end() ? std::nullopt : std::optional(next->id);
    gap_ = next == clips.end() ? at.scene.project.duration() : next->start;
    auto const own = std::ranges::find(clips, dragging.hit.place.item.id, &VideoClip::id);
    dragging.isPlaced = own != clips.end() && next != own && next != own + 1;
    if (!dragging.isPlaced) gap_.reset();
}

TimelineGestures::Intents TimelineGestures::sweep(GestureScene const& at, Marquee& marquee,
                                                  TimelinePointer const& pointer) {
    auto const& view = at.scene.view;
    double const x = std::max(view.x(marquee.fromTime), TimelineView::headerWidth);
    double const y = marquee.fromDown - view.scrollY();
    double const toX = std::max(pointer.x, TimelineView::headerWidth);
    marquee.box = {std::min(x, toX), std::min(y, pointer.y), std::abs(toX - x), std::abs(pointer.y - y)};
    auto ids = at.scene.layout.within(view, marquee.box);
    if (marquee.adds) ids.insert(marquee.before.begin(), marquee.before.end());
    if (ids == at.selection) return {};
    return {Select{std::move(ids)}};
}

TimelineGestures::Intents TimelineGestures::release(GestureScene const& at, TimelinePointer const& pointer) {
    auto const state = std::exchange(state_, Idle{});
    caught_.reset();
    gap_.reset();
    if (auto const* pressed = std::get_if<Pressed>(&state)) return click(at, Pressed{pressed->hit, pointer});
    if (std::holds_alternative<Scrubbing>(state)) return {ScrubEnded{}};
    auto const* dragging = std::get_if<Dragging>(&state);
    if (!dragging) return {};
    Intents intents;
    if (dragging->isPlaced) intents.push_back(PlaceClip{dragging->hit.place.item.id, dragging->before});
    intents.push_back(EditEnded{});
    return intents;
}

TimelineGestures::Intents TimelineGestures::click(GestureScene const& at, Pressed const& pressed) {
    auto const& hit = pressed.hit;
    bool const isPlain = !pressed.at.isShiftHeld && !pressed.at.isControlHeld;
    auto const& lanes = at.scene.layout.lanes();
    if (hit.part == TimelinePart::head) {
        return hit.lane < lanes.size() ? Intents{ToggleLane{lanes[hit.lane].key}} : Intents{};
    }
    if (isOnItem(hit.part)) {
        std::set<UUID> const alone = {hit.place.item.id};
        return isPlain && at.selection != alone ? Intents{Select{alone}} : Intents{};
    }
    Intents intents;
    if (isPlain && !at.selection.empty()) intents.push_back(Select{});
    if (isPlain) {
        intents.push_back(Scrub{std::clamp(hit.time, 0.0, filmEnd(at))});
        intents.push_back(ScrubEnded{});
    }
    return intents;
}

TimelineGestures::Intents TimelineGestures::doubleClick(GestureScene const& at, TimelinePointer const& pointer) {
    auto const hit = hitTest(at.scene, pointer.x, pointer.y, pointer.hand);
    if (!isOnItem(hit.part)) return {};
    state_ = Idle{};
    return {Open{hit.place.item.id}};
}

TimelineGestures::Intents TimelineGestures::cancel() {
    auto const state = std::exchange(state_, Idle{});
    caught_.reset();
    gap_.reset();
    if (std::holds_alternative<Dragging>(state)) return {EditCancelled{}};
    if (std::holds_alternative<Scrubbing>(state)) return {ScrubEnded{}};
    if (auto const* marquee = std::get_if<Marquee>(&state)) return {Select{marquee->before}};
    return {};
}

TimelineGestures::Intents TimelineGestures::scrub(GestureScene const& at, TimelinePointer const& pointer) {
    double const time = at.scene.view.time(pointer.x);
    return {Scrub{std::clamp(time, 0.0, filmEnd(at))}};
}

std::optional<LaneBox> TimelineGestures::marquee() const {
    auto const* marquee = std::get_if<Marquee>(&state_);
    return marquee ? std::optional(marquee->box) : std::nullopt;
}

}
