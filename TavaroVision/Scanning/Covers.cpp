#include <TavaroVision/Scanning/Private/Covers.h>

#include <TavaroCore/Privacy/TextFindings.h>
#include <TavaroVision/Scanning/Private/ScreenClassifier.h>
#include <TavaroVision/Scanning/Private/ScreenLines.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavaro {

namespace {

constexpr double shortestTyping = 0.2; // seconds
constexpr double meeting = 0.15;       // seconds between findings that are one

/// Whether `outer` has all of `inner`, but for a little.
bool holds(PixelBox const& outer, PixelBox const& inner, int slack) {
    int const shared = std::min(outer.bottom(), inner.bottom()) - std::max(outer.y, inner.y);
    return inner.x >= outer.x - slack && inner.right() <= outer.right() + slack && 5 * shared >= 3 * inner.height;
}

/// The times of the cells of a part of a line, ascending from left to right where it was typed.
std::vector<double> timesOf(TrackedText const& line, int left, int right) {
    std::vector<double> times;
    auto const& patch = *line.patch;
    for (int cell = 0; cell < patch.cells(); ++cell) {
        int const middle = cell * patch.cellWidth() + patch.cellWidth() / 2;
        if (patch.isInked(cell) && middle >= left && middle < right) {
            times.push_back(line.since[static_cast<std::size_t>(cell)]);
        }
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
    std::vector<PathPoint> rest;
    for (auto const& point : path) {
        if (point.time <= start) rest.clear();
        rest.push_back({std::max(point.time, start), point.x, point.y});
    }
    return rest;
}

PixelBox padded(TrackedText const& text, PathPoint const& at) {
    int const height = text.patch->letterHeight();
    int const x = 2 + height / 3, y = 2 + height / 5;
    return {at.x - x, at.y - y, text.patch->width() + 2 * x, text.patch->height() + 2 * y};
}

NormalizedRect areaOf(PixelBox const& box, int width, int height) {
    double const left = std::clamp(box.x, 0, width), right = std::clamp(box.right(), 0, width);
    double const top = std::clamp(box.y, 0, height), bottom = std::clamp(box.bottom(), 0, height);
    return {left / width, top / height, (right - left) / width, (bottom - top) / height};
}

bool goOn(ScreenFinding const& a, ScreenFinding const& b) {
    bool const isSame = a.kind == b.kind && a.textHash == b.textHash;
    if (!isSame || b.start > a.end + meeting) return false;
    auto const &last = a.keyframes.back().rect, &first = b.keyframes.front().rect;
    return last.touches(first, 0.01);
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
    for (auto const& point : pathFrom(cover.place.path, finding.start)) {
        finding.keyframes.push_back({point.time, areaOf(padded(cover.place, point), width_, height_)});
    }
    if (!finding.keyframes.empty()) done_.push_back(std::move(finding));
}

void Covers::endLost(double now) {
    auto const isLost = [](Cover const& cover) { return !cover.place.presence.isLegible(); };
    for (auto& cover : alive_) {
        if (isLost(cover)) finish(cover, now);
    }
    std::erase_if(alive_, isLost);
}

bool Covers::isCovered(PixelBox const& box, int letterHeight) const {
    return std::ranges::any_of(alive_, [&](Cover const& cover) {
        return cover.place.presence.isMost() && holds(cover.place.box(), box, letterHeight / 2);
    });
}

/// What was found of it before it was all typed is a part of it.
void Covers::absorb(Cover& cover) {
    auto const isPart = [&](Cover const& old) {
        return old.place.presence.isMost() &&
               holds(cover.place.box(), old.place.box(), cover.place.patch->letterHeight() / 2);
    };
    for (auto const& old : alive_) {
        if (!isPart(old) || old.finding.start >= cover.finding.start) continue;
        int const dx = cover.place.x - old.place.x, dy = cover.place.y - old.place.y;
        auto const first = cover.place.path.front().time;
        std::vector<PathPoint> before;
        for (auto const& point : old.place.path) {
            if (point.time < first) before.push_back({point.time, point.x + dx, point.y + dy});
        }
        cover.place.path.insert(cover.place.path.begin(), before.begin(), before.end());
        cover.finding.start = old.finding.start;
        if (old.finding.typed) {
            auto const& typed = *old.finding.typed;
            cover.finding.typed = cover.finding.typed ? cover.finding.typed->unionWith(typed) : typed;
        }
    }
    std::erase_if(alive_, isPart);
}

void Covers::add(PrivateText const& found, ScreenLine const& line, GrayView const& picture) {
    auto const& whole = line.place;
    int const left = std::clamp(found.left, 0, whole.patch->width() - 1);
    int const right = std::clamp(found.right, left + 1, whole.patch->width());
    PixelBox const part{left, 0, right - left, whole.patch->height()};
    PixelBox const box{whole.x + left, whole.y, part.width, part.height};
    if (isCovered(box, whole.patch->letterHeight())) return;
    auto patch = std::make_shared<TextPatch const>(whole.patch->view(), part, whole.patch->letterHeight());
    auto presence = patch->presence(picture, box.x, box.y);
    if (!presence.isLegible()) return;

    auto const times = timesOf(whole, left, right);
    Cover cover{{.patch = std::move(patch), .x = box.x, .y = box.y, .presence = std::move(presence)}, {}};
    for (auto const& point : whole.path) cover.place.path.push_back({point.time, point.x + left, point.y});
    cover.finding.kind = found.kind;
    cover.finding.label = found.label;
    cover.finding.masked = maskedValue(found.value);
    cover.finding.textHash = findingHash(found.value, key_);
    cover.finding.start = beginningOf(times, whole.path.empty() ? 0 : whole.path.back().time);
    cover.finding.typed = typedIn(times);
    absorb(cover);
    alive_.push_back(std::move(cover));
}

std::vector<ScreenFinding> Covers::take(double end) {
    for (auto& cover : alive_) finish(cover, end);
    alive_.clear();
    return joinedFindings(std::exchange(done_, {}));
}

std::vector<ScreenFinding> joinedFindings(std::vector<ScreenFinding> findings) {
    std::ranges::sort(findings, {}, &ScreenFinding::start);
    std::vector<ScreenFinding> joined;
    for (auto& finding : findings) {
        auto const before =
            std::ranges::find_if(joined, [&](ScreenFinding const& other) { return goOn(other, finding); });
        if (before == joined.end()) {
            joined.push_back(std::move(finding));
            continue;
        }
        auto const last = before->keyframes.back();
        auto const first = finding.keyframes.front().t;
        if (last.t < before->end && before->end < first) before->keyframes.push_back({before->end, last.rect});
        for (auto const& keyframe : finding.keyframes) {
            if (keyframe.t > before->keyframes.back().t) before->keyframes.push_back(keyframe);
        }
        before->end = std::max(before->end, finding.end);
        if (!before->typed) before->typed = finding.typed;
    }
    return joined;
}

}
