#include <TavaroVision/Scanning/Private/Covers.h>

#include <TavaroCore/Privacy/TextFindings.h>
#include <TavaroVision/Scanning/Private/AnimatedFindings.h>
#include <TavaroVision/Scanning/Private/CoverEdges.h>
#include <TavaroVision/Scanning/Private/FindingJoins.h>
#include <TavaroVision/Scanning/Private/FoundTexts.h>
#include <TavaroVision/Scanning/Private/ScreenClassifier.h>
#include <TavaroVision/Scanning/Private/ScreenLines.h>
#include <TavaroVision/Scanning/Private/ZoomedFindings.h>
#include <TavaroVision/Tracking/Private/ScreenHistory.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <utility>

namespace tavaro {

namespace {

constexpr double shortestTyping = 0.2; // seconds
constexpr double soon = 0.07;          // seconds after it moved

/// Whether `outer` has all of `inner`, but for a little.
bool holds(PixelBox const& outer, PixelBox const& inner, int slack) {
    int const shared = std::min(outer.bottom(), inner.bottom()) - std::max(outer.y, inner.y);
    return inner.x >= outer.x - slack && inner.right() <= outer.right() + slack && 5 * shared >= 3 * inner.height;
}

/// Whether most of the letters between two columns of the text are on the present picture.
bool showsMost(TrackedText const& text, int left, int right) {
    int inked = 0, shown = 0;
    auto const& patch = *text.patch;
    for (int cell = 0; cell < patch.cells(); ++cell) {
        int const middle = cell * patch.cellWidth() + patch.cellWidth() / 2;
        if (!patch.isInked(cell) || middle < left || middle >= right) continue;
        ++inked;
        shown += text.presence.shown[static_cast<std::size_t>(cell)] ? 1 : 0;
    }
    return inked > 0 && 2 * shown >= inked;
}

/// Whether a text, though it is as large as what is at its place, does not look the same there.
bool isOtherOfShape(TrackedText const& text, PixelBox const& box, GrayView const& picture) {
    auto const place = text.box();
    return holds(box, place, text.patch->letterHeight() / 2) && !text.patch->isSame(picture, place.x, place.y);
}

/// What is known of a part of a line since the line was read: where both were at the same place, the part is as old as
/// the line is there.
void addPast(TrackedText& part, TrackedText const& line, int left) {
    constexpr int slack = 2; // pixels
    if (line.path.empty() || part.path.empty()) return;
    auto const first = part.path.front();
    auto const there = placeAt(line.path, first.time);
    if (std::abs(there.x + left - first.x) > slack || std::abs(there.y - first.y) > slack) return;
    std::vector<PathPoint> before;
    for (auto const& point : line.path) {
        if (point.time < first.time) before.push_back({point.time, point.x + left, point.y});
    }
    part.path.insert(part.path.begin(), before.begin(), before.end());
    for (std::size_t cell = 0; cell < part.since.size(); ++cell) {
        int const width = part.patch->cellWidth();
        auto const lineCell = static_cast<std::size_t>((left + static_cast<int>(cell) * width + width / 2) / width);
        if (lineCell < line.since.size()) part.since[cell] = std::min(part.since[cell], line.since[lineCell]);
    }
}

/// The times of the letters, ascending from left to right where they were typed.
std::vector<double> timesOf(TrackedText const& text) {
    std::vector<double> times;
    for (int cell = 0; cell < text.patch->cells(); ++cell) {
        if (text.patch->isInked(cell)) times.push_back(text.since[static_cast<std::size_t>(cell)]);
    }
    return times;
}

/// The second letter decides: one alone may look like another that was there before.
double beginningOf(std::vector<double> times, double otherwise) {
    if (times.empty()) return otherwise;
    auto const second = times.begin() + (times.size() > 1 ? 1 : 0);
    std::ranges::nth_element(times, second);
    return *second;
}

std::optional<TimeRange> typedIn(std::vector<double> const& times) {
    if (times.size() < 3) return std::nullopt;
    auto const [first, last] = std::ranges::minmax(times);
    auto different = times;
    std::ranges::sort(different);
    auto const steps = std::unique(different.begin(), different.end()) - different.begin();
    bool const isRightwards = times.front() < times.back();
    if (steps < 3 || last - first < shortestTyping || !isRightwards) return std::nullopt;
    return TimeRange{first, last - first};
}

/// From that time on, and where it was then.
std::vector<PathPoint> pathFrom(std::vector<PathPoint> const& path, double start) {
    std::vector<PathPoint> rest{placeAt(path, start)};
    std::ranges::copy_if(path, std::back_inserter(rest), [&](PathPoint const& point) { return point.time > start; });
    return rest;
}

/// How long something needs to leave the picture, on one axis, where it is close to the edge that it moves to.
double timeOut(double at, double length, double room, double speed, double close) {
    if (speed > 0 && at + length >= room - close) return std::max(0.0, room - at) / speed;
    if (speed < 0 && at <= close) return std::max(0.0, at + length) / -speed;
    return 0;
}

/// How a text that was close to an edge of the picture at `there` comes from beyond it or goes there, the way that it
/// has on the picture between `inner` and that: letters can be read that are cut too much to be known.
std::optional<PathPoint> beyondEdge(PathPoint const& inner, PathPoint const& there, TextPatch const& patch, int width,
                                    int height) {
    constexpr double longest = 0.7; // seconds
    double const seconds = std::abs(there.time - inner.time);
    if (seconds == 0) return std::nullopt;
    double const dx = (there.x - inner.x) / seconds, dy = (there.y - inner.y) / seconds;
    double const out = std::max(timeOut(there.x, patch.width(), width, dx, patch.height()),
                                timeOut(there.y, patch.height(), height, dy, patch.height()));
    double const further = std::min(out, longest);
    if (further == 0) return std::nullopt;
    auto const after = [&](int at, double speed) { return at + static_cast<int>(std::lround(speed * further)); };
    double const time = there.time > inner.time ? there.time + further : there.time - further;
    return PathPoint{std::max(0.0, time), after(there.x, dx), after(there.y, dy)};
}

NormalizedRect areaOf(PixelBox const& box, int width, int height) {
    double const left = std::clamp(box.x, 0, width), right = std::clamp(box.right(), 0, width);
    double const top = std::clamp(box.y, 0, height), bottom = std::clamp(box.bottom(), 0, height);
    return {left / width, top / height, (right - left) / width, (bottom - top) / height};
}

/// With points where a box of that size at it begins to leave the picture, or is all inside again: only between such
/// points what is seen of it changes evenly.
std::vector<PathPoint> withEdges(std::vector<PathPoint> const& path, PixelBox const& around, int width, int height) {
    std::vector<PathPoint> all;
    for (auto const& point : path) {
        if (!all.empty()) {
            auto const from = all.back();
            std::vector<double> parts;
            auto const cross = [&](int a, int b, int edge) {
                if ((a < edge && edge < b) || (b < edge && edge < a)) parts.push_back(double(edge - a) / (b - a));
            };
            cross(from.x + around.x, point.x + around.x, 0);
            cross(from.y + around.y, point.y + around.y, 0);
            cross(from.x + around.right(), point.x + around.right(), width);
            cross(from.y + around.bottom(), point.y + around.bottom(), height);
            std::ranges::sort(parts);
            for (auto const part : parts) {
                auto const between = [&](int a, int b) { return a + static_cast<int>(std::lround(part * (b - a))); };
                all.push_back(
                    {from.time + part * (point.time - from.time), between(from.x, point.x), between(from.y, point.y)});
            }
        }
        all.push_back(point);
    }
    return all;
}

/// Some letters alone, or parts of them here and there, may be those of another text. What a window leaves of a line
/// are parts of one height.
bool isSurely(TextPatch const& patch, TextPresence const& presence) {
    constexpr int enough = 8, fewestParts = 4, enoughParts = 12;
    bool const isMost = presence.whole > 0 && 2 * presence.whole >= patch.letterCells();
    bool const isMostParts = presence.longestEdge >= fewestParts && 5 * presence.longestEdge >= 4 * patch.letterCells();
    return presence.isLegible() &&
           (isMost || presence.whole >= enough || isMostParts || presence.longestEdge >= enoughParts);
}

/// The part of a patch that is shown, where that is less than most of it: a line may be of two windows that part.
PixelBox shownPart(TextPatch const& patch, TextPresence const& presence) {
    PixelBox const all{0, 0, patch.width(), patch.height()};
    if (presence.isMost()) return all;
    int begin = 0, end = 0, from = 0, run = 0, longest = 0;
    for (int cell = 0; cell < patch.cells(); ++cell) {
        if (!patch.isInked(cell)) continue;
        run = presence.shown[static_cast<std::size_t>(cell)] ? run + 1 : 0;
        if (run == 1) from = cell;
        if (run <= longest) continue;
        longest = run;
        begin = from;
        end = cell + 1;
    }
    int const left = begin * patch.cellWidth(), right = std::min(patch.width(), end * patch.cellWidth());
    return {left, 0, right - left, patch.height()};
}

}

std::vector<TrackedText*> Covers::places() {
    std::vector<TrackedText*> places;
    for (auto& cover : alive_) places.push_back(&cover.place);
    return places;
}

void Covers::finish(Cover& cover, double end) {
    auto& finding = cover.finding;
    finding.end = std::max(end, finding.start);
    finding.keyframes.clear();
    auto path = pathFrom(cover.place.path, finding.start);
    auto const& patch = *cover.place.patch;
    extendBack(path);
    if (path.size() > 1) {
        if (auto const before = beyondEdge(path[1], path[0], patch, width_, height_); before && path[0].time > 0)
            path.insert(path.begin(), *before);
    }
    finding.start = path.front().time;
    if (finding.end - path.back().time < soon) extendOn(path);
    auto const around = [&](PathPoint const& at) {
        return cover.edges.around({at.x, at.y, patch.width(), patch.height()});
    };
    for (auto const& point : withEdges(path, around({}), width_, height_)) {
        finding.keyframes.push_back({point.time, areaOf(around(point), width_, height_)});
    }
    done_.push_back(std::move(finding));
}

/// Of two texts at one place only that can be there that is more alike.
bool Covers::isElsewhere(Cover const& cover, GrayView const& picture) const {
    auto const box = cover.place.box();
    auto const slack = cover.place.patch->letterHeight() / 2;
    auto const differenceOf = [&](Cover const& one) {
        return one.place.patch->difference(picture, one.place.x, one.place.y);
    };
    return std::ranges::any_of(alive_, [&](Cover const& other) {
        return other.finding.textHash != cover.finding.textHash && holds(other.place.box(), box, slack) &&
               holds(box, other.place.box(), slack) && other.place.presence.isLegible() &&
               differenceOf(other) < differenceOf(cover);
    });
}

/// Two that were at different places may have met.
bool Covers::isTwice(Cover const& cover) const {
    auto const box = cover.place.box();
    auto const slack = cover.place.patch->letterHeight() / 4;
    return std::ranges::any_of(alive_, [&](Cover const& other) {
        return other.finding.textHash == cover.finding.textHash && holds(other.place.box(), box, slack) &&
               other.finding.start < cover.finding.start && other.place.presence.isLegible();
    });
}

void Covers::endLost(double now, GrayView const& picture) {
    std::set<Cover const*> lost;
    for (auto& cover : alive_) {
        if (!cover.place.presence.isLegible() || isTwice(cover)) lost.insert(&cover);
        if (lost.contains(&cover) || !isElsewhere(cover, picture)) continue;
        lost.insert(&cover);
        auto& path = cover.place.path;
        while (path.size() > 1 && path.back().time >= now) path.pop_back();
    }
    auto const isLost = [&](Cover const& cover) { return lost.contains(&cover); };
    for (auto& cover : alive_) {
        if (!isLost(cover)) continue;
        auto const& finding = cover.finding;
        found_.keep({cover.place.patch, finding.kind, finding.label, finding.masked, finding.textHash}, cover.place.x);
        finish(cover, now);
    }
    std::deque<Cover> rest;
    for (auto& cover : alive_) {
        if (!isLost(cover)) rest.push_back(std::move(cover));
    }
    alive_ = std::move(rest);
}

Covers::Cover* Covers::coverOf(PixelBox const& box, int letterHeight) {
    auto const found = std::ranges::find_if(alive_, [&](Cover const& cover) {
        auto const& place = cover.place;
        return holds(place.box(), box, letterHeight / 2) && showsMost(place, box.x - place.x, box.right() - place.x);
    });
    return found == alive_.end() ? nullptr : &*found;
}

/// From that time on another text is there, which only looked like it.
void Covers::giveWay(Cover& old, double from) {
    if (old.finding.start < from) {
        auto& path = old.place.path;
        auto const last = placeAt(path, from); // of a straight way there are only both ends
        path.erase(std::ranges::lower_bound(path, from, {}, &PathPoint::time), path.end());
        path.push_back(last);
        finish(old, from);
    }
    alive_.erase(std::ranges::find_if(alive_, [&](Cover const& cover) { return &cover == &old; }));
}

/// What was found of it before it was all typed is covered by itself all the same, since a line may be of two windows
/// that part again.
void Covers::count(Cover const& cover) {
    for (auto const& old : alive_) {
        bool const isPart = holds(cover.place.box(), old.place.box(), cover.place.patch->letterHeight() / 2);
        if (isPart) counted_.erase(old.finding.textHash);
    }
    counted_.insert(cover.finding.textHash);
}

void Covers::add(PrivateText const& found, ScreenLine const& line, GrayView const& picture, BackTracker& tracker) {
    auto const& whole = line.place;
    int const left = std::clamp(found.left, 0, whole.patch->width() - 1);
    int const right = std::clamp(found.right, left + 1, whole.patch->width());
    PixelBox const part{left, 0, right - left, whole.patch->height()};
    PixelBox const box{whole.x + left, whole.y, part.width, part.height};
    auto const hash = findingHash(found.value, key_);
    auto* const there = coverOf(box, whole.patch->letterHeight());
    if (there && (there->finding.textHash == hash || !isOtherOfShape(there->place, box, picture))) return;
    auto patch = std::make_shared<TextPatch const>(whole.patch->view(), part, whole.patch->letterHeight());
    auto const edges = coverEdges(picture, box, whole.patch->letterHeight());
    Cover cover{tracker.trackedFrom(std::move(patch), box.x, box.y), edges, {}};
    if (!cover.place.presence.isLegible()) return;

    addPast(cover.place, whole, left);
    FoundText const text{cover.place.patch, found.kind, found.label, maskedValue(found.value), hash};
    found_.keep(text, box.x);
    begin(std::move(cover), text);
    if (there) giveWay(*there, alive_.back().finding.start);
}

void Covers::begin(Cover&& cover, FoundText const& text) {
    auto const times = timesOf(cover.place);
    auto& finding = cover.finding;
    finding.kind = text.kind;
    finding.label = text.label;
    finding.masked = text.masked;
    finding.textHash = text.textHash;
    finding.start = beginningOf(times, cover.place.path.front().time);
    finding.typed = typedIn(times);
    cover.place.isPrivate = true;
    count(cover);
    alive_.push_back(std::move(cover));
}

bool Covers::isBelowAny(PixelBox const& box, int slack) const {
    return std::ranges::any_of(alive_, [&](Cover const& cover) { return holds(cover.place.box(), box, slack); });
}

void Covers::addKnown(ScreenHistory const& history, ChangedTiles const& tiles) {
    auto const picture = history.last().picture->view();
    std::optional<BackTracker> tracker;
    found_.find(picture, tiles, [&](FoundText const& text, int x, int y) {
        auto const& patch = *text.patch;
        int const height = patch.letterHeight();
        if (isBelowAny({x, y, patch.width(), patch.height()}, height / 2)) return;
        auto const presence = patch.presence(picture, x, y);
        if (!isSurely(patch, presence)) return;
        auto const part = shownPart(patch, presence);
        if (isBelowAny({x + part.x, y, part.width, part.height}, height)) return;
        auto const shown =
            part.width == patch.width() ? text.patch : std::make_shared<TextPatch const>(patch.view(), part, height);
        if (!tracker) tracker.emplace(history, tiles);
        auto const edges = coverEdges(picture, {x + part.x, y, part.width, part.height}, height);
        begin({tracker->trackedFrom(shown, x + part.x, y), edges, {}}, text);
    });
}

std::vector<ScreenFinding> Covers::take(double end, BusyRegions const& regions) {
    for (auto& cover : alive_) finish(cover, end);
    alive_.clear();
    auto const readings = withoutParts(std::exchange(done_, {}));
    auto findings = withAnimations(readings, regions, width_, height_, end);
    return joinedFindings(withZooms(std::move(findings), readings, end));
}

}
