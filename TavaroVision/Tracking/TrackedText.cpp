#include <TavaroVision/Tracking/Private/TrackedText.h>

#include <TavaroVision/Tracking/Private/ChangedTiles.h>
#include <TavaroVision/Tracking/Private/ScreenHistory.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace tavaro {

namespace {

constexpr int mostSearches = 4, mostFailures = 2; // in a picture
constexpr int mostPrivateFailures = 6;            // of what must not be lost
constexpr double longestGlide = 0.05;             // seconds between pictures
constexpr double shortestFrame = 1.0 / 240;       // seconds
constexpr double twoPictures = 1.0 / 15;          // seconds, of a recording at 30 a second

void addShift(std::vector<Shift>& shifts, Shift const& shift) {
    if (!shift.isNone() && std::ranges::find(shifts, shift) == shifts.end()) shifts.push_back(shift);
}

bool isBetween(PathPoint const& a, PathPoint const& b, PathPoint const& c) {
    constexpr double slack = 0.5; // pixels
    if (c.time <= a.time) return true;
    auto const part = (b.time - a.time) / (c.time - a.time);
    return std::abs(a.x + part * (c.x - a.x) - b.x) <= slack && std::abs(a.y + part * (c.y - a.y) - b.y) <= slack;
}

/// What lies between two others on one straight way is not needed.
void append(std::vector<PathPoint>& path, PathPoint const& point) {
    if (!path.empty() && path.back().time >= point.time) return;
    if (path.size() >= 2 && isBetween(path[path.size() - 2], path.back(), point)) path.pop_back();
    path.push_back(point);
}

bool isSamePlace(PathPoint const& a, PathPoint const& b) { return a.x == b.x && a.y == b.y; }

/// Two pictures further on the way from one point to the next.
PathPoint beyond(PathPoint const& from, PathPoint const& to) {
    auto const forward = to.time > from.time ? twoPictures : -twoPictures;
    auto const part = forward / (to.time - from.time);
    auto const further = [&](int a, int b) { return b + static_cast<int>(std::lround(part * (b - a))); };
    return {std::max(0.0, to.time + forward), further(from.x, to.x), further(from.y, to.y)};
}

/// Whether it is about to leave the picture. What is alike elsewhere is another then.
bool isLeaving(TrackedText const& text, GrayView const& picture) {
    auto const box = text.box();
    int const close = box.height, dx = text.velocity.dx, dy = text.velocity.dy;
    return (dy < 0 && box.y <= close) || (dy > 0 && box.bottom() >= picture.height - close) ||
           (dx < 0 && box.x <= close) || (dx > 0 && box.right() >= picture.width - close);
}

/// A text that is not where it was, and the best place for it so far.
struct Lost {
    TrackedText* text;
    Shift best;
    TextPresence presence;

    bool isFound() const { return !best.isNone() && presence.isMost(); }
    bool isNearly(Shift const& a, Shift const& b) const {
        return std::abs(a.dx - b.dx) + std::abs(a.dy - b.dy) <=
               text->patch->letterHeight() + std::abs(b.dx) + std::abs(b.dy);
    }
    /// The next shift, which is no shorter than those before. A text that is found stays so, unless it is much better
    /// there: far away there may be another that is alike.
    bool trial(Shift const& shift, GrayView const& picture) {
        if (isLeaving(*text, picture) && !isNearly(shift, text->velocity)) return false;
        auto there = text->patch->presence(picture, text->x + shift.dx, text->y + shift.dy);
        auto const least = isFound() ? presence.count + text->patch->letterCells() / 4 : presence.count;
        if (there.count <= least || !there.isLegible()) return false;
        presence = std::move(there);
        best = shift;
        return true;
    }
};

/// Makes the cells that are surely of the text, and not alike by chance, as old as that.
void age(TrackedText& text, double time) {
    auto const& patch = *text.patch;
    auto const& presence = text.presence;
    std::vector<std::size_t> run;
    int inked = 0;
    auto const end = [&](bool isOuter) {
        bool const isSure = isOuter || presence.isMost() || run.size() >= TextPresence::sureRun;
        for (auto const cell : run) text.since[cell] = isSure ? time : text.since[cell];
        run.clear();
    };
    for (std::size_t cell = 0; cell < text.since.size(); ++cell) {
        if (!patch.isInked(static_cast<int>(cell))) continue;
        if (presence.shown[cell]) run.push_back(cell);
        if (!presence.shown[cell]) end(static_cast<int>(run.size()) == inked);
        ++inked;
    }
    end(true);
}

std::vector<Lost> lostOf(std::span<TrackedText* const> texts, NextPicture const& next) {
    std::vector<Lost> lost;
    for (auto* text : texts) {
        if (!next.tiles.isChanged(text->box())) {
            text->velocity = {};
            continue;
        }
        text->presence = text->patch->presence(next.picture, text->x, text->y);
        if (text->presence.isMost()) {
            text->velocity = {};
            text->isSearched = false;
        } else {
            lost.push_back({text, {}, text->presence});
        }
    }
    return lost;
}

/// Looks for the largest of the lost ones all over the picture; where it went, others may have gone too.
void searchFor(std::vector<Lost>& lost, std::vector<Shift>& shifts, GrayView const& picture) {
    std::vector<Lost*> order;
    for (auto& one : lost) order.push_back(&one);
    std::ranges::sort(order, std::greater{},
                      [](Lost const* one) { return std::pair(one->text->isPrivate, one->text->patch->inkedCells()); });
    int searches = 0, failures = 0, privateFailures = 0;
    for (auto* one : order) {
        bool const isPrivate = one->text->isPrivate;
        if (one->isFound() || (one->text->isSearched && !isPrivate) || isLeaving(*one->text, picture)) continue;
        if (isPrivate ? privateFailures >= mostPrivateFailures : failures >= mostFailures) continue;
        if (!isPrivate && ++searches > mostSearches) return;
        auto const shift = shiftOf(*one->text->patch, one->text->x, one->text->y, picture);
        if (!shift || !one->trial(*shift, picture) || !one->isFound()) {
            one->text->isSearched = true;
            ++(isPrivate ? privateFailures : failures);
            continue;
        }
        addShift(shifts, *shift);
        for (auto& other : lost) {
            if (!other.isFound()) other.trial(*shift, picture);
        }
    }
}

}

PathPoint placeAt(std::vector<PathPoint> const& path, double time) {
    auto const after = std::ranges::upper_bound(path, time, {}, &PathPoint::time);
    if (after == path.begin()) return {time, path.front().x, path.front().y};
    auto const& from = after[-1];
    if (after == path.end()) return {time, from.x, from.y};
    auto const part = (time - from.time) / (after->time - from.time);
    auto const between = [&](int a, int b) { return a + static_cast<int>(std::lround(part * (b - a))); };
    return {time, between(from.x, after->x), between(from.y, after->y)};
}

void addStep(std::vector<PathPoint>& path, PathPoint const& point, double before) {
    if (!path.empty()) {
        auto const& last = path.back();
        auto const rests = point.time - before > longestGlide ? point.time - shortestFrame : before;
        if (rests > last.time && (last.x != point.x || last.y != point.y)) append(path, {rests, last.x, last.y});
    }
    append(path, point);
}

void extendBack(std::vector<PathPoint>& path) {
    if (path.size() < 2 || path[0].time <= 0) return;
    auto const& a = path[0];
    if (path[1].time > a.time && !isSamePlace(a, path[1])) path.insert(path.begin(), beyond(path[1], a));
}

void extendOn(std::vector<PathPoint>& path) {
    if (path.size() < 2) return;
    auto const& a = path[path.size() - 2];
    if (path.back().time > a.time && !isSamePlace(a, path.back())) path.push_back(beyond(a, path.back()));
}

void TrackedText::moveTo(int newX, int newY, double before, double now) {
    if (path.empty()) path.push_back({before, x, y});
    velocity = {newX - x, newY - y};
    x = newX;
    y = newY;
    addStep(path, {now, x, y}, before);
}

std::vector<Shift> follow(std::span<TrackedText* const> texts, NextPicture const& next,
                          std::span<Shift const> lastShifts) {
    auto lost = lostOf(texts, next);
    std::vector<Shift> shifts;
    for (auto const& shift : lastShifts) addShift(shifts, shift);
    for (auto const& one : lost) addShift(shifts, one.text->velocity);
    std::ranges::sort(shifts, {}, [](Shift const& shift) { return std::abs(shift.dx) + std::abs(shift.dy); });
    for (auto& one : lost) {
        for (auto const& shift : shifts) one.trial(shift, next.picture);
    }
    searchFor(lost, shifts, next.picture);
    std::vector<Shift> used;
    for (auto& one : lost) {
        one.text->presence = std::move(one.presence);
        addShift(used, one.best);
        if (one.best.isNone()) {
            one.text->velocity = {};
        } else {
            one.text->moveTo(one.text->x + one.best.dx, one.text->y + one.best.dy, next.before, next.now);
        }
    }
    return used;
}

BackTracker::BackTracker(ScreenHistory const& history, ChangedTiles const& tiles) : history_(history), tiles_(tiles) {
    for (std::size_t i = 0; i < history.size(); ++i) shifts_.push_back(history[i].shifts);
}

TrackedText BackTracker::trackedFrom(std::shared_ptr<TextPatch const> patch, int x, int y) {
    auto const& last = history_.last();
    TrackedText text{.patch = std::move(patch), .x = x, .y = y};
    text.presence = text.patch->presence(last.picture->view(), x, y);
    text.since.assign(static_cast<std::size_t>(text.patch->cells()), last.time);
    std::vector<PathPoint> back{{last.time, x, y}};
    for (auto frame = history_.size() - 1; frame-- > 0;) {
        bool const isSame = history_[frame].picture == history_[frame + 1].picture;
        if (!isSame && !stepBack(text, frame)) break;
        back.push_back({history_[frame].time, text.x, text.y});
        age(text, history_[frame].time);
    }
    for (auto point = back.rbegin(); point != back.rend(); ++point) {
        addStep(text.path, *point, text.path.empty() ? point->time : std::prev(point)->time);
    }
    if (back.back().time == history_[0].time) extendStill(text);
    text.x = x;
    text.y = y;
    text.velocity = {};
    text.presence = text.patch->presence(last.picture->view(), x, y);
    return text;
}

/// From where the text is on the history's first frame.
void BackTracker::extendStill(TrackedText& text) const {
    auto const first = history_[0].time;
    auto const since = tiles_.stillSince(text.box(), first);
    if (since >= first) return;
    text.path.insert(text.path.begin(), {since, text.x, text.y});
    for (auto& one : text.since) one = one == first ? since : one;
}

/// To the frame from the one after it.
bool BackTracker::stepBack(TrackedText& text, std::size_t frame) {
    auto const picture = history_[frame].picture->view();
    Lost lost{&text, {}, text.patch->presence(picture, text.x, text.y)};
    if (!lost.presence.isMost()) {
        for (auto const& shift : shifts_[frame + 1]) lost.trial({-shift.dx, -shift.dy}, picture);
        if (!lost.presence.isMost() && !isLeaving(text, picture) && searchBack(text, frame)) return true;
    }
    if (!lost.presence.isSurelyPart()) return false;
    text.velocity = lost.best;
    text.x += lost.best.dx;
    text.y += lost.best.dy;
    text.presence = std::move(lost.presence);
    return true;
}

bool BackTracker::searchBack(TrackedText& text, std::size_t frame) {
    if (failures_ >= mostFailures || text.patch->inkedCells() < 4) return false;
    auto const picture = history_[frame].picture->view();
    auto const shift = shiftOf(*text.patch, text.x, text.y, picture);
    Lost lost{&text, {}, {}};
    if (!shift || shift->isNone() || !lost.trial(*shift, picture) || !lost.isFound()) {
        ++failures_;
        return false;
    }
    addShift(shifts_[frame + 1], {-shift->dx, -shift->dy});
    text.velocity = *shift;
    text.x += shift->dx;
    text.y += shift->dy;
    text.presence = std::move(lost.presence);
    return true;
}

}
