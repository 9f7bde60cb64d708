#include <Tavaro/Studio/Handles/FilmHands.h>

#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Handles/ThingEdits.h>
#include <Tavaro/Studio/Lists/ItemTitle.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavaro {

namespace {

constexpr double dragBegins = 3; // points
constexpr double leastDrawn = 6;

double points(double by, double point) { return std::abs(by) / point; }

bool hasGone(FilmPointer const& from, FilmPointer const& to) {
    return points(to.at.x - from.at.x, to.point.x) >= dragBegins ||
           points(to.at.y - from.at.y, to.point.y) >= dragBegins;
}

NormalizedRect between(UnitPoint2 a, UnitPoint2 b) {
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::abs(a.x - b.x), std::abs(a.y - b.y)};
}

std::string_view verbOf(FilmGrip grip) {
    if (grip == FilmGrip::from || grip == FilmGrip::to) return "Aim";
    return grip == FilmGrip::body ? "Move" : "Resize";
}

std::string nounOf(DemoProject const& project, FilmThing const& thing) {
    for (auto const& overlay : project.overlays) {
        if (overlay.id == thing.id) return inWords(OverlayKind::caseNames[overlay.kind.content.index()]);
    }
    if (thing.kind == ThingKind::loupe) return "Glass Loupe";
    return thing.kind == ThingKind::caption ? "Captions" : inWords(nameOf(thing.kind));
}

FilmThing grownBy(FilmThing thing, double factor) {
    auto const middle = thing.rect.center();
    auto const from = [&](UnitPoint2 point) { return UnitPoint2::lerp(middle, point, factor); };
    thing.from = from(thing.from);
    thing.to = from(thing.to);
    thing.rect = {middle.x - thing.rect.width * factor / 2, middle.y - thing.rect.height * factor / 2,
                  thing.rect.width * factor, thing.rect.height * factor};
    return thing;
}

}

void FilmHands::see(std::shared_ptr<FramePlaces const> places) {
    places_ = std::move(places);
    expected_.clear();
    refresh();
}

void FilmHands::refresh() {
    auto const& selection = session_.selection();
    if (!selection.empty()) chosen_.reset();
    things_.clear();
    if (places_) things_ = thingsOf(session_.document(), *places_, {selection, tool_ == FilmTool::crop});
    for (auto& thing : things_) {
        auto const isIt = [&](FilmThing const& each) { return each.isSame(thing); };
        if (auto const there = std::ranges::find_if(expected_, isIt); there != expected_.end()) thing = *there;
    }
    selected_.clear();
    std::ranges::copy_if(things_, std::back_inserter(selected_), [&](auto const& each) { return isSelected(each); });
}

bool FilmHands::isSelected(FilmThing const& thing) const {
    if (thing.kind == ThingKind::crop) return true;
    if (thing.id == UUID()) return chosen_ == thing.kind;
    return std::ranges::find(session_.selection(), thing.id) != session_.selection().end();
}

void FilmHands::take(FilmTool tool) {
    cancel();
    tool_ = tool;
    if (tool != FilmTool::select) session_.clearSelection();
    refresh();
}

FilmView FilmHands::view() const {
    if (tool_ == FilmTool::crop)
        return {.shows = FilmView::Shows::wholeRecording, .zooms = ZoomUse::unzoomed, .resting = {}};
    FilmView view;
    auto const& selection = session_.selection();
    auto const isChosen = [&](auto const& item) { return std::ranges::find(selection, item.id) != selection.end(); };
    for (auto const& zoom : session_.document().zoomEvents) {
        bool const isHere = !zoom.isLoupe() && zoom.range().contains(session_.playhead());
        if (isHere && selection.size() == 1 && isChosen(zoom)) view.zooms = ZoomUse::unzoomed;
    }
    for (auto const& overlay : session_.document().overlays) {
        if (!selection.empty() && isChosen(overlay)) view.resting.push_back(overlay.id);
    }
    return view;
}

std::optional<FilmHit> FilmHands::hit(FilmPointer const& pointer) const {
    return hitThing(things_, selected_, pointer.at, pointer.point);
}

void FilmHands::select(FilmThing const& thing, Select how) {
    if (thing.kind == ThingKind::crop) return;
    if (thing.id == UUID()) { // the camera's picture or the divider, which are no items
        session_.clearSelection();
        chosen_ = thing.kind;
        if (thing.kind == ThingKind::camera) session_.setInspector(QStringLiteral("camera"));
    } else {
        session_.select(std::vector{thing.id},
                        how == Select::also ? EditorSession::Select::also : EditorSession::Select::only);
    }
    refresh();
}

void FilmHands::press(FilmPointer const& pointer, Select how) {
    rest();
    press_ = Press{pointer, tool_ == FilmTool::hide ? std::nullopt : hit(pointer), std::nullopt};
    if (tool_ != FilmTool::select) return;
    if (!press_->hit) {
        chosen_.reset();
        session_.clearSelection();
        return refresh();
    }
    auto const thing = press_->hit->thing;
    if (!isSelected(thing))
        select(thing, how);
    else if (how == Select::also)
        press_->leaves = thing;
}

void FilmHands::move(FilmPointer const& pointer) {
    if (!press_) return;
    if (tool_ == FilmTool::hide) return draw(pointer);
    if (!press_->hit) return;
    if (!drag_) {
        if (!places_) return; // the film began to play under the hand
        if (!hasGone(press_->pointer, pointer)) return;
        begin();
    }
    drag(pointer);
}

void FilmHands::begin() {
    auto const& hit = *press_->hit;
    std::vector dragged{hit.thing};
    if (hit.grip == FilmGrip::body) {
        for (auto const& each : selected_) {
            if (!each.isSame(hit.thing)) dragged.push_back(each);
        }
    }
    std::vector<NormalizedRect> placements;
    if (hit.thing.kind == ThingKind::camera && places_->camera)
        placements.assign(places_->camera->placements.begin(), places_->camera->placements.end());
    FilmMagnets magnets(things_, dragged);
    step_.emplace(session_.project(), stepName(hit.grip, dragged));
    stepPlaces_ = places_;
    drag_.emplace(hit, std::move(dragged), std::move(magnets), std::move(placements), press_->pointer.at);
}

std::string FilmHands::stepName(FilmGrip grip, std::vector<FilmThing> const& things) const {
    auto const noun =
        things.size() == 1 ? nounOf(session_.document(), things.front()) : fmt::format("{} Items", things.size());
    return fmt::format("{} {}", verbOf(grip), noun);
}

/// Whether it changed anything.
bool FilmHands::step(FunctionRef<void(DemoProject&)> change) {
    auto const revision = session_.project().revision();
    if (step_) session_.attempt([&] { step_->change(change); });
    return session_.project().revision() != revision;
}

/// The next picture comes later than the next key may.
void FilmHands::expect(std::vector<FilmThing> things) {
    expected_ = std::move(things);
    refresh();
}

void FilmHands::drag(FilmPointer const& pointer) {
    auto const target = drag_->to(pointer);
    guides_ = target.guides;
    bool const isChanged = step([&](DemoProject& project) {
        for (std::size_t i = 0; i < target.things.size(); ++i)
            carryOut({drag_->before()[i], target.things[i], drag_->grip()}, project, *stepPlaces_);
    });
    if (isChanged) expect(target.things);
}

void FilmHands::draw(FilmPointer const& pointer) {
    if (drawn_ || hasGone(press_->pointer, pointer)) drawn_ = between(press_->pointer.at, pointer.at);
}

void FilmHands::release(FilmPointer const& pointer) {
    if (!press_) return;
    auto const press = *std::exchange(press_, std::nullopt);
    if (!drag_ && press.leaves) session_.select(std::vector{press.leaves->id}, EditorSession::Select::toggled);
    auto const drawn = std::exchange(drawn_, std::nullopt);
    bool const isLarge = drawn && points(drawn->width, pointer.point.x) >= leastDrawn &&
                         points(drawn->height, pointer.point.y) >= leastDrawn;
    if (isLarge && places_) {
        std::optional<UUID> made;
        session_.edit("Hide Area", [&](DemoProject& project) { made = hideArea(project, *places_, *drawn); });
        tool_ = FilmTool::select;
        if (made) session_.select(std::vector{*made});
    }
    drag_.reset();
    rest();
    refresh();
}

void FilmHands::cancel() {
    if (step_ && press_) session_.attempt([&] { step_->takeBack(); });
    expected_.clear();
    press_.reset();
    drag_.reset();
    drawn_.reset();
    rest();
    refresh();
}

void FilmHands::rest() {
    step_.reset();
    stepPlaces_.reset();
    guides_.clear();
    keyed_.clear();
    keyedBy_ = {};
    keyedFactor_ = 1;
}

bool FilmHands::nudge(double across, double down) {
    auto const& canvas = session_.document().canvas;
    if (isPressed() || selected_.empty() || canvas.width < 1 || canvas.height < 1) return false;
    keyedBy_ = {keyedBy_.x + across / static_cast<double>(canvas.width),
                keyedBy_.y + down / static_cast<double>(canvas.height)};
    return changeSelected(FilmGrip::body);
}

bool FilmHands::grow(double factor) {
    if (isPressed() || selected_.size() != 1) return false;
    keyedFactor_ *= factor;
    return changeSelected(FilmGrip::bottomRight);
}

bool FilmHands::changeSelected(FilmGrip grip) {
    if (selected_.empty() || !places_) return false;
    if (!step_ || step_->isOver()) {
        step_.emplace(session_.project(), stepName(grip, selected_));
        stepPlaces_ = places_;
        keyed_ = selected_;
    }
    auto const held = keyedFactor_ == 1 ? FilmGrip::body : FilmGrip::bottomRight;
    std::vector<FilmThing> becoming;
    for (auto const& thing : keyed_) becoming.push_back(movedBy(grownBy(thing, keyedFactor_), keyedBy_));
    bool const isChanged = step([&](DemoProject& project) {
        for (std::size_t i = 0; i < keyed_.size(); ++i)
            carryOut({keyed_[i], becoming[i], held, ThingChange::By::keys}, project, *stepPlaces_);
    });
    if (isChanged) expect(becoming);
    return true;
}

void FilmHands::clearCrop() {
    session_.edit("Remove Crop", [](DemoProject& project) { project.sourceCrop.reset(); });
}

}
